#include "sound/soundanalysis.h"

#include <cmath>
#include <numbers>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace kv::test {
namespace {

constexpr int Rate = 44100;
// The buffer as if the recording had started earlier: every answer is a recording position.
constexpr std::int64_t First = 1000;

std::int64_t at(double seconds) { return std::llround(seconds * Rate); }

void tone(std::vector<std::int16_t> &buffer, double from, double to, double pitch, double amplitude)
{
    for (std::int64_t i = at(from); i < at(to); ++i) {
        const double t = double(i - at(from)) / Rate;
        buffer[std::size_t(i)] = std::int16_t(std::lround(amplitude * 32767 * std::cos(2 * std::numbers::pi * pitch * t)));
    }
}

// Tones that start and end inside 10 ms blocks, one that follows another at once, one too quiet
// to count beside a faint one that does, one of a pitch that is not a candidate and two
// candidates at once.
struct Recording : ::testing::Test
{
    Listening listening{Rate, {440, 660, 990, 1480}};
    std::vector<std::int16_t> buffer = std::vector<std::int16_t>(std::size_t(at(1.9)));

    Recording()
    {
        tone(buffer, 0.057, 0.352, 440, 0.5);
        tone(buffer, 0.457, 0.657, 990, 0.5);
        tone(buffer, 0.657, 0.857, 1480, 0.5);
        tone(buffer, 0.857, 0.950, 660, 0.008);
        tone(buffer, 0.950, 1.150, 550, 0.5);
        tone(buffer, 1.400, 1.600, 660, 0.25);
        std::vector<std::int16_t> other(buffer.size());
        tone(other, 1.400, 1.600, 990, 0.25);
        for (std::size_t i = 0; i < buffer.size(); ++i)
            buffer[i] = std::int16_t(buffer[i] + other[i]);
        tone(buffer, 1.700, 1.800, 440, 0.02);
    }

    // Segments in whole milliseconds since the buffer's start, easy to read in a failure.
    std::string shown(const std::vector<SoundSegment> &segments) const
    {
        std::ostringstream out;
        const double origin = double(First) / Rate;
        for (const SoundSegment &s : segments)
            out << s.pitch << ":" << std::lround((s.start - origin) * 1000) << "-" << std::lround((s.end - origin) * 1000) << " ";
        return out.str();
    }
};

// The instrument of the hearing tests: it names each stretch on block boundaries, leaves out
// silences and a partial block, and finds a sound's edges to the sample.
TEST_F(Recording, NamesEachStretchAndFindsItsEdges)
{
    EXPECT_EQ(shown(timeline(buffer, First, listening)),
              "0:0-50 440:50-360 0:360-450 990:450-660 1480:660-860 0:860-950 -1:950-1150 0:1150-1400 -1:1400-1600 "
              "0:1600-1700 440:1700-1800 0:1800-1900 ");
    EXPECT_EQ(shown(sounds(timeline(buffer, First, listening))),
              "440:50-360 990:450-660 1480:660-860 -1:950-1150 -1:1400-1600 440:1700-1800 ");
    EXPECT_EQ(shown(timeline(std::span(buffer).first(std::size_t(at(0.2)) + 100), First, listening)), "0:0-50 440:50-200 ");

    EXPECT_EQ(firstSound(buffer, First, First + at(0.36), listening.level), First + at(0.457));
    EXPECT_EQ(firstSound(buffer, First, First + at(1.81), listening.level), std::nullopt);
    const std::optional<std::int64_t> last = lastSoundBefore(buffer, First, First + at(0.4), listening.level);
    ASSERT_TRUE(last); // a cosine's last loud sample is a few before its end
    EXPECT_LE(First + at(0.352) - *last, 3);
    // 105 ms of silence after the first tone hold 100 ms, not 150 ms; a quiet tone counts as silence.
    EXPECT_EQ(silenceFrom(buffer, First, First + at(0.1), at(0.1), listening.level), *last + 1);
    EXPECT_NEAR(double(*silenceFrom(buffer, First, First + at(0.1), at(0.15), listening.level) - First), double(at(1.15)), 3);
    EXPECT_EQ(silenceFrom(buffer, First, First + at(1.81), at(0.1), listening.level), std::nullopt);
}

} // namespace
} // namespace kv::test
