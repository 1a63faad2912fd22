#include "app/maincontroller.h"

#include <QDir>
#include <QFileInfo>

#include "app/codecset.h"
#include "browser/freespace.h"
#include "common/failure.h"
#include "engine/conversionrun.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/instancelock.h"
#include "player/player.h"
#include "settings/configfile.h"

namespace kv {

// Holds the hourglass for one handler and restores it on every way out.
class MainController::Busy
{
public:
    explicit Busy(BusyCursor &cursor) : m_cursor(cursor) { m_cursor.begin(); }
    ~Busy() { m_cursor.end(); }
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;

private:
    BusyCursor &m_cursor;
};

QString alreadyStartedMessage()
{
    return QStringLiteral("Kestrelvane is already started");
}

MainController::MainController(Environment environment)
    : m_env(std::move(environment)),
      m_locale(QLocale::system()),
      m_controls(m_locale),
      m_tree(m_env.folders, m_list, [this] { scan(); })
{
}

MainController::~MainController()
{
    // No sound outlives the program, however it ends.
    playerView = {};
    if (m_player)
        m_player->PlayStop();
}

void MainController::wireControls()
{
    // Panel 7 is the language: the record reads it from there, wherever it was switched.
    m_controls.bindLanguagePanel(&m_ui.status.panel(7));
    m_controls.setApplyRussianHook([this] {
        ApplyRussian(m_ui);
        applySelectionCaptions(m_labels, m_ui.text);
    });
    m_controls.setChangeHook([this] { refreshStats(); });
}

void MainController::notify(const std::function<void()> &hook) const
{
    if (hook)
        guarded(hook);
}

StartEnd MainController::Main(const StartOptions &options)
{
    if (!m_env.lock.tryLock()) {
        m_env.messages.information(alreadyStartedMessage());
        return StartEnd::AlreadyRunning;
    }
    m_programFolder = options.programFolder;
    if (!m_programFolder.endsWith(QLatin1Char('/')))
        m_programFolder += QLatin1Char('/');

    const QStringList missing = checkCodecs(m_programFolder, m_env.files);
    for (const QString &message : missing)
        m_env.messages.critical(message);
    if (!missing.isEmpty())
        return StartEnd::CodecsMissing;

    StartEnd end = StartEnd::Failed;
    guarded([&] {
        m_locale = options.locale;
        m_controls = SettingsControls(m_locale);
        wireControls();

        ApplyEnglish(m_ui);
        applySelectionCaptions(m_labels, m_ui.text);
        ResetToDefaults(m_controls);

        m_configPath = configFileLocation(m_programFolder, options.userConfigFolder,
                                          m_env.files.fileSize(configFilePath(m_programFolder)).has_value(),
                                          options.programFolderWritable);
        m_drives = m_env.volumes.mounted();
        QString startFolder;
        if (configFileQualifies(m_configPath, m_env.files)) {
            m_configRead = true;
            LoadConfig(m_configPath, m_env.files, m_controls, m_record);
            startFolder = rememberedFolder(m_controls.startFolder(), m_env.folders);
        } else {
            // No remembered folder: the root of the drive that holds the program.
            startFolder = volumeContaining(m_programFolder, m_drives).mountPoint;
        }
        if (!options.folder.isEmpty())
            startFolder = options.folder;

        changeDrive(volumeContaining(startFolder, m_drives), true);
        m_tree.OpenTreeAt(startFolder);

        m_processors = m_env.processorCount ? m_env.processorCount() : 1;
        m_ui.status.panel(1) = m_ui.text.cpuLabel + QString::number(m_processors) + QStringLiteral("  ");
        ShowFreeDiskSpace(m_list.currentFolder.isEmpty() ? startFolder : m_list.currentFolder, m_env.folders,
                          m_ui.status, m_ui.text, m_locale);
        if (m_env.processes != nullptr && m_env.clock != nullptr) {
            m_player = std::make_unique<Player>(PlayerContext{
                *m_env.processes, *m_env.clock, m_list, m_programFolder,
                [this] { return playerView.firstSelectedRow ? playerView.firstSelectedRow() : -1; },
                [this](int row) {
                    if (playerView.rowChanged)
                        playerView.rowChanged(row);
                },
                [this](int row) {
                    if (playerView.selectRow)
                        playerView.selectRow(row);
                },
                [this](int row) {
                    if (playerView.scrollTo)
                        playerView.scrollTo(row);
                }});
            m_run = std::make_unique<ConversionRun>(
                ConversionContext{*m_env.clock, *m_env.processes, m_env.files, m_parameters, m_list, m_programFolder,
                                  [this] {
                                      if (m_env.beep)
                                          m_env.beep();
                                  },
                                  [this] { stopPlayer(); }},
                m_ui.text);
        }
        end = StartEnd::Running;
    });
    notify(changed);
    return end;
}

int MainController::currentDrive() const
{
    for (size_t i = 0; i < m_drives.size(); ++i) {
        if (m_drives[i].mountPoint == m_drive.mountPoint)
            return static_cast<int>(i);
    }
    return -1;
}

void MainController::changeDrive(const Volume &drive, bool fallback)
{
    m_drive = drive;
    if (m_tree.BuildTree(drive) == BuildEnd::DriveNotReady) {
        m_env.messages.information(m_ui.text.driveNotReady);
        // The program's own drive instead, tried once: a program whose own drive is gone has
        // nothing better to offer.
        const Volume own = volumeContaining(m_programFolder, m_drives);
        if (fallback && own.mountPoint != drive.mountPoint) {
            changeDrive(own, false);
            return;
        }
    }
    m_list.path = FolderTree::normalised(m_drive.mountPoint);
}

void MainController::driveChanged(int index)
{
    Busy busy(m_env.busy);
    // Only a change of drive rebuilds the tree; choosing the drive shown again keeps what is open.
    if (index >= 0 && index < static_cast<int>(m_drives.size()) && index != currentDrive())
        changeDrive(m_drives[static_cast<size_t>(index)], true);
    notify(changed);
}

void MainController::refreshDrives()
{
    m_drives = m_env.volumes.mounted();
    notify(changed);
}

void MainController::treeExpand(TreeNode &node)
{
    Busy busy(m_env.busy);
    m_tree.Expand(node);
    notify(changed);
}

void MainController::treeCollapse(TreeNode &node)
{
    Busy busy(m_env.busy);
    m_tree.Collapse(node);
    notify(changed);
}

void MainController::treeClick(TreeNode &node)
{
    Busy busy(m_env.busy);
    m_tree.NodeClick(node);
    notify(changed);
}

void MainController::scan()
{
    notify(rowsAboutToChange);
    ScanContext context{m_list, m_ui.status, m_ui.text, m_locale, m_env.folders, m_env.readRow,
                        [this] { stopPlayer(); },
                        [this] { refreshStats(); },
                        [this] {
                            if (m_player)
                                m_player->rewind();
                        }};
    ScanFolder(context);
    notify(rowsChanged);
}

void MainController::refreshStats()
{
    RefreshSelectionStats(m_list.rows, m_makeAll, m_controls.settings(), m_ui.text, m_locale, m_labels);
    notify(changed);
}

void MainController::toolbarClick(int position)
{
    Busy busy(m_env.busy);
    guarded([&] {
        static const QString patterns[] = {QStringLiteral("*.wav"), QStringLiteral("*.mp3"), QStringLiteral("*.ogg"),
                                           QStringLiteral("*.mpc")};
        switch (position) {
        case MakeAll:
            m_makeAll = !m_makeAll;
            refreshStats();
            break;
        case ShowWav:
        case ShowMp3:
        case ShowOgg:
        case ShowMpc: {
            const int shown = position - ShowWav;
            for (int i = 0; i < 4; ++i)
                m_showPressed[static_cast<size_t>(i)] = i == shown;
            m_list.pattern = patterns[shown];
            scan();
            break;
        }
        case MakeMp3:
        case MakeOgg:
        case MakeMpc:
        case MakeWav: {
            // The toolbar's Make positions are in the commands' order.
            static constexpr MakeCommand commands[] = {MakeCommand::Mp3, MakeCommand::Ogg, MakeCommand::Mpc,
                                                       MakeCommand::Wav};
            make(commands[position - MakeMp3]);
            break;
        }
        default:
            break;
        }
    });
    notify(changed);
}

void MainController::statusPanelClick(int panel)
{
    guarded([&] {
        const UiText before = m_ui.text;
        switch (clickStatusPanel(m_ui, panel)) {
        case PanelClick::LanguageSwitched:
            applySelectionCaptions(m_labels, m_ui.text);
            if (m_run)
                m_run->relabel(before);
            notify(runChanged);
            break;
        case PanelClick::OpenHelp:
            if (m_env.openDocument)
                m_env.openDocument(m_programFolder + QStringLiteral("help/rus/index.htm"));
            break;
        case PanelClick::Nothing:
            break;
        }
    });
    notify(changed);
}

void MainController::setRowChecked(int row, bool checked)
{
    if (row < 0 || row >= static_cast<int>(m_list.rows.size()))
        return;
    m_list.rows[static_cast<size_t>(row)].checked = checked;
    refreshStats();
}

void MainController::defaultClicked()
{
    ResetToDefaults(m_controls);
    refreshStats();
}

void MainController::setWindowPlace(int left, int top, int width, int height, WindowState state)
{
    m_controls.setWindowState(state);
    if (state != WindowState::Normal)
        return;
    // Each measure on its own: one the record cannot hold keeps its earlier value.
    const int twips = SettingsControls::kTwipsPerPixel;
    guarded([&] { m_controls.setWindowLeft(left * twips); });
    guarded([&] { m_controls.setWindowTop(top * twips); });
    guarded([&] { m_controls.setWindowWidth(width * twips); });
    guarded([&] { m_controls.setWindowHeight(height * twips); });
}

bool MainController::closeRequested(bool conversionFrameVisible)
{
    if (conversionFrameVisible || (m_run && m_run->display().frameVisible))
        return false;
    stopPlayer();
    saveConfiguration();
    return true;
}

void MainController::endSession()
{
    if (m_run)
        m_run->abortRunning();
    stopPlayer();
    saveConfiguration();
}

void MainController::saveConfiguration()
{
    m_controls.setStartFolder(m_list.path);
    // The user's configuration folder may not exist yet; the program folder always does.
    const QString folder = QFileInfo(m_configPath).absolutePath();
    if (!m_configPath.startsWith(m_programFolder))
        QDir().mkpath(folder);
    SaveConfig(m_configPath, m_env.files, m_controls, m_record);
}

} // namespace kv

