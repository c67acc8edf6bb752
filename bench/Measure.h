#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QString>

#include <algorithm>
#include <functional>

namespace kestrune::bench {

// A figure measured over several runs after a warm-up one.
struct Sample {
    QList<double> values; // milliseconds, or whatever the figure counts

    [[nodiscard]] double median() const
    {
        QList<double> sorted = values;
        std::sort(sorted.begin(), sorted.end());
        const qsizetype n = sorted.size();
        return n == 0 ? 0 : (n % 2 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2);
    }
    [[nodiscard]] double min() const { return values.isEmpty() ? 0 : *std::min_element(values.cbegin(), values.cend()); }
    [[nodiscard]] double max() const { return values.isEmpty() ? 0 : *std::max_element(values.cbegin(), values.cend()); }
};

// Times `run` once to warm up, then `runs` times; `run` may return its own figure in ms, or a negative
// number to be timed from outside.
inline Sample measure(int runs, const std::function<double()> &run)
{
    Sample sample;
    for (int i = 0; i <= runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        double value = run();
        if (value < 0)
            value = double(timer.nsecsElapsed()) / 1e6;
        if (i > 0)
            sample.values.append(value);
    }
    return sample;
}

// Peak and current resident memory of this process, in bytes (Linux; 0 elsewhere).
qint64 peakResidentBytes();
qint64 residentBytes();

} // namespace kestrune::bench
