// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"

class QTextStream;

namespace cli
{
/// A bar on the last line of a terminal; silent when its stream is none. An interrupt counts as cancelling.
class TerminalProgress : public Progress
{
public:
    /// \a err is not owned and outlives the bar.
    explicit TerminalProgress(QTextStream &err);
    ~TerminalProgress() override;

    void setLabel(const QString &label) override;
    void setMaximum(int maximum) override;
    void setValue(int value) override;
    bool cancelled() override;

    /// Wipes the bar off the terminal, so that other text can follow; the next step draws it again.
    void clear();

private:
    void draw();

    QTextStream &m_err;
    const bool m_onTerminal;
    QString m_label;
    int m_maximum = 0;
    int m_value = 0;
    int m_drawnPercent = -1;
};
}
