#pragma once

#include <array>
#include <functional>

#include <QLocale>
#include <QString>

#include "settings/encodersettings.h"

namespace kv {

enum class WindowState { Normal, Minimised, Maximised };

// Which input controls of an options frame show (ShowModeControls).
struct Mp3ModeControls
{
    bool cmbPreset = false, sliAbr = false, lblAbr = false, cmbCbr = false, txtCmd = false;
    bool operator==(const Mp3ModeControls &) const = default;
};

struct OggModeControls
{
    bool sliPresetOgg = false, lblPresetOgg = false, sliAbrOgg = false, lblAbrOgg = false,
         txtCmdOgg = false;
    bool operator==(const OggModeControls &) const = default;
};

struct MpcModeControls
{
    bool cmbPresetMpc = false, sliMpc = false, lblMpc = false, txtCmdMpc = false;
    bool operator==(const MpcModeControls &) const = default;
};

// The settings as the window's controls hold them, without widgets: the window mirrors this
// model, and defaults and the configuration file go through the same setters it uses.
//
// Setters refuse what the real control refuses by throwing Failure:
// - a list index outside its list. Every list also takes -1, "no selection", as a combo box
//   does; a file cannot carry -1 (its fields are unsigned bytes), so only the window can set it,
//   and a save then stops at that field.
// - a slider value outside the slider's range.
// - a window measure outside the signed 16-bit twips range, the configuration's arithmetic.
// Setting a list index or a slider value runs that control's change handler, as a user's change
// would: mode lists show their mode's controls, sliders write their label, then the change hook
// (the statistics refresh) runs. The command-line boxes, the tab and the window trigger nothing.
class SettingsControls
{
public:
    static constexpr int kTwipsPerPixel = 15;
    // The window's minimum size; a smaller width or height is raised to it, as the window does.
    static constexpr int kMinWidthTwips = 12000;
    static constexpr int kMinHeightTwips = 9000;
    static constexpr int kAbrMin = 128, kAbrMax = 300;
    static constexpr int kOggQualityMin = -10, kOggQualityMax = 100;
    static constexpr int kMpcQualityMin = 0, kMpcQualityMax = 100;

    // Starts as a freshly loaded window: default settings, tab 1, English, the minimum size.
    explicit SettingsControls(const QLocale &locale = QLocale::system());

    // Runs after every list or slider change; its failures stay inside it.
    void setChangeHook(std::function<void()> hook) { m_changeHook = std::move(hook); }
    // Applies the Russian interface texts; see applyRussian().
    void setApplyRussianHook(std::function<void()> hook) { m_applyRussianHook = std::move(hook); }

    const EncoderSettings &settings() const { return m_settings; }
    const QLocale &locale() const { return m_locale; }

    // cmbMode, cmbPreset, sliAbr, cmbCbr, txtCmd
    void setMp3Mode(int index);
    void setMp3Preset(int index);
    void setMp3Abr(int kbps);
    void setMp3Cbr(int index);
    void setMp3CommandLine(const QString &text);
    // cmbModeOgg, sliPresetOgg, sliAbrOgg, txtCmdOgg
    void setOggMode(int index);
    void setOggQuality(int tenths);
    void setOggAbr(int kbps);
    void setOggCommandLine(const QString &text);
    // cmbModeMpc, cmbPresetMpc, sliMpc, txtCmdMpc
    void setMpcMode(int index);
    void setMpcPreset(int index);
    void setMpcQuality(int tenths);
    void setMpcCommandLine(const QString &text);

    // Hides every mode control of the encoder, then shows those of its selected mode (none when
    // nothing is selected).
    void ShowModeControls(Encoder encoder);
    const Mp3ModeControls &mp3Controls() const { return m_mp3Controls; }
    const OggModeControls &oggControls() const { return m_oggControls; }
    const MpcModeControls &mpcControls() const { return m_mpcControls; }

    // Slider value labels. The setters write them; the writers are public because defaults and
    // load write them once more after setting the slider.
    const QString &lblAbr() const { return m_lblAbr; }
    const QString &lblAbrOgg() const { return m_lblAbrOgg; }
    const QString &lblPresetOgg() const { return m_lblPresetOgg; }
    const QString &lblMpc() const { return m_lblMpc; }
    void writeMp3AbrLabel();
    void writeOggAbrLabel();
    void writeOggQualityLabel();
    void writeMpcQualityLabel();

    // TabOpt: 1 "Mp3", 2 "Ogg", 3 "Mpc"; frame i of frEncOpt shows when i is the tab's number - 1.
    int selectedTab() const { return m_selectedTab; }
    void setSelectedTab(int tab);
    bool frameVisible(int index) const;
    Encoder selectedEncoder() const;

    // The main window's place and size in twips, and its state.
    int windowLeft() const { return m_left; }
    int windowTop() const { return m_top; }
    int windowWidth() const { return m_width; }
    int windowHeight() const { return m_height; }
    WindowState windowState() const { return m_state; }
    void setWindowLeft(int twips);
    void setWindowTop(int twips);
    void setWindowWidth(int twips);
    void setWindowHeight(int twips);
    void setWindowState(WindowState state) { m_state = state; }

    // The language panel of the status bar: "English" or "Русский". The panel text is the
    // language; nothing else records it. A window binds its status bar's panel here, so a switch
    // from the status bar is what the next save writes; unbound, the controls keep a panel text
    // of their own (the command-line tool has no status bar).
    void bindLanguagePanel(const QString *panel) { m_boundPanel = panel; }
    const QString &languagePanelText() const { return m_boundPanel != nullptr ? *m_boundPanel : m_languagePanel; }
    void setLanguagePanelText(const QString &text) { m_languagePanel = text; }
    // Applies the Russian texts: through the hook, which writes a bound panel; an unbound panel
    // is written here.
    void applyRussian();

    // The folder being browsed: the one start-up opens, kept current by the window, saved at close.
    const QString &startFolder() const { return m_startFolder; }
    void setStartFolder(const QString &folder);

private:
    void changed();

    QLocale m_locale;
    EncoderSettings m_settings;
    Mp3ModeControls m_mp3Controls;
    OggModeControls m_oggControls;
    MpcModeControls m_mpcControls;
    QString m_lblAbr, m_lblAbrOgg, m_lblPresetOgg, m_lblMpc;
    int m_selectedTab = 1;
    std::array<bool, 3> m_frames = {true, false, false};
    int m_left = 0;
    int m_top = 0;
    int m_width = kMinWidthTwips;
    int m_height = kMinHeightTwips;
    WindowState m_state = WindowState::Normal;
    QString m_languagePanel = QStringLiteral("English");
    const QString *m_boundPanel = nullptr;
    QString m_startFolder;
    std::function<void()> m_changeHook;
    std::function<void()> m_applyRussianHook;
};

} // namespace kv
