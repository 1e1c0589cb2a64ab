// SPDX-License-Identifier: MIT
#include "cli/terminalprogress.h"

#include "cli/interrupt.h"
#include "cli/output.h"

#include <QFileDevice>
#include <QTextStream>

#include <unistd.h>

namespace
{
constexpr int barWidth = 30;
constexpr int labelWidth = 40;

bool isTerminal(const QTextStream &stream)
{
    const auto *file = qobject_cast<const QFileDevice *>(stream.device());
    return file && file->handle() >= 0 && isatty(file->handle());
}
}

namespace cli
{
TerminalProgress::TerminalProgress(QTextStream &err) : m_err(err), m_onTerminal(isTerminal(err)) { }

TerminalProgress::~TerminalProgress()
{
    clear();
}

void TerminalProgress::setLabel(const QString &label)
{
    m_label = label;
    m_drawnPercent = -1;
    draw();
}

void TerminalProgress::setMaximum(int maximum)
{
    m_maximum = maximum;
}

void TerminalProgress::setValue(int value)
{
    m_value = value;
    draw();
}

bool TerminalProgress::cancelled()
{
    return interrupted();
}

void TerminalProgress::clear()
{
    if (m_drawnPercent < 0)
        return;
    m_err << "\r\033[K";
    m_err.flush();
    m_drawnPercent = -1;
}

void TerminalProgress::draw()
{
    if (!m_onTerminal || m_maximum <= 0)
        return;
    const int percent = int(qint64(qBound(0, m_value, m_maximum)) * 100 / m_maximum);
    if (percent == m_drawnPercent)
        return;
    m_drawnPercent = percent;
    const QString bar = QString(percent * barWidth / 100, QLatin1Char('#')).leftJustified(barWidth, QLatin1Char('.'));
    m_err << "\r\033[K[" << bar << "] " << QString::number(percent).rightJustified(3) << "% "
          << printable(m_label).left(labelWidth);
    m_err.flush();
}
}
