// SPDX-License-Identifier: MIT
#include "persist/xmldocument.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTextCodec>

namespace
{
class XmlTexts
{
    Q_DECLARE_TR_FUNCTIONS(XmlDocument)
};

/// The codec for a document that starts with \a document's first bytes: UTF-16 with a byte order mark or "<" in it, else UTF-8.
QTextCodec *codecFor(const QByteArray &document)
{
    const QByteArray start = document.left(2);
    if (start == "\xFF\xFE" || start == QByteArray("<\0", 2))
        return QTextCodec::codecForName("UTF-16LE");
    if (start == "\xFE\xFF" || start == QByteArray("\0<", 2))
        return QTextCodec::codecForName("UTF-16BE");
    return QTextCodec::codecForName("UTF-8");
}

bool decode(const QByteArray &document, QString *text)
{
    QTextCodec::ConverterState state;
    *text = codecFor(document)->toUnicode(document.constData(), document.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

bool declaresOtherEncoding(const QString &text)
{
    static const QRegularExpression declaration(QStringLiteral("^<\\?xml\\s[^<>]*?\\sencoding\\s*=\\s*[\"']([^\"']*)"));
    const QString encoding = declaration.match(text).captured(1).toUpper();
    return !encoding.isEmpty() && encoding != QLatin1String("UTF-8") && encoding != QLatin1String("UTF-16");
}

/// Counts the "=" from each "<" on: no "<" may be in a value, so a start tag ends before the next one.
bool hasTooManyAttributes(const QString &text)
{
    int count = 0;
    bool isInTag = false;
    QChar quote;
    for (const QChar c : text) {
        if (c == QLatin1Char('<')) {
            count = 0;
            isInTag = true;
            quote = QChar();
        } else if (!isInTag) {
            continue;
        } else if (!quote.isNull()) {
            if (c == quote)
                quote = QChar();
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            quote = c;
        } else if (c == QLatin1Char('>')) {
            isInTag = false;
        } else if (c == QLatin1Char('=') && ++count > maximumAttributes) {
            return true;
        }
    }
    return false;
}
}

bool decodeXml(const QByteArray &document, QString *text, QString *error)
{
    constexpr int maximumSize = 512 * 1024 * 1024; // The text takes twice as many bytes, of at most 2 GiB.
    if (document.size() > maximumSize)
        *error = XmlTexts::tr("The document is larger than 512 MiB");
    else if (!decode(document, text) || declaresOtherEncoding(*text))
        *error = XmlTexts::tr("The encoding of the document is neither UTF-8 nor UTF-16");
    else if (text->contains(QLatin1String("<!DOCTYPE")))
        *error = XmlTexts::tr("The document has a document type, which is not accepted");
    else if (hasTooManyAttributes(*text))
        *error = XmlTexts::tr("An element has too many attributes");
    else
        return true;
    return false;
}
