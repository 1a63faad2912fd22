#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include <QString>

#include "media/mediainfo.h"
#include "platform/bytesource.h"
#include "platform/files.h"

namespace kv {

// Reads the first bytes of a file as one fixed record and returns how many there were. A short
// file leaves the rest zero, so a truncated header simply fails the identity checks; a failed
// read is a Failure.
std::size_t readRecordInto(ByteSource &bytes, std::uint8_t *record, std::size_t size);

template <std::size_t N>
std::array<std::uint8_t, N> readRecord(ByteSource &bytes)
{
    std::array<std::uint8_t, N> record{};
    readRecordInto(bytes, record.data(), N);
    return record;
}

// The record only when the file holds all of it.
template <std::size_t N>
std::optional<std::array<std::uint8_t, N>> readWholeRecord(ByteSource &bytes)
{
    std::array<std::uint8_t, N> record{};
    if (readRecordInto(bytes, record.data(), N) < N)
        return std::nullopt;
    return record;
}

// Little-endian fields of a record.
template <std::size_t N>
constexpr std::uint16_t le16(const std::array<std::uint8_t, N> &r, std::size_t at)
{
    return static_cast<std::uint16_t>(r[at] | (r[at + 1] << 8));
}

template <std::size_t N>
constexpr std::uint32_t le32(const std::array<std::uint8_t, N> &r, std::size_t at)
{
    return static_cast<std::uint32_t>(r[at]) | (static_cast<std::uint32_t>(r[at + 1]) << 8)
           | (static_cast<std::uint32_t>(r[at + 2]) << 16)
           | (static_cast<std::uint32_t>(r[at + 3]) << 24);
}

// Exact, case-sensitive comparison of a character field with a tag such as "RIFF".
template <std::size_t N, std::size_t M>
constexpr bool hasTag(const std::array<std::uint8_t, N> &r, std::size_t at, const char (&tag)[M])
{
    for (std::size_t i = 0; i + 1 < M; ++i)
        if (r[at + i] != static_cast<std::uint8_t>(tag[i]))
            return false;
    return true;
}

// The MP3 and Musepack readers see a byte through its hexadecimal text without a leading zero,
// so a byte below 16 has no second digit and reads as sixteen times its value (4 -> 0x40).
// Kept on purpose: the channel mode of MP3 headers whose fourth byte is below 16, and the
// Musepack sample-rate index of such bytes, depend on it.
constexpr std::uint8_t hexTextValue(std::uint8_t b)
{
    return b < 16 ? static_cast<std::uint8_t>(b << 4) : b;
}

// The start of every row: the name, then the size in KB of the whole file.
MediaInfo startRow(const QString &fileName, std::int32_t sizeKb);

// Opens folder + fileName and hands the bytes to a reader; a file that cannot be opened gives
// no row.
template <typename Reader>
std::optional<MediaInfo> readFile(const QString &folder, const QString &fileName, Files &files,
                                  Reader reader)
{
    const auto bytes = files.open(folder + fileName);
    if (!bytes)
        return std::nullopt;
    return reader(fileName, *bytes);
}

} // namespace kv
