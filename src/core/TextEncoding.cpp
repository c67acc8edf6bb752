#include "TextEncoding.h"

#include "LegacyCodePages.h"

#include <QStringDecoder>
#include <QSysInfo>

#include <cstring>

namespace kestrune {

namespace {

std::optional<QString> decodeUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringConverter::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

std::optional<QString> decodeUtf16LE(QByteArrayView bytes)
{
    if (bytes.size() % 2 != 0)
        return std::nullopt;
    QString text;
    if constexpr (QSysInfo::ByteOrder == QSysInfo::LittleEndian) {
        // The bytes already are host-order UTF-16: one copy, no conversion.
        text.resize(bytes.size() / 2);
        std::memcpy(text.data(), bytes.data(), size_t(bytes.size()));
    } else {
        QStringDecoder decoder(QStringConverter::Utf16LE,
                               QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
        text = decoder.decode(bytes);
        if (decoder.hasError())
            return std::nullopt;
    }
    // Qt's decoder lets unpaired surrogates through; they are not valid UTF-16.
    if (!text.isValidUtf16())
        return std::nullopt;
    return text;
}

std::optional<QString> decodeAscii(QByteArrayView bytes)
{
    for (char byte : bytes) {
        if (static_cast<unsigned char>(byte) >= 0x80)
            return std::nullopt;
    }
    return QString::fromLatin1(bytes);
}

QString decodeWithUpperHalf(QByteArrayView bytes, const char16_t (&upperHalf)[128])
{
    QString text(bytes.size(), Qt::Uninitialized);
    QChar *out = text.data();
    for (char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        *out++ = QChar(value < 0x80 ? char16_t(value) : upperHalf[value - 0x80]);
    }
    return text;
}

} // namespace

std::optional<QString> decodeText(QByteArrayView bytes, TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::utf8:
        return decodeUtf8(bytes);
    case TextEncoding::utf16LE:
        return decodeUtf16LE(bytes);
    case TextEncoding::ascii:
        return decodeAscii(bytes);
    case TextEncoding::macOSRoman:
        return decodeWithUpperHalf(bytes, macOSRomanUpperHalf);
    case TextEncoding::isoLatin1:
        return QString::fromLatin1(bytes);
    case TextEncoding::windows1252:
        return decodeWithUpperHalf(bytes, windows1252UpperHalf);
    }
    return std::nullopt;
}

} // namespace kestrune
