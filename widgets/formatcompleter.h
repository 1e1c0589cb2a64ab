// SPDX-License-Identifier: MIT
#pragma once

#include <QCompleter>

class QLineEdit;

/// Helps in a line edit that holds a format's name: offers the names that contain what was typed, puts the name in place of an
/// alias, and lists all names in the tool tip of an unknown one. The field changes as if the user had typed the name.
class FormatCompleter : public QCompleter
{
    Q_OBJECT

public:
    /// \a field owns the completer.
    explicit FormatCompleter(QLineEdit *field);

    QString pathFromIndex(const QModelIndex &index) const override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void enter(const QString &name);
    void replaceAlias();

    QLineEdit *m_field;
};
