#pragma once

#include <optional>

#include <QString>

namespace kv {

// The codec entry that plays one kind of file, and the options that make it play instead of
// decode. WAV has none: the system's own player takes it.
struct PlayerDecoder
{
    QString program;
    QString options; // with its blanks, as it goes between the two quoted paths
    bool operator==(const PlayerDecoder &) const = default;
};

// By the listing's pattern, compared exactly in the order mp3, ogg, mpc; none for anything else.
std::optional<PlayerDecoder> playerDecoder(const QString &pattern);

// The quoted entry path, the options and the quoted file path, nothing between them.
QString playerCommandLine(const QString &programFolder, const PlayerDecoder &decoder, const QString &path);

// The system's sound player for a WAV file, started with the program's own environment.
QString soundCommandLine(const QString &path);

} // namespace kv
