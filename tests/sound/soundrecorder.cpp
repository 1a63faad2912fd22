#include "sound/soundrecorder.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>

namespace kv::test {

namespace {

// Positions run on with the clock between two deliveries, but not across a stalled stream.
constexpr std::chrono::milliseconds MaxExtrapolation{30};

std::string variable(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

} // namespace

SoundRecorder::SoundRecorder(std::vector<int> pitches)
{
    m_listening.pitches = std::move(pitches);
    const std::string monitor = variable("KV_SOUND_MONITOR");
    const std::string rate = variable("KV_SOUND_RATE");
    if (monitor.empty() || rate.empty()) {
        m_error = "KV_SOUND_MONITOR and KV_SOUND_RATE are not set: run the test through tests/sound/private-sound.sh";
        return;
    }
    m_listening.rate = std::atoi(rate.c_str());

    // A small fragment size: samples come every few milliseconds, so "now" is known closely.
    std::vector<std::string> args{"/usr/bin/parec", "--raw", "--device=" + monitor, "--format=s16le",
                                  "--rate=" + rate, "--channels=1", "--latency-msec=10",
                                  "--client-name=kv-sound-recorder"};
    std::vector<char *> argv;
    for (std::string &a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);

    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0) {
        m_error = "no pipe";
        return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    const int rc = ::posix_spawn(&m_pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    if (rc != 0) {
        ::close(out[0]);
        m_pid = 0;
        m_error = "cannot start /usr/bin/parec";
        return;
    }
    m_reader = std::thread([this, fd = out[0]] { readLoop(fd); });

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!m_flowing && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    if (!m_flowing)
        m_error = "parec delivered nothing from " + monitor;
}

SoundRecorder::~SoundRecorder()
{
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        while (::waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    if (m_reader.joinable())
        m_reader.join();
}

void SoundRecorder::readLoop(int fd)
{
    char buffer[8192];
    char odd = 0;
    bool hasOdd = false; // a read may end in the middle of a sample
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        const auto now = std::chrono::steady_clock::now();
        std::lock_guard lock(m_mutex);
        ssize_t i = 0;
        if (hasOdd) {
            m_samples.push_back(std::int16_t((static_cast<unsigned char>(buffer[0]) << 8) | static_cast<unsigned char>(odd)));
            i = 1;
            hasOdd = false;
        }
        for (; i + 1 < got; i += 2)
            m_samples.push_back(std::int16_t((static_cast<unsigned char>(buffer[i + 1]) << 8) | static_cast<unsigned char>(buffer[i])));
        if (i < got) {
            odd = buffer[i];
            hasOdd = true;
        }
        m_lastArrival = now;
        m_flowing = true;
    }
    ::close(fd);
}

std::int64_t SoundRecorder::received() const
{
    std::lock_guard lock(m_mutex);
    return std::int64_t(m_samples.size());
}

std::int64_t SoundRecorder::samplePosition() const
{
    std::lock_guard lock(m_mutex);
    const auto since = std::min<std::chrono::steady_clock::duration>(std::chrono::steady_clock::now() - m_lastArrival,
                                                                       MaxExtrapolation);
    const auto micro = std::chrono::duration_cast<std::chrono::microseconds>(since).count();
    return std::int64_t(m_samples.size()) + std::int64_t(micro) * rate() / 1000000;
}

std::int64_t SoundRecorder::samplesIn(std::chrono::milliseconds duration) const
{
    return std::int64_t(duration.count()) * rate() / 1000;
}

std::vector<SoundSegment> SoundRecorder::timeline(std::int64_t from, std::int64_t to) const
{
    std::lock_guard lock(m_mutex);
    const std::int64_t begin = std::clamp<std::int64_t>(from, 0, std::int64_t(m_samples.size()));
    const std::int64_t end = std::clamp<std::int64_t>(to, begin, std::int64_t(m_samples.size()));
    return kv::test::timeline(std::span(m_samples).subspan(std::size_t(begin), std::size_t(end - begin)), begin, m_listening);
}

std::optional<std::int64_t> SoundRecorder::silenceFrom(std::int64_t position, std::chrono::milliseconds hold) const
{
    std::lock_guard lock(m_mutex);
    return kv::test::silenceFrom(m_samples, 0, position, samplesIn(hold), m_listening.level);
}

template <typename T>
std::optional<T> SoundRecorder::waitFor(const std::function<std::optional<T>()> &found, std::chrono::milliseconds timeout) const
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        if (const std::optional<T> answer = found())
            return answer;
        if (std::chrono::steady_clock::now() >= deadline)
            return std::nullopt;
        if (QCoreApplication::instance())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
}

bool SoundRecorder::waitForPosition(std::int64_t position, std::chrono::milliseconds timeout) const
{
    return waitFor<bool>([&]() -> std::optional<bool> {
               if (received() >= position)
                   return true;
               return std::nullopt;
           }, timeout).has_value();
}

std::optional<std::int64_t> SoundRecorder::waitForSound(std::int64_t after, std::chrono::milliseconds timeout) const
{
    return waitFor<std::int64_t>([&] {
        std::lock_guard lock(m_mutex);
        return firstSound(m_samples, 0, after, m_listening.level);
    }, timeout);
}

std::optional<std::int64_t> SoundRecorder::waitForSilence(std::int64_t from, std::chrono::milliseconds hold,
                                                          std::chrono::milliseconds timeout) const
{
    return waitFor<std::int64_t>([&] { return silenceFrom(from, hold); }, timeout);
}

} // namespace kv::test
