#pragma once

// Hears what the private sound server plays (tests run through tests/sound/private-sound.sh):
// parec records the monitor of its sink into a file from construction on, mono 16-bit, so the
// sample playing now is the count of samples written so far, and any stretch can be told apart
// afterwards by the pitches it holds.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kv::test {

// A stretch of sound: a candidate pitch in Hz, or Other (a sound no candidate dominates).
struct SoundSegment
{
    static constexpr int Other = -1;
    int pitch = Other;
    double start = 0, end = 0; // seconds from the start of the recording
};
inline std::ostream &operator<<(std::ostream &os, const SoundSegment &s)
{
    return os << (s.pitch == SoundSegment::Other ? std::string("other") : std::to_string(s.pitch) + " Hz") << " " << s.start << "-" << s.end << " s";
}

class SoundRecorder
{
public:
    // A sample below this, or a block whose RMS is, is silence (-40 dBFS: far below the tones,
    // far above a decoder's rounding noise).
    static constexpr double Level = 0.01 * 32768;

    // Records KV_SOUND_MONITOR at KV_SOUND_RATE into `file`, telling these pitches apart; returns
    // once the first samples have come.
    SoundRecorder(std::vector<int> pitches, std::string file) : m_pitches(std::move(pitches)), m_file(std::move(file))
    {
        const char *monitor = std::getenv("KV_SOUND_MONITOR"), *rate = std::getenv("KV_SOUND_RATE");
        if (!monitor || !rate) {
            error = "KV_SOUND_MONITOR and KV_SOUND_RATE are not set: run the test through tests/sound/private-sound.sh";
            return;
        }
        m_rate = std::atoi(rate);
        // A small fragment size: parec writes every few milliseconds, so "now" is known closely.
        std::string args[] = {"/usr/bin/parec", "--raw", "--device=" + std::string(monitor), "--format=s16le",
                              "--rate=" + std::string(rate), "--channels=1", "--latency-msec=10"};
        char *argv[std::size(args) + 1] = {};
        std::transform(std::begin(args), std::end(args), argv, [](std::string &a) { return a.data(); });
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, m_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (posix_spawn(&m_pid, argv[0], &actions, nullptr, argv, environ) != 0)
            m_pid = 0, error = "cannot start /usr/bin/parec";
        posix_spawn_file_actions_destroy(&actions);
        for (int i = 0; m_pid && position() == 0 && i < 1000; ++i)
            ::usleep(5000);
        if (m_pid && position() == 0)
            error = "parec recorded nothing from " + std::string(monitor);
    }
    ~SoundRecorder()
    {
        if (m_pid > 0 && ::kill(m_pid, SIGKILL) == 0)
            ::waitpid(m_pid, nullptr, 0);
    }

    std::string error; // empty while recording

    std::int64_t position() const
    {
        struct stat st{};
        return ::stat(m_file.c_str(), &st) == 0 ? st.st_size / 2 : 0;
    }
    std::int64_t samples(std::chrono::milliseconds d) const { return std::int64_t(d.count()) * m_rate / 1000; }
    double milliseconds(std::int64_t samples) const { return 1000.0 * double(samples) / m_rate; }

    // The first sample at or after `from` that is not silent.
    std::optional<std::int64_t> firstSound(std::int64_t from) const
    {
        const std::span<const std::int16_t> s = between(from, position());
        const auto it = std::find_if(s.begin(), s.end(), [](std::int16_t x) { return std::abs(x) >= Level; });
        return it == s.end() ? std::nullopt : std::optional(from + (it - s.begin()));
    }
    // The first position at or after `from` from which `hold` samples in a row are silent.
    std::optional<std::int64_t> silenceFrom(std::int64_t from, std::int64_t hold) const
    {
        const std::span<const std::int16_t> s = between(from, position());
        std::int64_t quietSince = 0;
        for (std::int64_t i = 0; i < std::int64_t(s.size()); ++i) {
            if (std::abs(s[size_t(i)]) >= Level)
                quietSince = i + 1;
            else if (i + 1 - quietSince >= hold)
                return from + quietSince;
        }
        return std::nullopt;
    }

    // The sounds between two positions, a segment each: 10 ms blocks named after the candidate
    // that holds more than half of their energy (Goertzel), or Other, neighbours of one name
    // merged. A sound cut off mid-block leaves a click of no pitch, and a busy machine may drop
    // a few blocks of a sound; neither makes a sound of its own.
    std::vector<SoundSegment> sounds(std::int64_t from, std::int64_t to) const
    {
        const std::span<const std::int16_t> s = between(from, to);
        const size_t n = size_t(m_rate / 100);
        std::vector<SoundSegment> blocks;
        for (size_t at = 0; at + n <= s.size(); at += n) {
            double energy = 0;
            for (size_t i = at; i < at + n; ++i)
                energy += double(s[i]) * s[i];
            if (std::sqrt(energy / double(n)) < Level)
                continue;
            // A sine of amplitude A over n samples gives |X|^2 = (A n / 2)^2 and an energy of
            // A^2 n / 2, so 2 |X|^2 / (n energy) is the share of the energy at that pitch.
            int name = SoundSegment::Other;
            double best = 0.6;
            for (const int pitch : m_pitches) {
                const double c = 2.0 * std::cos(2.0 * std::numbers::pi * pitch / m_rate);
                double s1 = 0, s2 = 0;
                for (size_t i = at; i < at + n; ++i)
                    s2 = std::exchange(s1, s[i] + c * s1 - s2);
                if (const double share = 2.0 * (s1 * s1 + s2 * s2 - c * s1 * s2) / (double(n) * energy); share >= best)
                    best = share, name = pitch;
            }
            const double start = double(from + std::int64_t(at)) / m_rate, end = start + double(n) / m_rate;
            if (!blocks.empty() && blocks.back().pitch == name && start - blocks.back().end < 1e-6)
                blocks.back().end = end;
            else
                blocks.push_back({name, start, end});
        }
        std::vector<SoundSegment> out;
        for (const SoundSegment &b : blocks) {
            if (b.pitch == SoundSegment::Other && b.end - b.start <= 0.05)
                continue;
            if (!out.empty() && out.back().pitch == b.pitch && b.start - out.back().end < 0.2)
                out.back().end = b.end;
            else
                out.push_back(b);
        }
        return out;
    }

private:
    // The samples between two positions, of those recorded so far. The file only grows, so each
    // byte is read once however often a test polls; half a sample is read again with the rest.
    std::span<const std::int16_t> between(std::int64_t from, std::int64_t to) const
    {
        std::ifstream in(m_file, std::ios::binary);
        in.seekg(std::streamoff(2 * m_samples.size()));
        std::int16_t buffer[4096];
        while (in.read(reinterpret_cast<char *>(buffer), sizeof buffer) || in.gcount() > 1)
            m_samples.insert(m_samples.end(), buffer, buffer + in.gcount() / 2);
        const auto all = std::int64_t(m_samples.size());
        const std::int64_t begin = std::clamp<std::int64_t>(from, 0, all), end = std::clamp<std::int64_t>(to, begin, all);
        return std::span<const std::int16_t>(m_samples).subspan(size_t(begin), size_t(end - begin));
    }

    std::vector<int> m_pitches;
    std::string m_file;
    int m_rate = 44100;
    pid_t m_pid = 0;
    mutable std::vector<std::int16_t> m_samples;
};

} // namespace kv::test
