// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>

/// One line of the debug log with its context.
struct LoggedMessage
{
    QtMsgType type;
    QString text;
    QString file;
    QString function;
    int line;
};

/// Keeps what is logged while it lives, instead of letting it be printed. One at a time.
class MessageCapture
{
public:
    MessageCapture()
    {
        messages().clear();
        m_previous = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &text) {
            messages().append({type, text, QString::fromUtf8(context.file), QString::fromUtf8(context.function), context.line});
        });
    }
    ~MessageCapture() { qInstallMessageHandler(m_previous); }
    MessageCapture(const MessageCapture &) = delete;
    MessageCapture &operator=(const MessageCapture &) = delete;

    const QList<LoggedMessage> &all() const { return messages(); }

    QStringList texts() const
    {
        QStringList result;
        for (const LoggedMessage &message : messages())
            result << message.text;
        return result;
    }

    /// The texts logged with \a function as the context's function.
    QStringList textsOf(const QString &function) const
    {
        QStringList result;
        for (const LoggedMessage &message : messages()) {
            if (message.function == function)
                result << message.text;
        }
        return result;
    }

private:
    static QList<LoggedMessage> &messages()
    {
        static QList<LoggedMessage> list;
        return list;
    }

    QtMessageHandler m_previous;
};
