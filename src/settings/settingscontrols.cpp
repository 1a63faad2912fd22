#include "settings/settingscontrols.h"

#include <algorithm>
#include <limits>

#include "common/checked.h"
#include "common/failure.h"

namespace kv {

namespace {

int checkedIndex(int index, qsizetype count)
{
    if (index < -1 || index >= count)
        throw Failure("list index out of range");
    return index;
}

int checkedSliderValue(int value, int min, int max)
{
    if (value < min || value > max)
        throw Failure("slider value out of range");
    return value;
}

int checkedTwips(int twips)
{
    return Int16(twips).value();
}

// A text box, like the path calls behind the folder, ends its text at the first zero character;
// a field of a file that was never written holds nothing but zeros and so reads as empty.
QString uptoFirstZero(const QString &text)
{
    const qsizetype zero = text.indexOf(QChar(u'\0'));
    return zero < 0 ? text : text.left(zero);
}

constexpr qsizetype kMp3Modes = 4, kOggModes = 3, kMpcModes = 3;

} // namespace

SettingsControls::SettingsControls(const QLocale &locale) : m_locale(locale)
{
    ShowModeControls(Encoder::Mp3);
    ShowModeControls(Encoder::Ogg);
    ShowModeControls(Encoder::Mpc);
    writeMp3AbrLabel();
    writeOggAbrLabel();
    writeOggQualityLabel();
    writeMpcQualityLabel();
}

void SettingsControls::changed()
{
    // The refresh has its own guard in the window; a failure there never stops a load.
    if (m_changeHook)
        guarded(m_changeHook);
}

void SettingsControls::setMp3Mode(int index)
{
    m_settings.mp3.mode = checkedIndex(index, kMp3Modes);
    ShowModeControls(Encoder::Mp3);
    changed();
}

void SettingsControls::setMp3Preset(int index)
{
    m_settings.mp3.presetIndex = checkedIndex(index, mp3PresetTexts().size());
    changed();
}

void SettingsControls::setMp3Abr(int kbps)
{
    m_settings.mp3.abrKbps = checkedSliderValue(kbps, kAbrMin, kAbrMax);
    writeMp3AbrLabel();
    changed();
}

void SettingsControls::setMp3Cbr(int index)
{
    m_settings.mp3.cbrIndex = checkedIndex(index, mp3CbrTexts().size());
    changed();
}

void SettingsControls::setMp3CommandLine(const QString &text)
{
    m_settings.mp3.commandLine = uptoFirstZero(text);
}

void SettingsControls::setOggMode(int index)
{
    m_settings.ogg.mode = checkedIndex(index, kOggModes);
    ShowModeControls(Encoder::Ogg);
    changed();
}

void SettingsControls::setOggQuality(int tenths)
{
    m_settings.ogg.qualityTenths = checkedSliderValue(tenths, kOggQualityMin, kOggQualityMax);
    writeOggQualityLabel();
    changed();
}

void SettingsControls::setOggAbr(int kbps)
{
    m_settings.ogg.abrKbps = checkedSliderValue(kbps, kAbrMin, kAbrMax);
    writeOggAbrLabel();
    changed();
}

void SettingsControls::setOggCommandLine(const QString &text)
{
    m_settings.ogg.commandLine = uptoFirstZero(text);
}

void SettingsControls::setMpcMode(int index)
{
    m_settings.mpc.mode = checkedIndex(index, kMpcModes);
    ShowModeControls(Encoder::Mpc);
    changed();
}

void SettingsControls::setMpcPreset(int index)
{
    m_settings.mpc.presetIndex = checkedIndex(index, mpcPresetTexts().size());
    changed();
}

void SettingsControls::setMpcQuality(int tenths)
{
    m_settings.mpc.qualityTenths = checkedSliderValue(tenths, kMpcQualityMin, kMpcQualityMax);
    writeMpcQualityLabel();
    changed();
}

void SettingsControls::setMpcCommandLine(const QString &text)
{
    m_settings.mpc.commandLine = uptoFirstZero(text);
}

void SettingsControls::ShowModeControls(Encoder encoder)
{
    switch (encoder) {
    case Encoder::Mp3: {
        Mp3ModeControls c;
        switch (m_settings.mp3.mode) {
        case 0: c.cmbPreset = true; break;
        case 1: c.sliAbr = c.lblAbr = true; break;
        case 2: c.cmbCbr = true; break;
        case 3: c.txtCmd = true; break;
        default: break;
        }
        m_mp3Controls = c;
        break;
    }
    case Encoder::Ogg: {
        OggModeControls c;
        switch (m_settings.ogg.mode) {
        case 0: c.sliPresetOgg = c.lblPresetOgg = true; break;
        case 1: c.sliAbrOgg = c.lblAbrOgg = true; break;
        case 2: c.txtCmdOgg = true; break;
        default: break;
        }
        m_oggControls = c;
        break;
    }
    case Encoder::Mpc: {
        MpcModeControls c;
        switch (m_settings.mpc.mode) {
        case 0: c.cmbPresetMpc = true; break;
        case 1: c.sliMpc = c.lblMpc = true; break;
        case 2: c.txtCmdMpc = true; break;
        default: break;
        }
        m_mpcControls = c;
        break;
    }
    }
}

void SettingsControls::writeMp3AbrLabel()
{
    m_lblAbr = abrLabelText(m_settings.mp3.abrKbps);
}

void SettingsControls::writeOggAbrLabel()
{
    m_lblAbrOgg = abrLabelText(m_settings.ogg.abrKbps);
}

void SettingsControls::writeOggQualityLabel()
{
    m_lblPresetOgg = qualityLabelText(m_settings.ogg.qualityTenths, m_locale);
}

void SettingsControls::writeMpcQualityLabel()
{
    m_lblMpc = qualityLabelText(m_settings.mpc.qualityTenths, m_locale);
}

void SettingsControls::setSelectedTab(int tab)
{
    if (tab < 1 || tab > 3)
        throw Failure("no such tab");
    m_selectedTab = tab;
    for (int i = 0; i < 3; ++i)
        m_frames[static_cast<std::size_t>(i)] = (i == tab - 1);
}

bool SettingsControls::frameVisible(int index) const
{
    return index >= 0 && index < 3 && m_frames[static_cast<std::size_t>(index)];
}

Encoder SettingsControls::selectedEncoder() const
{
    return m_selectedTab == 2 ? Encoder::Ogg : m_selectedTab == 3 ? Encoder::Mpc : Encoder::Mp3;
}

void SettingsControls::setWindowLeft(int twips)
{
    m_left = checkedTwips(twips);
}

void SettingsControls::setWindowTop(int twips)
{
    m_top = checkedTwips(twips);
}

void SettingsControls::setWindowWidth(int twips)
{
    m_width = std::max(checkedTwips(twips), kMinWidthTwips);
}

void SettingsControls::setWindowHeight(int twips)
{
    m_height = std::max(checkedTwips(twips), kMinHeightTwips);
}

void SettingsControls::applyRussian()
{
    if (m_boundPanel == nullptr)
        m_languagePanel = QStringLiteral("Русский");
    if (m_applyRussianHook)
        guarded(m_applyRussianHook);
}

void SettingsControls::setStartFolder(const QString &folder)
{
    m_startFolder = uptoFirstZero(folder);
}

} // namespace kv
