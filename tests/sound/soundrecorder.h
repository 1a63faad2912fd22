#pragma once

// Hears what the private sound server of tests/sound/private-sound.sh plays: parec records its
// monitor into a file from construction on, so the time recorded so far is the time now.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <ostream>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kv::test {

// A stretch of one candidate pitch in Hz, or of Other (a sound no candidate fits), in seconds
// from the start of the recording.
struct SoundSegment
{
    static constexpr int Other = -1;
    int pitch = Other;
    double start = 0, end = 0;
};
inline std::ostream &operator<<(std::ostream &os, const SoundSegment &s)
{
    return os << (s.pitch == SoundSegment::Other ? std::string("other") : std::to_string(s.pitch) + " Hz") << " " << s.start
              << "-" << s.end << " s";
}

class SoundRecorder
{
public:
    // Returns once the first samples have come.
    SoundRecorder(std::vector<int> pitches, std::string file) : m_pitches(std::move(pitches)), m_file(std::move(file))
    {
        const char *monitor = std::getenv("KV_SOUND_MONITOR"), *rate = std::getenv("KV_SOUND_RATE");
        if (!monitor || !rate) {
            error = "KV_SOUND_MONITOR and KV_SOUND_RATE are not set: run the test through tests/sound/private-sound.sh";
            return;
        }
        m_rate = std::atoi(rate);
        // A small fragment size, so that "now" is known closely.
        const std::string command = "exec /usr/bin/parec --raw --device=" + std::string(monitor) + " --format=s16le --rate="
                                    + rate + " --channels=1 --latency-msec=10 </dev/null >'" + m_file + "'";
        const char *argv[] = {"/bin/sh", "-c", command.c_str(), nullptr};
        if (posix_spawn(&m_pid, argv[0], nullptr, nullptr, const_cast<char **>(argv), environ) != 0)
            m_pid = 0;
        for (int i = 0; m_pid && now() == 0 && i < 1000; ++i)
            ::usleep(5000);
        if (now() == 0)
            error = "parec recorded nothing from " + std::string(monitor);
    }
    ~SoundRecorder()
    {
        if (m_pid > 0 && ::kill(m_pid, SIGKILL) == 0)
            ::waitpid(m_pid, nullptr, 0);
    }

    std::string error; // empty while recording

    // The seconds recorded so far. The file only grows, so each byte is read and analysed once
    // however often a test polls; half a sample is read again with the rest.
    double now()
    {
        std::ifstream in(m_file, std::ios::binary);
        in.seekg(std::streamoff(2 * m_read));
        std::int16_t buffer[4096];
        while (in.read(reinterpret_cast<char *>(buffer), sizeof buffer) || in.gcount() > 1)
            for (const std::int16_t x : std::span(buffer, size_t(in.gcount() / 2)))
                hear(x);
        return double(m_read) / m_rate;
    }

    // The sounds begun at or after `from` (seconds). A stretch of 50 ms or less is the click of a
    // sound cut off or a glitch of a busy machine, not a sound, and a gap under 200 ms within
    // one pitch is a few dropped blocks.
    std::vector<SoundSegment> sounds(double from)
    {
        now();
        std::vector<SoundSegment> out;
        for (const SoundSegment &s : m_periods) {
            if (s.start < from || s.end - s.start <= 0.05)
                continue;
            if (!out.empty() && out.back().pitch == s.pitch && s.start - out.back().end < 0.2)
                out.back().end = s.end;
            else
                out.push_back(s);
        }
        return out;
    }

private:
    // The pitch of each period, from one rise through +Level after a fall through -Level to the
    // next, runs of one name merged; a period over 20 ms is silence between them. Level is
    // -40 dBFS: far below the tones, far above a decoder's rounding noise.
    void hear(std::int16_t x)
    {
        constexpr int Level = 328;
        ++m_read;
        if (m_high || x < Level) {
            m_high = m_high && x > -Level;
            return;
        }
        m_high = true;
        const double t = double(m_read) / m_rate, last = std::exchange(m_rise, t);
        if (last < 0 || t - last > 0.02)
            return;
        int name = SoundSegment::Other;
        for (const int pitch : m_pitches)
            if (std::abs(1 / (t - last) - pitch) < 0.1 * pitch)
                name = pitch;
        if (!m_periods.empty() && m_periods.back().pitch == name && m_periods.back().end == last)
            m_periods.back().end = t;
        else
            m_periods.push_back({name, last, t});
    }

    std::vector<int> m_pitches;
    std::string m_file;
    int m_rate = 44100;
    pid_t m_pid = 0;
    std::int64_t m_read = 0;
    bool m_high = false;
    double m_rise = -1;
    std::vector<SoundSegment> m_periods;
};

} // namespace kv::test
