#pragma once

#include <array>
#include <optional>

#include <QString>

namespace kv {

// The four kinds of file listed, chosen by the listing's pattern, never by content.
enum class AudioFormat { Wav, Mp3, Ogg, Mpc };

// "*.wav" -> Wav and so on; exact comparison, anything else is no format.
std::optional<AudioFormat> formatFromPattern(const QString &pattern);
QString patternOf(AudioFormat format);

// One row of the file list as the readers write it: column 0 the file name, then size in KB,
// duration, bit rate, sampling rate and channel word. A column the reader did not reach stays
// empty: rows may be partial by design.
struct MediaInfo
{
    enum Column { Name = 0, SizeKb = 1, Duration = 2, Bitrate = 3, Sampling = 4, Channel = 5 };
    static constexpr int ColumnCount = 6;

    std::array<QString, ColumnCount> columns;

    const QString &operator[](int column) const { return columns.at(static_cast<size_t>(column)); }
    QString &operator[](int column) { return columns.at(static_cast<size_t>(column)); }
    bool operator==(const MediaInfo &) const = default;
};

} // namespace kv