namespace kv {

// ---- The player ----

const PlayerDisplay *MainController::playerDisplay() const
{
    return m_player ? &m_player->display() : nullptr;
}

void MainController::stopPlayer()
{
    if (!m_player)
        return;
    m_player->PlayStop();
    notify(playerView.changed);
}

void MainController::playerClick(int button)
{
    if (!m_player)
        return;
    m_player->click(button);
    notify(playerView.changed);
}

void MainController::playerTick(bool decoderEnded)
{
    if (!m_player || !m_player->display().timerEnabled || (decoderEnded && !m_player->decoderEnded()))
        return;
    m_player->tick();
    notify(playerView.changed);
}

// ---- The conversion frame ----

void MainController::make(MakeCommand command)
{
    // A second run while one is shown would orphan the first one's codecs and rows.
    if (!m_run || m_run->display().frameVisible)
        return;
    // The decoder follows the Show filters in toolbar order, a later pressed one overriding an
    // earlier; with Show Wav pressed none is, and the previous command's parameters stay.
    AudioFormat shown = AudioFormat::Wav;
    const AudioFormat decoded[] = {AudioFormat::Mp3, AudioFormat::Ogg, AudioFormat::Mpc};
    for (size_t i = 0; i < 3; ++i) {
        if (m_showPressed[i + 1])
            shown = decoded[i];
    }
    applyMakeCommand(m_parameters, command, command == MakeCommand::Wav ? shown : AudioFormat::Wav,
                     m_controls.settings(), m_optionText);
    m_run->setText(m_ui.text);
    // The first tick fills the slots at once instead of a timer interval later.
    if (m_run->PrepareJobs(m_makeAll, m_controls.settings().mp3.cbrIndex, m_processors))
        m_run->tick();
    notify(runChanged);
}

void MainController::stopClicked()
{
    if (!m_run)
        return;
    m_run->stop();
    notify(runChanged);
}

void MainController::closeClicked()
{
    if (!m_run)
        return;
    guarded([&] { ShowFreeDiskSpace(m_list.currentFolder, m_env.folders, m_ui.status, m_ui.text, m_locale); });
    m_run->close();
    notify(changed);
    notify(runChanged);
}

void MainController::encodeTick(bool codecEnded)
{
    if (m_env.wakeups.clearExits)
        m_env.wakeups.clearExits();
    // A decoder that ended is seen at once too, so the next row follows without a timer's wait.
    if (codecEnded)
        playerTick(true);
    if (!m_run || !m_run->display().timerEnabled)
        return;
    m_run->tick();
    // Drawing the frame at every codec's end would take processor time from the codecs that
    // run on; the timer's tick shows it within 100 ms. The end of the run is shown at once.
    if (!codecEnded || !m_run->display().timerEnabled)
        notify(runChanged);
}

bool MainController::abortJob(int row)
{
    if (!m_run || !m_run->abortJob(row))
        return false;
    notify(runChanged);
    return true;
}

} // namespace kv
