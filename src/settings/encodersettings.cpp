#include "settings/encodersettings.h"

#include "common/checked.h"
#include "common/failure.h"
#include "common/rounding.h"
#include "common/texts.h"

namespace kv {

namespace {

// The text a list shows for an index; an index outside the list is no selection and shows nothing.
QString entryText(const QStringList &list, int index)
{
    return index >= 0 && index < list.size() ? list.at(index) : QString();
}

QString musepackQualityText(int tenths)
{
    return QStringLiteral("--quality ") + commandLineNumber(roundHalfEven(tenths / 10.0, 2));
}

} // namespace

const QStringList &mp3PresetTexts()
{
    static const QStringList texts = {
        QStringLiteral("--preset insane"), QStringLiteral("--preset extreme"),
        QStringLiteral("--preset standard"), QStringLiteral("--preset medium"),
    };
    return texts;
}

const QStringList &mpcPresetTexts()
{
    static const QStringList texts = {
        QStringLiteral("--braindead"), QStringLiteral("--insane"), QStringLiteral("--extreme"),
        QStringLiteral("--standard"), QStringLiteral("--radio"), QStringLiteral("--thumb"),
        QStringLiteral("--telephone"),
    };
    return texts;
}

const QStringList &mp3CbrTexts()
{
    // " 8 kbps" keeps its leading blank: every entry carries its number in the first three
    // characters, which is all the option text and the estimate read.
    static const QStringList texts = {
        QStringLiteral("320 kbps"), QStringLiteral("256 kbps"), QStringLiteral("224 kbps"),
        QStringLiteral("192 kbps"), QStringLiteral("160 kbps"), QStringLiteral("128 kbps"),
        QStringLiteral("112 kbps"), QStringLiteral("96 kbps"),  QStringLiteral("80 kbps"),
        QStringLiteral("64 kbps"),  QStringLiteral("56 kbps"),  QStringLiteral("48 kbps"),
        QStringLiteral("40 kbps"),  QStringLiteral("32 kbps"),  QStringLiteral("24 kbps"),
        QStringLiteral("16 kbps"),  QStringLiteral(" 8 kbps"),
    };
    return texts;
}

QString trimBlanks(const QString &text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text.at(begin) == QLatin1Char(' '))
        ++begin;
    while (end > begin && text.at(end - 1) == QLatin1Char(' '))
        --end;
    return text.mid(begin, end - begin);
}

int cbrKbps(int cbrIndex)
{
    return Int16::fromReal(numberFromText(trimBlanks(entryText(mp3CbrTexts(), cbrIndex).left(3))));
}

QString abrLabelText(int kbps)
{
    return QString::number(kbps) + QStringLiteral(" kbps");
}

QString qualityLabelText(int tenths, const QLocale &locale)
{
    return QStringLiteral("--quality ") + shortestNumber(tenths / 10.0, locale);
}

QString OptionTextBuilder::BuildOptionText(Encoder encoder, const EncoderSettings &settings)
{
    // A mode without a case below keeps m_modePart from the previous call, whichever encoder
    // made it: the toolbar always selects a mode first, so this never shows in a job.
    switch (encoder) {
    case Encoder::Mp3: {
        const Mp3Settings &s = settings.mp3;
        switch (s.mode) {
        case static_cast<int>(Mp3Mode::VariableBitrate):
            m_modePart = entryText(mp3PresetTexts(), s.presetIndex);
            break;
        case static_cast<int>(Mp3Mode::AverageBitrate):
            m_modePart = QStringLiteral("--preset ") + QString::number(s.abrKbps);
            break;
        case static_cast<int>(Mp3Mode::ConstantBitrate):
            m_modePart = QStringLiteral("--preset cbr ")
                         + trimBlanks(entryText(mp3CbrTexts(), s.cbrIndex).left(3));
            break;
        case static_cast<int>(Mp3Mode::CommandLine):
            m_modePart = trimBlanks(s.commandLine);
            break;
        default:
            break;
        }
        return m_modePart + QStringLiteral(" --silent --priority");
    }
    case Encoder::Ogg: {
        const OggSettings &s = settings.ogg;
        switch (s.mode) {
        case static_cast<int>(OggMode::QualityMode):
            // Not the label's text: under a comma or Arabic-digit locale the encoder would read
            // another quality.
            m_modePart = QStringLiteral("--quality ") + commandLineNumber(s.qualityTenths / 10.0);
            break;
        case static_cast<int>(OggMode::AverageBitrate):
            m_modePart = QStringLiteral("--bitrate ") + QString::number(s.abrKbps);
            break;
        case static_cast<int>(OggMode::CommandLine):
            m_modePart = trimBlanks(s.commandLine);
            break;
        default:
            break;
        }
        return QStringLiteral("--quiet ") + m_modePart;
    }
    case Encoder::Mpc: {
        const MpcSettings &s = settings.mpc;
        switch (s.mode) {
        case static_cast<int>(MpcMode::Preset):
            m_modePart = entryText(mpcPresetTexts(), s.presetIndex);
            break;
        case static_cast<int>(MpcMode::Quality):
            m_modePart = musepackQualityText(s.qualityTenths);
            break;
        case static_cast<int>(MpcMode::CommandLine):
            m_modePart = trimBlanks(s.commandLine);
            break;
        default:
            break;
        }
        return QStringLiteral("--overwrite --silent ") + m_modePart;
    }
    }
    return m_modePart;
}

