#pragma once

// A FIFO made at a path, and a guard that opens both its ends once a time limit has passed: code
// that waits in open() for the other end is let go then, so it fails its test instead of
// hanging it. Whether the guard had to step in is the test's verdict.

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
    explicit FifoGuard(const QByteArray &path, std::chrono::seconds limit = std::chrono::seconds(10))
        : m_made(::mkfifo(path.constData(), 0644) == 0)
    {
        m_thread = std::thread([this, path, limit] {
            std::unique_lock lock(m_mutex);
            // Until the test is over, for code that comes back to the FIFO.
            for (auto wait = std::chrono::milliseconds(limit); !m_cond.wait_for(lock, wait, [this] { return m_done; });
                 wait = std::chrono::milliseconds(50)) {
                m_released = true;
                // Both ends at once (Linux never blocks this open), then closed: a waiting reader
                // or writer proceeds and then meets the end of the FIFO.
                const int fd = ::open(path.constData(), O_RDWR | O_NONBLOCK);
                if (fd >= 0)
                    ::close(fd);
            }
        });
    }
    ~FifoGuard() { finish(); }
    FifoGuard(const FifoGuard &) = delete;
    FifoGuard &operator=(const FifoGuard &) = delete;

    bool made() const { return m_made; }
    // Stops the guard; true when the code under test had to be let go.
    bool finish()
    {
        {
            std::lock_guard lock(m_mutex);
            m_done = true;
        }
        m_cond.notify_all();
        if (m_thread.joinable())
            m_thread.join();
        return m_released;
    }

private:
    bool m_made;
    std::mutex m_mutex;
    std::condition_variable m_cond;
    bool m_done = false;
    bool m_released = false;
    std::thread m_thread;
};

inline bool isFifo(const QByteArray &path)
{
    struct stat st {};
    return ::lstat(path.constData(), &st) == 0 && S_ISFIFO(st.st_mode);
}

} // namespace kv::test
