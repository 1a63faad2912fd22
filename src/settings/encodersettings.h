#pragma once

#include <cstdint>

#include <QLocale>
#include <QString>
#include <QStringList>

namespace kv {

enum class Encoder { Mp3, Ogg, Mpc };

enum class Mp3Mode { VariableBitrate = 0, AverageBitrate = 1, ConstantBitrate = 2, CommandLine = 3 };
enum class OggMode { QualityMode = 0, AverageBitrate = 1, CommandLine = 2 };
enum class MpcMode { Preset = 0, Quality = 1, CommandLine = 2 };

// The option state of the three encoders as the option controls hold it. Mode and list indexes
// are list positions; -1 means the list has no selection.
struct Mp3Settings
{
    int mode = 0;
    int presetIndex = 1;
    int abrKbps = 192;
    int cbrIndex = 3;
    QString commandLine = QStringLiteral("--preset extreme -q 0 -k");
    bool operator==(const Mp3Settings &) const = default;
};

struct OggSettings
{
    int mode = 0;
    int qualityTenths = 60;
    int abrKbps = 192;
    QString commandLine = QStringLiteral("--quality 6");
    bool operator==(const OggSettings &) const = default;
};

struct MpcSettings
{
    int mode = 0;
    int presetIndex = 1;
    int qualityTenths = 60;
    QString commandLine = QStringLiteral("--quality 6");
    bool operator==(const MpcSettings &) const = default;
};

// A default-constructed value holds the defaults of every encoder option.
struct EncoderSettings
{
    Mp3Settings mp3;
    OggSettings ogg;
    MpcSettings mpc;
    bool operator==(const EncoderSettings &) const = default;
};

// Expected bit rates in kbps. In-out: a rule that does not apply leaves the value as it was.
struct BitrateEstimates
{
    std::int16_t mp3 = 0;
    std::int16_t ogg = 0;
    std::int16_t mpc = 0;
    bool operator==(const BitrateEstimates &) const = default;
};

// The fixed option lists, in list order.
const QStringList &mp3PresetTexts();  // "--preset insane" ...
const QStringList &mpcPresetTexts();  // "--braindead" ...
const QStringList &mp3CbrTexts();     // "320 kbps" ... " 8 kbps"

// Builds option texts. Their numbers are plain ASCII in every locale: the codecs read them in
// the C locale. One mode part is shared by the three encoders: an encoder whose mode has
// no selection reuses whatever the previous call made, as the window always did.
class OptionTextBuilder
{
public:
    QString BuildOptionText(Encoder encoder, const EncoderSettings &settings);

private:
    QString m_modePart;
};

// Runs under its own guard: a store beyond 16 bits or an unreadable CBR entry ends it there, and
// the estimates not reached keep what the caller put in.
void EstimateBitrates(const EncoderSettings &settings, BitrateEstimates &estimates);

// The number in the first three characters of a CBR list entry ("192 kbps" -> 192, " 8 kbps" -> 8).
// An index outside the list has no entry text to read: that is a Failure.
int cbrKbps(int cbrIndex);

// "192 kbps" for the ABR sliders; "--quality 6" / "--quality 4,5" for the quality sliders, whose
// labels follow the user's locale.
QString abrLabelText(int kbps);
QString qualityLabelText(int tenths, const QLocale &locale);

// Removes leading and trailing blanks only; tabs and other white space stay, as the window's
// own trimming always did.
QString trimBlanks(const QString &text);

} // namespace kv
