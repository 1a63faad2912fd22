#pragma once

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include <QLocale>
#include <QString>

#include "browser/filelist.h"
#include "browser/foldertree.h"
#include "browser/selectionstats.h"
#include "engine/runparameters.h"
#include "platform/processes.h"
#include "platform/volumes.h"
#include "settings/configrecord.h"
#include "settings/settingscontrols.h"
#include "ui/interfacetexts.h"

namespace kv {

class Clock;
class ConversionRun;
class Files;
class Folders;
class InstanceLock;
class Player;
class Processes;
struct PlayerDisplay;

// The message boxes of the window, so start-up and the tree can be run without a display.
class Messages
{
public:
    virtual ~Messages() = default;
    virtual void information(const QString &text) = 0;
    virtual void critical(const QString &text) = 0;
};

// The hourglass pointer: begin() shows it, end() restores the previous one.
class BusyCursor
{
public:
    virtual ~BusyCursor() = default;
    virtual void begin() = 0;
    virtual void end() = 0;
};

// What the window's commands reach of the machine.
struct Environment
{
    Files &files;
    Folders &folders;
    Volumes &volumes;
    InstanceLock &lock;
    Messages &messages;
    BusyCursor &busy;
    RowReader readRow;
    std::function<int()> processorCount;                // already 1 to 8
    std::function<void(const QString &)> openDocument; // the help document
    // The conversion runs' side; without processes and clock the Make commands do nothing.
    Processes *processes = nullptr;
    Clock *clock = nullptr;
    std::function<void()> beep; // the end of a run
    RunWakeups wakeups;
};

struct StartOptions
{
    QString programFolder;     // the executable's folder; a trailing "/" is added when missing
    QString userConfigFolder;  // where the configuration goes when the program folder is read-only
    bool programFolderWritable = true;
    QString folder;            // the FOLDER argument: opened instead of the remembered folder
    QLocale locale = QLocale::system();
};

// What the player moves in the window: the selection and scroll position of the file list, and
// a row's bold font. Rows are 0-based.
struct PlayerView
{
    std::function<int()> firstSelectedRow; // -1 when none
    std::function<void(int row)> rowChanged;
    std::function<void(int row)> selectRow;
    std::function<void(int row)> scrollTo;
    std::function<void()> changed; // after anything the player frame shows changed
};

enum class StartEnd { Running, AlreadyRunning, CodecsMissing, Failed };

// Toolbar positions, 1-based; 5 and 7 carry no command.
enum ToolbarPosition {
    MakeMp3 = 1, MakeOgg = 2, MakeMpc = 3, MakeWav = 4, MakeAll = 6,
    ShowWav = 8, ShowMp3 = 9, ShowOgg = 10, ShowMpc = 11,
};

// The main window's state and commands without widgets: start-up in its order, the drive list,
// the folder tree, the file list, the toolbar's Show side, the options, the statistics, the
// status bar and the close request. The window mirrors this and forwards its events here.
class MainController
{
public:
    explicit MainController(Environment environment);
    ~MainController();
    MainController(const MainController &) = delete;
    MainController &operator=(const MainController &) = delete;

    // Everything before the window is shown, in order: single instance, program folder, codec
    // checks (one critical message per failed test, then the end), English texts, defaults, the
    // configuration file, the tree opened down to the start folder (which lists it), the
    // processor count and the free space.
    StartEnd Main(const StartOptions &options);

    // Called around every refill of the file list, and after anything else the window shows
    // changed (panels, statistics, toolbar states, settings).
    std::function<void()> rowsAboutToChange, rowsChanged, changed;

