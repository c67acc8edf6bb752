#include "PictureScaling.h"

#include <QList>

#include <cmath>

namespace kestrune {

QSize fittedSize(QSize picture, QSize box)
{
    if (picture.isEmpty() || box.isEmpty())
        return {};
    const double scale = qMin(double(box.width()) / picture.width(), double(box.height()) / picture.height());
    return {qMax(1, int(std::lround(picture.width() * scale))), qMax(1, int(std::lround(picture.height() * scale)))};
}

namespace {

// How one target sample is made along one axis: source samples and their weights, summing to 1.
struct Tap {
    int source;
    float weight;
};
using Taps = QList<QList<Tap>>;

Taps tapsFor(int from, int to)
{
    Taps taps(to);
    const double step = double(from) / to;
    for (int target = 0; target < to; ++target) {
        if (step >= 1.0) { // shrinking: the source span [begin, end) the target sample covers
            const double begin = target * step;
            const double end = begin + step;
            for (int source = int(begin); source < qMin(from, int(std::ceil(end))); ++source) {
                const double covered = qMin(end, source + 1.0) - qMax(begin, double(source));
                if (covered > 0)
                    taps[target].append({source, float(covered / step)});
            }
        } else { // growing: between the two nearest source centres
            const double centre = qBound(0.0, (target + 0.5) * step - 0.5, double(from - 1));
            const int left = int(centre);
            const int right = qMin(left + 1, from - 1);
            const float fraction = float(centre - left);
            taps[target].append({left, 1.0f - fraction});
            if (right != left)
                taps[target].append({right, fraction});
        }
    }
    return taps;
}

} // namespace

RgbPicture scaledPicture(const RgbPicture &picture, QSize size)
{
    if (size.isEmpty() || picture.width <= 0 || picture.height <= 0)
        return {};
    if (size == QSize(picture.width, picture.height))
        return picture;
    const Taps across = tapsFor(picture.width, size.width());
    const Taps down = tapsFor(picture.height, size.height());
    // Rows first, kept in floats, then columns.
    QList<float> rows(qsizetype(size.width()) * picture.height * 3);
    const auto *in = reinterpret_cast<const uchar *>(picture.rgb.constData());
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < size.width(); ++x) {
            float sum[3] = {0, 0, 0};
            for (const Tap &tap : across.at(x)) {
                const uchar *pixel = in + (qsizetype(y) * picture.width + tap.source) * 3;
                for (int channel = 0; channel < 3; ++channel)
                    sum[channel] += pixel[channel] * tap.weight;
            }
            for (int channel = 0; channel < 3; ++channel)
                rows[(qsizetype(y) * size.width() + x) * 3 + channel] = sum[channel];
        }
    }
    RgbPicture scaled{size.width(), size.height(), QByteArray(qsizetype(size.width()) * size.height() * 3, Qt::Uninitialized)};
    auto *out = reinterpret_cast<uchar *>(scaled.rgb.data());
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            for (int channel = 0; channel < 3; ++channel) {
                float sum = 0;
                for (const Tap &tap : down.at(y))
                    sum += rows[(qsizetype(tap.source) * size.width() + x) * 3 + channel] * tap.weight;
                *out++ = uchar(qBound(0, int(std::lround(sum)), 255));
            }
        }
    }
    return scaled;
}

} // namespace kestrune
