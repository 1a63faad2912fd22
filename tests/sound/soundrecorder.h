#pragma once

// Hears what the private sound server plays (tests run through tests/sound/private-sound.sh):
// records the monitor of its sink from construction on, mono 16-bit, on a thread of its own, so
// a test knows at any moment which sample is playing and can ask what sounded when.
#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "sound/soundanalysis.h"

namespace kv::test {

class SoundRecorder
{
public:
    // Starts recording the source KV_SOUND_MONITOR names, at KV_SOUND_RATE, telling these
    // pitches apart; returns once the first samples have come.
    explicit SoundRecorder(std::vector<int> pitches);
    ~SoundRecorder();
    SoundRecorder(const SoundRecorder &) = delete;
    SoundRecorder &operator=(const SoundRecorder &) = delete;

    // Empty while recording; otherwise why it could not start.
    const std::string &error() const { return m_error; }
    const Listening &listening() const { return m_listening; }
    int rate() const { return m_listening.rate; }

    // The sample playing now: those received, plus the time since the last ones came. The sink
    // hands its monitor each block (a few milliseconds) as it plays it, so this is within about
    // that of the sink's own clock.
    std::int64_t samplePosition() const;
    std::int64_t samplesIn(std::chrono::milliseconds duration) const;
    double seconds(std::int64_t samples) const { return double(samples) / rate(); }
    double milliseconds(std::int64_t samples) const { return 1000.0 * seconds(samples); }

    // What has been received so far; positions beyond it are not analysed yet.
    std::vector<SoundSegment> timeline(std::int64_t from, std::int64_t to) const;
    std::optional<std::int64_t> silenceFrom(std::int64_t position, std::chrono::milliseconds hold) const;

    // Waits, handling the thread's Qt events so a window and its timers go on working, until the
    // recording holds the given position / has a sound after it / has held silence from it; the
    // answer, or nothing after the timeout.
    bool waitForPosition(std::int64_t position, std::chrono::milliseconds timeout) const;
    std::optional<std::int64_t> waitForSound(std::int64_t after, std::chrono::milliseconds timeout) const;
    std::optional<std::int64_t> waitForSilence(std::int64_t from, std::chrono::milliseconds hold,
                                               std::chrono::milliseconds timeout) const;

private:
    void readLoop(int fd);
    std::int64_t received() const;
    template <typename T>
    std::optional<T> waitFor(const std::function<std::optional<T>()> &found, std::chrono::milliseconds timeout) const;

    Listening m_listening;
    std::string m_error;
    pid_t m_pid = 0;
    std::thread m_reader;
    mutable std::mutex m_mutex;
    std::vector<std::int16_t> m_samples;
    std::chrono::steady_clock::time_point m_lastArrival;
    std::atomic<bool> m_flowing{false};
};

} // namespace kv::test