    // drvMain: the user chose entry `index` of drives(). A drive that cannot be listed is
    // reported and the program's own drive is chosen instead. The file list stays as it was.
    void driveChanged(int index);
    // Re-reads the drive list; the current drive stays chosen when it is still mounted.
    void refreshDrives();
    // tvMain's events.
    void treeExpand(TreeNode &node);
    void treeCollapse(TreeNode &node);
    void treeClick(TreeNode &node);
    // tbMain: a click on the button at `position`.
    void toolbarClick(int position);
    // stbMain: a click on panel `panel` (from 1).
    void statusPanelClick(int panel);
    // lstMain: a row's check box.
    void setRowChecked(int row, bool checked);
    // cmdDefault.
    void defaultClicked();
    // The window's place in pixels and its state, as it stands when it closes.
    void setWindowPlace(int left, int top, int width, int height, WindowState state);
    // The close request: refused while the conversion frame shows; otherwise the configuration
    // is saved and the window may close.
    bool closeRequested(bool conversionFrameVisible);
    // The end of the user's session (SIGTERM, SIGHUP, SIGINT): even during a run, the running
    // codecs are killed with their groups and their unfinished targets deleted, the player stops
    // and the configuration is saved.
    void endSession();

    void scan();
    void refreshStats();

    // The conversion frame. Make commands arrive through toolbarClick; these are its own events.
    // cmbEncode_0: waiting jobs become "Break", running ones finish.
    void stopClicked();
    // cmbEncode_1: the free space again, and the frame hidden.
    void closeClicked();
    // tmrEncode every 100 ms, and at once when a codec ended (codecEnded: the wake-up, which
    // refills the slots at once but leaves the drawing to the next timer tick unless the run ended).
    void encodeTick(bool codecEnded = false);
    // "Abort this job" on row (0-based) of lstCode.
    bool abortJob(int row);
    // The player frame: imPlay's click by button index, and tmrPlay.
    void playerClick(int button);
    // decoderEnded: a child's exit woke the loop; the tick runs only if it was the decoder's.
    void playerTick(bool decoderEnded = false);
    // What the player moves in the window; set by the window.
    PlayerView playerView;
    // nullptr when nothing can play (no processes given).
    const PlayerDisplay *playerDisplay() const;
    const Player *player() const { return m_player.get(); }

    // Called after anything the conversion frame shows changed.
    std::function<void()> runChanged;
    // nullptr when conversions cannot run (no processes given).
    const ConversionRun *run() const { return m_run.get(); }
    const RunWakeups &wakeups() const { return m_env.wakeups; }

    const InterfaceTexts &ui() const { return m_ui; }
    const UiText &text() const { return m_ui.text; }
    SettingsControls &controls() { return m_controls; }
    const FileListState &fileList() const { return m_list; }
    const SelectionLabels &labels() const { return m_labels; }
    FolderTree &tree() { return m_tree; }
    const std::vector<Volume> &drives() const { return m_drives; }
    int currentDrive() const;
    bool makeAll() const { return m_makeAll; }
    // Pressed state of Show Wav, Mp3, Ogg, Mpc; enabled state of Make Mp3, Ogg, Mpc, Wav.
    const std::array<bool, 4> &showPressed() const { return m_showPressed; }
    // Wav files are encoded, the other three decoded.
    std::array<bool, 4> makeEnabled() const
    {
        const bool wav = m_showPressed[0];
        return {wav, wav, wav, !wav};
    }
    int processorCount() const { return m_processors; }
    const QString &configPath() const { return m_configPath; }
    // The configuration file was read at start (it had one record's length).
    bool configRead() const { return m_configRead; }

private:
    class Busy;
    void wireControls();
    void changeDrive(const Volume &drive, bool fallback);
    void notify(const std::function<void()> &hook) const;
    void make(MakeCommand command);
    void stopPlayer();
    void saveConfiguration();

    Environment m_env;
    QLocale m_locale;
    InterfaceTexts m_ui;
    SettingsControls m_controls;
    ConfigRecord m_record;
    FileListState m_list;
    SelectionLabels m_labels;
    FolderTree m_tree;
    std::vector<Volume> m_drives;
    Volume m_drive;
    bool m_makeAll = false;
    std::array<bool, 4> m_showPressed = {true, false, false, false};
    int m_processors = 1;
    QString m_programFolder;
    QString m_configPath;
    bool m_configRead = false;
    RunParameters m_parameters;
    OptionTextBuilder m_optionText;
    std::unique_ptr<ConversionRun> m_run;
    std::unique_ptr<Player> m_player;
};

// The fixed English message of a second start, the same in both languages.
QString alreadyStartedMessage();

} // namespace kv
