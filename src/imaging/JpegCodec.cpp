#include "JpegCodec.h"

#include <turbojpeg.h>

#include <memory>

namespace kestrune {

namespace {

struct HandleCloser {
    void operator()(void *handle) const { tjDestroy(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

} // namespace

std::optional<QByteArray> encodeBaselineJpeg(const RgbPicture &picture, Colour colour, int quality)
{
    if (picture.width <= 0 || picture.height <= 0 || picture.rgb.size() != qsizetype(picture.width) * picture.height * 3)
        return std::nullopt;
    // One encoder per call: encoders are not shared between threads, and making one costs microseconds.
    const Handle encoder(tjInitCompress());
    if (!encoder)
        return std::nullopt;
    unsigned char *output = nullptr;
    unsigned long size = 0;
    // No TJFLAG_PROGRESSIVE: the default is a baseline frame with one interleaved scan.
    const int status = tjCompress2(encoder.get(), reinterpret_cast<const unsigned char *>(picture.rgb.constData()),
                                   picture.width, picture.width * 3, picture.height, TJPF_RGB, &output, &size,
                                   colour == Colour::full ? TJSAMP_444 : TJSAMP_420, quality, 0);
    std::optional<QByteArray> bytes;
    if (status == 0)
        bytes = QByteArray(reinterpret_cast<const char *>(output), qsizetype(size));
    tjFree(output);
    return bytes;
}

std::optional<RgbPicture> decodeJpeg(QByteArrayView bytes)
{
    const Handle decoder(tjInitDecompress());
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colourSpace = 0;
    const auto *data = reinterpret_cast<const unsigned char *>(bytes.data());
    if (!decoder || bytes.isEmpty() ||
        tjDecompressHeader3(decoder.get(), data, bytes.size(), &width, &height, &subsampling, &colourSpace) != 0 ||
        width <= 0 || height <= 0 || qint64(width) * height > 64ll * 1024 * 1024)
        return std::nullopt;
    RgbPicture picture{width, height, QByteArray(qsizetype(width) * height * 3, Qt::Uninitialized)};
    if (tjDecompress2(decoder.get(), data, bytes.size(), reinterpret_cast<unsigned char *>(picture.rgb.data()), width,
                      width * 3, height, TJPF_RGB, TJFLAG_ACCURATEDCT) != 0)
        return std::nullopt;
    return picture;
}

bool isBaselineJpeg(QByteArrayView bytes)
{
    const auto byteAt = [&](qsizetype at) { return at < bytes.size() ? uchar(bytes.at(at)) : 0; };
    if (byteAt(0) != 0xFF || byteAt(1) != 0xD8)
        return false;
    qsizetype at = 2;
    while (at + 4 <= bytes.size() && byteAt(at) == 0xFF) {
        const uchar marker = byteAt(at + 1);
        const qsizetype length = (byteAt(at + 2) << 8) | byteAt(at + 3);
        if (marker == 0xC0)
            return byteAt(at + 4) == 8 && (byteAt(at + 9) == 1 || byteAt(at + 9) == 3);
        // Any other frame type (progressive, lossless, arithmetic), or a scan before a frame.
        if ((marker >= 0xC1 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC) || marker == 0xDA)
            return false;
        at += 2 + length;
    }
    return false;
}

} // namespace kestrune
