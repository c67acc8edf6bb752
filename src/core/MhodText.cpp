#include "MhodText.h"

#include "TextEncoding.h"

#include <QSysInfo>

#include <cstring>
#include <optional>

namespace kestrune {

namespace {

QByteArrayView evenPrefix(QByteArrayView bytes)
{
    return bytes.first(bytes.size() & ~qsizetype(1));
}

bool isNonEmpty(const std::optional<QString> &text)
{
    return text && !text->isEmpty();
}

} // namespace

bool isMhodTrimmed(QChar c)
{
    switch (c.unicode()) {
    case 0x0000:
    case 0xFEFF:
    case 0xFFFD:
    case u'\r':
    case u'\n':
    case u'\t':
    case u' ':
        return true;
    default:
        return false;
    }
}

QString decodeStructuredMhodText(QByteArrayView bytes, bool flaggedUtf8)
{
    std::optional<QString> text;
    if (flaggedUtf8)
        text = decodeText(bytes, TextEncoding::utf8);
    else if (bytes.size() >= 2)
        text = decodeText(evenPrefix(bytes), TextEncoding::utf16LE);
    if (isNonEmpty(text))
        return *text;

    for (TextEncoding fallback : {TextEncoding::utf8, TextEncoding::macOSRoman}) {
        text = decodeText(bytes, fallback);
        if (isNonEmpty(text))
            return *text;
    }
    // Taken even when empty.
    text = decodeText(bytes, TextEncoding::isoLatin1);
    if (!text)
        text = decodeText(bytes, TextEncoding::windows1252);
    return text.value_or(QString());
}

QString decodeRawMhodText(QByteArrayView bytes)
{
    std::optional<QString> text;
    if (bytes.size() >= 2)
        text = decodeText(evenPrefix(bytes), TextEncoding::utf16LE);
    if (!text)
        text = decodeText(bytes, TextEncoding::utf8);
    if (!text)
        text = decodeText(bytes, TextEncoding::macOSRoman);
    return text.value_or(QString());
}

QString trimMhodText(const QString &text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isMhodTrimmed(text.at(begin)))
        ++begin;
    while (end > begin && isMhodTrimmed(text.at(end - 1)))
        --end;
    if (begin == 0 && end == text.size())
        return text;
    return text.mid(begin, end - begin);
}

bool isPlainUtf16Text(QByteArrayView bytes)
{
    if constexpr (QSysInfo::ByteOrder != QSysInfo::LittleEndian)
        return false;
    if (bytes.size() < 2 || bytes.size() % 2 != 0)
        return false;
    const qsizetype count = bytes.size() / 2;
    const auto unitAt = [&bytes](qsizetype i) {
        char16_t unit;
        std::memcpy(&unit, bytes.data() + 2 * i, 2);
        return unit;
    };
    if (isMhodTrimmed(QChar(unitAt(0))) || isMhodTrimmed(QChar(unitAt(count - 1))))
        return false;
    bool surrogate = false; // no early exit, so that the loop compares many units at once
    for (qsizetype i = 0; i < count; ++i)
        surrogate |= (unitAt(i) & 0xF800) == 0xD800;
    return !surrogate;
}

} // namespace kestrune
