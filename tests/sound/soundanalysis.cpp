#include "sound/soundanalysis.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kv::test {

namespace {

constexpr double FullScale = 32768.0;

bool loud(std::int16_t sample, double level)
{
    return std::abs(sample) >= level * FullScale;
}

// |X(f)|^2 of the block at one frequency, in squared sample units.
double goertzel(std::span<const std::int16_t> block, double frequency, int rate)
{
    const double coefficient = 2.0 * std::cos(2.0 * std::numbers::pi * frequency / rate);
    double s1 = 0;
    double s2 = 0;
    for (const std::int16_t x : block) {
        const double s = x + coefficient * s1 - s2;
        s2 = s1;
        s1 = s;
    }
    return s1 * s1 + s2 * s2 - coefficient * s1 * s2;
}

int nameBlock(std::span<const std::int16_t> block, const Listening &listening)
{
    double energy = 0;
    for (const std::int16_t x : block)
        energy += double(x) * x;
    const auto n = double(block.size());
    if (std::sqrt(energy / n) < listening.level * FullScale)
        return SoundSegment::Silence;
    // A sine of amplitude A over n samples gives |X|^2 = (A n / 2)^2 and an energy of A^2 n / 2,
    // so 2 |X|^2 / (n energy) is the share of the energy at that pitch.
    int best = SoundSegment::Other;
    double bestShare = listening.dominance;
    for (const int pitch : listening.pitches) {
        const double share = 2.0 * goertzel(block, pitch, listening.rate) / (n * energy);
        if (share >= bestShare) {
            bestShare = share;
            best = pitch;
        }
    }
    return best;
}

std::span<const std::int16_t> from(std::span<const std::int16_t> samples, std::int64_t firstPosition, std::int64_t position)
{
    const std::int64_t skip = std::clamp<std::int64_t>(position - firstPosition, 0, std::int64_t(samples.size()));
    return samples.subspan(std::size_t(skip));
}

} // namespace

std::ostream &operator<<(std::ostream &os, const SoundSegment &segment)
{
    if (segment.pitch == SoundSegment::Silence)
        os << "silence";
    else if (segment.pitch == SoundSegment::Other)
        os << "other";
    else
        os << segment.pitch << " Hz";
    return os << " " << segment.start << "-" << segment.end << " s";
}

std::vector<SoundSegment> timeline(std::span<const std::int16_t> samples, std::int64_t firstPosition,
                                   const Listening &listening)
{
    const auto blockSize = std::size_t(std::max(1L, std::lround(listening.blockSeconds * listening.rate)));
    std::vector<int> names;
    for (std::size_t at = 0; at + blockSize <= samples.size(); at += blockSize)
        names.push_back(nameBlock(samples.subspan(at, blockSize), listening));
    // A block a tone only partly fills holds too little of it to be named.
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] != SoundSegment::Other)
            continue;
        // Only a tone's edge: one block between that tone and silence or another tone. A sound
        // of its own lasts longer and stays Other.
        const int before = i > 0 ? names[i - 1] : SoundSegment::Silence;
        const int after = i + 1 < names.size() ? names[i + 1] : SoundSegment::Silence;
        if (before > 0 && after != SoundSegment::Other)
            names[i] = before;
        else if (after > 0 && before == SoundSegment::Silence)
            names[i] = after;
    }

    std::vector<SoundSegment> segments;
    const double start = double(firstPosition) / listening.rate;
    const double blockLength = double(blockSize) / listening.rate;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const double blockStart = start + double(i) * blockLength;
        if (!segments.empty() && segments.back().pitch == names[i])
            segments.back().end = blockStart + blockLength;
        else
            segments.push_back(SoundSegment{names[i], blockStart, blockStart + blockLength});
    }
    return segments;
}

std::vector<SoundSegment> sounds(const std::vector<SoundSegment> &segments)
{
    std::vector<SoundSegment> out;
    std::copy_if(segments.begin(), segments.end(), std::back_inserter(out),
                 [](const SoundSegment &s) { return s.pitch != SoundSegment::Silence; });
    return out;
}

std::optional<std::int64_t> firstSound(std::span<const std::int16_t> samples, std::int64_t firstPosition,
                                       std::int64_t position, double level)
{
    const auto rest = from(samples, firstPosition, position);
    const auto it = std::find_if(rest.begin(), rest.end(), [level](std::int16_t x) { return loud(x, level); });
    if (it == rest.end())
        return std::nullopt;
    return firstPosition + std::int64_t(it - samples.begin());
}

std::optional<std::int64_t> lastSoundBefore(std::span<const std::int16_t> samples, std::int64_t firstPosition,
                                            std::int64_t before, double level)
{
    const std::int64_t end = std::clamp<std::int64_t>(before - firstPosition, 0, std::int64_t(samples.size()));
    for (std::int64_t i = end - 1; i >= 0; --i) {
        if (loud(samples[std::size_t(i)], level))
            return firstPosition + i;
    }
    return std::nullopt;
}

std::optional<std::int64_t> silenceFrom(std::span<const std::int16_t> samples, std::int64_t firstPosition,
                                        std::int64_t position, std::int64_t hold, double level)
{
    const std::int64_t begin = std::max(position, firstPosition);
    std::int64_t quietSince = begin;
    for (std::int64_t p = begin; p < firstPosition + std::int64_t(samples.size()); ++p) {
        if (loud(samples[std::size_t(p - firstPosition)], level))
            quietSince = p + 1;
        else if (p + 1 - quietSince >= hold)
            return quietSince;
    }
    return std::nullopt;
}

} // namespace kv::test
