#include "FileNameText.h"

namespace kestrune {

namespace {

// The length of the valid UTF-8 sequence starting at `at`, or 0 when the byte there does not start one.
qsizetype validSequenceAt(const QByteArray &bytes, qsizetype at)
{
    const auto byte = [&bytes](qsizetype i) { return quint8(bytes.at(i)); };
    const quint8 lead = byte(at);
    if (lead < 0x80)
        return 1;
    qsizetype length = 0;
    char32_t value = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        value = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        value = lead & 0x0F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        value = lead & 0x07;
    } else {
        return 0;
    }
    if (at + length > bytes.size())
        return 0;
    for (qsizetype i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80)
            return 0;
        value = (value << 6) | (byte(at + i) & 0x3F);
    }
    const bool overlong = (length == 3 && value < 0x800) || (length == 4 && value < 0x10000);
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    return overlong || surrogate || value > 0x10FFFF ? 0 : length;
}

} // namespace

bool isValidUtf8(const QByteArray &bytes)
{
    for (qsizetype at = 0; at < bytes.size();) {
        const qsizetype length = validSequenceAt(bytes, at);
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

QString displayFileName(const QByteArray &bytes)
{
    QString text;
    for (qsizetype at = 0; at < bytes.size();) {
        const qsizetype length = validSequenceAt(bytes, at);
        if (length == 0) {
            text += QStringLiteral("\\x") + QString::number(quint8(bytes.at(at)), 16).toUpper().rightJustified(2, u'0');
            ++at;
            continue;
        }
        text += QString::fromUtf8(bytes.constData() + at, length);
        at += length;
    }
    return text;
}

} // namespace kestrune
