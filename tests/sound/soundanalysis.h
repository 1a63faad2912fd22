#pragma once

// What a recording of the sound server holds, told from its samples: which known pitch sounds
// when, where sound starts and where silence begins. Positions are sample indexes counted from
// the first recorded sample; the analysed samples start at a given position.
#include <cstdint>
#include <optional>
#include <ostream>
#include <span>
#include <vector>

namespace kv::test {

struct Listening
{
    int rate = 44100;
    std::vector<int> pitches; // the candidates, in Hz
    double blockSeconds = 0.01;
    // A sample whose magnitude, or a block whose RMS, is below this share of full scale is
    // silence (-40 dBFS: far below the tones, far above a decoder's rounding noise).
    double level = 0.01;
    // The share of a block's energy its loudest candidate must hold to be named: more than half,
    // so two tones at once are Other, not one of them.
    double dominance = 0.6;
};

// One stretch of a recording: a pitch in Hz, Silence, or Other (a sound no candidate dominates).
struct SoundSegment
{
    static constexpr int Silence = 0;
    static constexpr int Other = -1;
    int pitch = Silence;
    double start = 0; // seconds
    double end = 0;

    bool operator==(const SoundSegment &) const = default;
};
std::ostream &operator<<(std::ostream &os, const SoundSegment &segment);

// The recording cut into blocks, each named after its dominant pitch (Goertzel at each
// candidate), silence or Other, neighbours of one name merged. A tone's first and last block,
// where it fills only part of the block, count as that tone.
std::vector<SoundSegment> timeline(std::span<const std::int16_t> samples, std::int64_t firstPosition,
                                   const Listening &listening);

// The segments that are not silence, in order.
std::vector<SoundSegment> sounds(const std::vector<SoundSegment> &segments);

// The first sample at or after `from` that is not silent.
std::optional<std::int64_t> firstSound(std::span<const std::int16_t> samples, std::int64_t firstPosition,
                                       std::int64_t from, double level);

// The last sample before `before` that is not silent.
std::optional<std::int64_t> lastSoundBefore(std::span<const std::int16_t> samples, std::int64_t firstPosition,
                                            std::int64_t before, double level);

// The first position at or after `from` from which `hold` samples in a row are silent.
std::optional<std::int64_t> silenceFrom(std::span<const std::int16_t> samples, std::int64_t firstPosition,
                                        std::int64_t from, std::int64_t hold, double level);

} // namespace kv::test
