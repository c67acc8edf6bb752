#include "MhodPayload.h"

#include "MhodText.h"

namespace kestrune {

std::optional<MhodPayload> readMhodPayload(BinaryReader &reader, qsizetype mhodStart, quint32 headerLen,
                                           quint32 totalLen, ParseBudget &budget)
{
    if (headerLen >= totalLen)
        return std::nullopt;
    const qint64 payloadLen = qint64(totalLen) - headerLen;
    MhodPayload payload;
    qint64 byteCount = payloadLen;
    reader.seek(mhodStart + headerLen);
    if (payloadLen >= 16) {
        payload.structured = true;
        payload.flaggedUtf8 = reader.readUInt32LE() == 2u;
        const quint32 storedLength = reader.readUInt32LE().value_or(0);
        reader.skip(8);
        const qint64 available = payloadLen - 16;
        byteCount = (storedLength != 0 && storedLength <= available) ? storedLength : available;
        if (byteCount < 1)
            return std::nullopt;
    }
    const std::optional<QByteArrayView> bytes = reader.readView(byteCount);
    if (!bytes || !budget.spendDecodedBytes(bytes->size()))
        return std::nullopt;
    payload.bytes = *bytes;
    return payload;
}

QString decodeMhodPayload(const MhodPayload &payload)
{
    return trimMhodText(payload.structured ? decodeStructuredMhodText(payload.bytes, payload.flaggedUtf8)
                                           : decodeRawMhodText(payload.bytes));
}

QString readMhodString(BinaryReader &reader, qsizetype mhodStart, quint32 headerLen, quint32 totalLen,
                       ParseBudget &budget)
{
    const std::optional<MhodPayload> payload = readMhodPayload(reader, mhodStart, headerLen, totalLen, budget);
    return payload ? decodeMhodPayload(*payload) : QString();
}

} // namespace kestrune