void EstimateBitrates(const EncoderSettings &settings, BitrateEstimates &estimates)
{
    guarded([&] {
        const Mp3Settings &mp3 = settings.mp3;
        switch (mp3.mode) {
        case static_cast<int>(Mp3Mode::VariableBitrate): {
            static constexpr std::int16_t byPreset[] = {320, 234, 198, 149};
            if (mp3.presetIndex >= 0 && mp3.presetIndex < 4)
                estimates.mp3 = byPreset[mp3.presetIndex];
            break;
        }
        case static_cast<int>(Mp3Mode::AverageBitrate):
            estimates.mp3 = Int16(mp3.abrKbps);
            break;
        case static_cast<int>(Mp3Mode::ConstantBitrate):
            estimates.mp3 = Int16(cbrKbps(mp3.cbrIndex));
            break;
        case static_cast<int>(Mp3Mode::CommandLine):
            estimates.mp3 = 224;
            break;
        default:
            break;
        }

        const OggSettings &ogg = settings.ogg;
        switch (ogg.mode) {
        case static_cast<int>(OggMode::QualityMode): {
            // Piecewise fit of the encoder's nominal rates; the steps at the range ends are kept.
            const int q = ogg.qualityTenths;
            if (q >= -10 && q <= -1)
                estimates.ogg = Int16::fromReal(q * 1.9 + 64);
            else if (q >= 0 && q <= 39)
                estimates.ogg = Int16::fromReal(q * 1.6 + 64);
            else if (q >= 40 && q <= 79)
                estimates.ogg = Int16::fromReal(q * 3.2);
            else if (q >= 80 && q <= 89)
                estimates.ogg = Int16::fromReal(q * 6.4 - 256);
            else if (q >= 90 && q <= 100)
                estimates.ogg = Int16(q) * Int16(18) - Int16(1300);
            break;
        }
        case static_cast<int>(OggMode::AverageBitrate):
            estimates.ogg = Int16(ogg.abrKbps);
            break;
        case static_cast<int>(OggMode::CommandLine):
            estimates.ogg = 224;
            break;
        default:
            break;
        }

        const MpcSettings &mpc = settings.mpc;
        switch (mpc.mode) {
        case static_cast<int>(MpcMode::Preset): {
            static constexpr std::int16_t byPreset[] = {270, 240, 210, 180, 130, 90, 60};
            if (mpc.presetIndex >= 0 && mpc.presetIndex < 7)
                estimates.mpc = byPreset[mpc.presetIndex];
            break;
        }
        case static_cast<int>(MpcMode::Quality): {
            // Not monotonic (q 29 gives 87, q 30 gives 70): the forecast has always used this curve.
            const int q = mpc.qualityTenths;
            if (q >= 0 && q <= 19)
                estimates.mpc = Int16(q) * Int16(2) + Int16(20);
            else if (q >= 20 && q <= 29)
                estimates.mpc = Int16(q) * Int16(3);
            else if (q >= 30 && q <= 39)
                estimates.mpc = Int16(q) * Int16(4) - Int16(50);
            else if (q >= 40 && q <= 49)
                estimates.mpc = Int16(q) * Int16(5) - Int16(70);
            else if (q >= 50 && q <= 100)
                estimates.mpc = Int16(q) * Int16(3) + Int16(30);
            break;
        }
        case static_cast<int>(MpcMode::CommandLine):
            estimates.mpc = 224;
            break;
        default:
            break;
        }
    });
}

} // namespace kv
