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

TEST_F(Recording, TimelineNamesEachStretchOnBlockBoundaries)
{
    EXPECT_EQ(shown(timeline(buffer, First, listening)),
              "0:0-50 440:50-360 0:360-450 990:450-660 1480:660-860 0:860-950 -1:950-1150 0:1150-1400 -1:1400-1600 "
              "0:1600-1700 440:1700-1800 0:1800-1900 ");
}

TEST_F(Recording, SoundsLeaveOutTheSilences)
{
    EXPECT_EQ(shown(sounds(timeline(buffer, First, listening))),
              "440:50-360 990:450-660 1480:660-860 -1:950-1150 -1:1400-1600 440:1700-1800 ");
}

TEST_F(Recording, APartialBlockAtTheEndIsNotAnalysed)
{
    const std::span<const std::int16_t> cut = std::span(buffer).first(std::size_t(at(0.2)) + 100);
    EXPECT_EQ(shown(timeline(cut, First, listening)), "0:0-50 440:50-200 ");
}

TEST_F(Recording, FirstAndLastSoundAreFoundToTheSample)
{
    // A cosine is loud at its first sample; its last loud sample is at most a few before its end.
    EXPECT_EQ(firstSound(buffer, First, First, listening.level), First + at(0.057));
    EXPECT_EQ(firstSound(buffer, First, First + at(0.36), listening.level), First + at(0.457));
    EXPECT_EQ(firstSound(buffer, First, First + at(1.2), listening.level), First + at(1.4));
    EXPECT_EQ(firstSound(buffer, First, First + at(1.61), listening.level), First + at(1.7));
    EXPECT_EQ(firstSound(buffer, First, First + at(1.81), listening.level), std::nullopt);

    const std::optional<std::int64_t> last = lastSoundBefore(buffer, First, First + at(0.4), listening.level);
    ASSERT_TRUE(last);
    EXPECT_LE(First + at(0.352) - *last, 3);
    EXPECT_GE(First + at(0.352) - *last, 1);
    EXPECT_EQ(lastSoundBefore(buffer, First, First + at(0.05), listening.level), std::nullopt);
}

TEST_F(Recording, SilenceFromNeedsTheWholeHold)
{
    // 105 ms of silence after the 440 Hz tone: enough for a 100 ms hold, not for 150 ms, which
    // only the stretch after the quiet tone offers (it counts as silence).
    const std::optional<std::int64_t> short_ = silenceFrom(buffer, First, First + at(0.1), at(0.1), listening.level);
    ASSERT_TRUE(short_);
    EXPECT_EQ(short_, *lastSoundBefore(buffer, First, First + at(0.4), listening.level) + 1);
    const std::optional<std::int64_t> long_ = silenceFrom(buffer, First, First + at(0.1), at(0.15), listening.level);
    ASSERT_TRUE(long_);
    EXPECT_NEAR(double(*long_ - First), double(at(1.15)), 3);
    // From 1.81 s on, 90 ms of silence remain: not a 100 ms hold.
    EXPECT_EQ(silenceFrom(buffer, First, First + at(1.81), at(0.1), listening.level), std::nullopt);
    // A position before the buffer counts from its first sample.
    EXPECT_EQ(silenceFrom(buffer, First, 0, at(0.05), listening.level), First);
}

} // namespace
} // namespace kv::test
