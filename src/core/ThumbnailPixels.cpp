#include "ThumbnailPixels.h"

#include <QtEndian>

#include <array>
#include <cstring>

namespace kestrune {

std::optional<PictureArea> pictureArea(const CoverFormat &format, const ThumbnailLocation &thumbnail)
{
    const int x = qMax<int>(thumbnail.horizontalPadding, 0);
    const int y = qMax<int>(thumbnail.verticalPadding, 0);
    const int width = qMin(thumbnail.width - qAbs<int>(thumbnail.horizontalPadding), format.width - x);
    const int height = qMin(thumbnail.height - qAbs<int>(thumbnail.verticalPadding), format.height - y);
    if (width <= 0 || height <= 0)
        return std::nullopt;
    return PictureArea{x, y, width, height};
}

namespace {

qsizetype rowBytes(const CoverFormat &format)
{
    return qsizetype(format.width) * 2;
}

// Four independent lanes of multiply and rotate over 8-byte words, so that the multiplications overlap:
// a few gigabytes a second, and no dependence on Qt's seeded hashes.
class PixelHasher {
public:
    void add(const char *bytes, qsizetype length)
    {
        qsizetype at = 0;
        for (; at + 32 <= length; at += 32) {
            for (int lane = 0; lane < 4; ++lane)
                m_lanes[lane] = mix(m_lanes[lane], qFromLittleEndian<quint64>(bytes + at + lane * 8));
        }
        for (; at < length; ++at)
            m_lanes[0] = mix(m_lanes[0], quint8(bytes[at]));
        m_length += quint64(length);
    }
    [[nodiscard]] quint64 result() const
    {
        quint64 hash = m_length;
        for (const quint64 lane : m_lanes)
            hash = mix(hash, lane);
        hash ^= hash >> 33;
        hash *= 0xFF51AFD7ED558CCDull;
        return hash ^ (hash >> 33);
    }

private:
    static quint64 mix(quint64 state, quint64 word)
    {
        state ^= word * 0x9E3779B97F4A7C15ull;
        return ((state << 31) | (state >> 33)) * 0xC2B2AE3D27D4EB4Full;
    }
    std::array<quint64, 4> m_lanes{1, 2, 3, 4};
    quint64 m_length = 0;
};

} // namespace

bool frameHoldsArea(QByteArrayView frame, const CoverFormat &format, const PictureArea &area)
{
    return frame.size() >= qsizetype(area.y + area.height - 1) * rowBytes(format) + qsizetype(area.x + area.width) * 2;
}

std::optional<RgbPicture> decodeThumbnail(QByteArrayView frame, const CoverFormat &format, const PictureArea &area)
{
    if (!frameHoldsArea(frame, format, area))
        return std::nullopt;
    RgbPicture picture{area.width, area.height, QByteArray(qsizetype(area.width) * area.height * 3, Qt::Uninitialized)};
    uchar *out = reinterpret_cast<uchar *>(picture.rgb.data());
    for (int row = 0; row < area.height; ++row) {
        const char *in = frame.data() + (area.y + row) * rowBytes(format) + area.x * 2;
        for (int column = 0; column < area.width; ++column, in += 2) {
            const quint16 pixel = qFromLittleEndian<quint16>(in);
            *out++ = uchar((pixel >> 11) << 3);
            *out++ = uchar(((pixel >> 5) & 0x3F) << 2);
            *out++ = uchar((pixel & 0x1F) << 3);
        }
    }
    return picture;
}

std::optional<quint64> pictureHash(QByteArrayView frame, const CoverFormat &format, const PictureArea &area)
{
    if (!frameHoldsArea(frame, format, area))
        return std::nullopt;
    PixelHasher hasher;
    const std::array<quint32, 2> size{qToLittleEndian(quint32(area.width)), qToLittleEndian(quint32(area.height))};
    hasher.add(reinterpret_cast<const char *>(size.data()), sizeof size);
    for (int row = 0; row < area.height; ++row)
        hasher.add(frame.data() + (area.y + row) * rowBytes(format) + area.x * 2, qsizetype(area.width) * 2);
    return hasher.result();
}

} // namespace kestrune
