#pragma once

// A FIFO made at a path, and a guard that opens both its ends once a time limit has passed: code
// that waits in open() for the other end is let go then, so it fails its test instead of
// hanging it. Whether the guard had to step in is the test's verdict.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <QByteArray>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kv::test {

class FifoGuard
{
public:
    explicit FifoGuard(const QByteArray &path, std::chrono::milliseconds limit = std::chrono::seconds(10))
        : m_made(::mkfifo(path.constData(), 0644) == 0)
        , m_thread([this, path, limit](std::stop_token stop) {
            std::mutex mutex;
            std::unique_lock lock(mutex);
            std::condition_variable_any wake;
            // Until the test is over, for code that comes back to the FIFO. Both ends at once
            // (Linux never blocks this open), then closed: a waiting reader or writer proceeds and
            // then meets the end of the FIFO.
            for (auto wait = limit; !wake.wait_for(lock, stop, wait, [] { return false; }) && !stop.stop_requested();
                 wait = std::chrono::milliseconds(50)) {
                m_released = true;
                if (const int fd = ::open(path.constData(), O_RDWR | O_NONBLOCK); fd >= 0)
                    ::close(fd);
            }
        })
    {
    }

    bool made() const { return m_made; }
    // Stops the guard; true when the code under test had to be let go.
    bool finish()
    {
        m_thread.request_stop();
        if (m_thread.joinable())
            m_thread.join();
        return m_released;
    }

private:
    bool m_made;
    std::atomic<bool> m_released = false;
    std::jthread m_thread; // last: it stops and joins before the members it uses go
};

inline bool isFifo(const QByteArray &path)
{
    struct stat st {};
    return ::lstat(path.constData(), &st) == 0 && S_ISFIFO(st.st_mode);
}

} // namespace kv::test
