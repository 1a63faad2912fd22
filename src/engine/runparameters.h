#pragma once

#include <QString>

#include "media/mediainfo.h"
#include "settings/encodersettings.h"

namespace kv {

// The four values a Make command fixes for the run: the codec's file name in the codec folder,
// its options, and the source and target extensions (".wav", ".mp3", ...).
struct RunParameters
{
    QString codec;
    QString options;
    QString sourceExtension;
    QString targetExtension;
    bool operator==(const RunParameters &) const = default;
};

enum class MakeCommand { Mp3, Ogg, Mpc, Wav };

// The codec names of the codec folder on this platform.
namespace codecs {
inline const QString lame = QStringLiteral("lame");
inline const QString madplay = QStringLiteral("madplay");
inline const QString mppenc = QStringLiteral("mppenc");
inline const QString mppdec = QStringLiteral("mppdec");
inline const QString oggenc2 = QStringLiteral("oggenc2");
inline const QString oggdec = QStringLiteral("oggdec");
} // namespace codecs

// Sets the run parameters of one Make command. Encoding takes its options from the settings;
// Make Wav picks the decoder by the pressed Show filter, and with Show Wav pressed (a state the
// toolbar never allows) leaves the previous command's parameters in force.
void applyMakeCommand(RunParameters &parameters, MakeCommand command, AudioFormat shownFormat,
                      const EncoderSettings &settings, OptionTextBuilder &builder);

} // namespace kv
