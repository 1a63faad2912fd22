#include "engine/runparameters.h"

namespace kv {

void applyMakeCommand(RunParameters &parameters, MakeCommand command, AudioFormat shownFormat,
                      const EncoderSettings &settings, OptionTextBuilder &builder)
{
    const QString wav = QStringLiteral(".wav");
    switch (command) {
    case MakeCommand::Mp3:
        parameters = {codecs::lame, builder.BuildOptionText(Encoder::Mp3, settings), wav,
                      QStringLiteral(".mp3")};
        return;
    case MakeCommand::Ogg:
        parameters = {codecs::oggenc2, builder.BuildOptionText(Encoder::Ogg, settings), wav,
                      QStringLiteral(".ogg")};
        return;
    case MakeCommand::Mpc:
        parameters = {codecs::mppenc, builder.BuildOptionText(Encoder::Mpc, settings), wav,
                      QStringLiteral(".mpc")};
        return;
    case MakeCommand::Wav:
        switch (shownFormat) {
        case AudioFormat::Mp3:
            parameters = {codecs::lame, QStringLiteral("--decode"), QStringLiteral(".mp3"), wav};
            break;
        case AudioFormat::Ogg:
            parameters = {codecs::oggdec, QString(), QStringLiteral(".ogg"), wav};
            break;
        case AudioFormat::Mpc:
            parameters = {codecs::mppdec, QString(), QStringLiteral(".mpc"), wav};
            break;
        case AudioFormat::Wav:
            break;
        }
        parameters.targetExtension = wav;
        return;
    }
}

} // namespace kv
