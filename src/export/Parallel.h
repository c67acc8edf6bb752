#pragma once

#include <QThread>

#include <atomic>
#include <thread>
#include <vector>

namespace kestrune {

// Calls work(i) for each i in [0, count) on as many threads as the machine has cores, this one included;
// returns when all are done. Each index is taken by one thread, in no set order.
template <typename Work> void forEachInParallel(qsizetype count, const Work &work)
{
    std::atomic<qsizetype> next{0};
    const auto loop = [&] {
        for (qsizetype i = next++; i < count; i = next++)
            work(i);
    };
    std::vector<std::thread> helpers;
    for (qsizetype thread = 1; thread < qMin<qsizetype>(QThread::idealThreadCount(), count); ++thread)
        helpers.emplace_back(loop);
    loop();
    for (std::thread &helper : helpers)
        helper.join();
}

} // namespace kestrune
