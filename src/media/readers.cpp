#include "media/readers.h"

#include "media/mp3reader.h"
#include "media/mpcreader.h"
#include "media/oggreader.h"
#include "media/wavreader.h"

namespace kv {

std::optional<MediaInfo> readMediaInfo(AudioFormat format, const QString &folder,
                                       const QString &fileName, Files &files)
{
    switch (format) {
    case AudioFormat::Wav:
        return ReadWavInfo(folder, fileName, files);
    case AudioFormat::Mp3:
        return ReadMp3Info(folder, fileName, files);
    case AudioFormat::Ogg:
        return ReadOggInfo(folder, fileName, files);
    case AudioFormat::Mpc:
        return ReadMpcInfo(folder, fileName, files);
    }
    return std::nullopt;
}

std::optional<MediaInfo> readMediaInfo(AudioFormat format, const QString &fileName, ByteSource &bytes)
{
    switch (format) {
    case AudioFormat::Wav:
        return readWavInfo(fileName, bytes);
    case AudioFormat::Mp3:
        return readMp3Info(fileName, bytes);
    case AudioFormat::Ogg:
        return readOggInfo(fileName, bytes);
    case AudioFormat::Mpc:
        return readMpcInfo(fileName, bytes);
    }
    return std::nullopt;
}

} // namespace kv
