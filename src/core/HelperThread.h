#pragma once

#include <exception>
#include <functional>
#include <system_error>
#include <thread>
#include <utility>

namespace kestrune {

// Runs `work` on a thread of its own, or right here when asked not to; `wait` returns when it is done and
// passes on what it threw. A thread of its own rather than one of a pool, whose threads may all be waiting.
class HelperThread {
public:
    HelperThread(bool ownThread, std::function<void()> work) : m_work(std::move(work))
    {
        if (!ownThread)
            return;
        try {
            m_thread = std::thread([this] { run(); });
        } catch (const std::system_error &) {
            // No thread to be had: the work runs here when waited for, as for a small file.
        }
    }
    ~HelperThread()
    {
        if (m_thread.joinable())
            m_thread.join();
    }
    HelperThread(const HelperThread &) = delete;
    HelperThread &operator=(const HelperThread &) = delete;

    void wait()
    {
        if (m_thread.joinable())
            m_thread.join();
        else if (m_work)
            run();
        m_work = nullptr;
        if (m_error)
            std::rethrow_exception(std::exchange(m_error, nullptr));
    }

private:
    void run()
    {
        try {
            m_work();
        } catch (...) {
            m_error = std::current_exception();
        }
    }

    std::function<void()> m_work;
    std::exception_ptr m_error;
    std::thread m_thread;
};

} // namespace kestrune
