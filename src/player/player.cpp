#include "player/player.h"

#include "browser/filelist.h"
#include "common/clocktime.h"
#include "common/texts.h"
#include "platform/clock.h"
#include "player/playercommand.h"

namespace kv {

namespace {

void call(const std::function<void(int)> &hook, int row)
{
    if (hook)
        hook(row);
}

} // namespace

Player::Player(PlayerContext context) : m_c(std::move(context)) {}

bool Player::isWav() const
{
    return m_c.list.pattern == QLatin1String("*.wav");
}

int Player::rowCount() const
{
    return static_cast<int>(m_c.list.rows.size());
}

void Player::setBold(int row, bool bold)
{
    if (row < 1 || row > rowCount())
        throw Failure("no such row");
    m_c.list.rows[static_cast<size_t>(row - 1)].bold = bold;
    call(m_c.rowChanged, row - 1);
}

void Player::PlayStart()
{
    guarded([this] { playStart(); });
}

void Player::playStart()
{
    const std::optional<PlayerDecoder> decoder = playerDecoder(m_c.list.pattern);
    const int row = m_playRow.value();
    setBold(row, true);
    call(m_c.selectRow, row - 1);
    // The row after it too, so the user sees what comes next.
    call(m_c.scrollTo, row < rowCount() ? row : row - 1);

    const MediaInfo &info = m_c.list.rows[static_cast<size_t>(row - 1)].info;
    const QString path = m_c.list.currentFolder + info[MediaInfo::Name];
    bool ok = false;
    if (isWav()) {
        // One system sound at a time: a new one cuts the last one off.
        stopSound();
        m_c.processes.release(m_soundProcess);
        const std::optional<ProcessHandle> sound = m_c.processes.start(soundCommandLine(path), ChildEnvironment::Inherited);
        ok = sound.has_value();
        m_soundProcess = sound.value_or(0);
    } else {
        // Another pattern has no decoder: its command names the codec folder, which cannot start.
        m_playerCommand = playerCommandLine(m_c.programFolder, decoder.value_or(PlayerDecoder{}), path);
        const std::optional<ProcessHandle> started = m_c.processes.start(m_playerCommand, ChildEnvironment::Empty);
        ok = started.has_value();
        if (started) {
            // The last row's decoder was told ended; its record would only pile up over a list.
            m_c.processes.release(m_playerProcess);
            m_playerProcess = *started;
        }
    }
    if (!ok) {
        m_display.lblPlay = QStringLiteral("PlayStart Failed");
        return;
    }
    m_display.lblPlay = info[MediaInfo::Name] + QStringLiteral(" (") + info[MediaInfo::Duration] + QLatin1Char(')');
    // A duration that is not H:MM:SS ends here: the file plays on without progress or a next row.
    const std::int32_t total = secondsFromDurationText(info[MediaInfo::Duration]);
    m_display.progressMax = total < 1 ? 1.0 : static_cast<double>(total);
    m_playStartTime = static_cast<float>(m_c.clock.secondsSinceMidnight());
    m_display.timerEnabled = true;
}

void Player::PlayStop()
{
    guarded([this] { playStop(); });
}

void Player::playStop()
{
    m_display.timerEnabled = false;
    m_display.lblPlay.clear();
    m_display.lblPlayTime = QStringLiteral("0:00:00");
    m_display.progressValue = m_display.progressMin;
    if (rowCount() > 0 && m_playRow >= 1 && m_playRow <= rowCount())
        setBold(m_playRow, false);
    stopSound();
    // The decoder is a pipeline under a shell: its whole group goes, or the sound plays on.
    if (!m_c.processes.hasEnded(m_playerProcess))
        m_c.processes.kill(m_playerProcess);
}

void Player::stopSound()
{
    if (m_soundProcess != 0)
        m_c.processes.kill(m_soundProcess);
}

void Player::idle()
{
    m_display.timerEnabled = false;
    m_display.lblPlay.clear();
    m_display.lblPlayTime = QStringLiteral("0:00:00");
    m_display.progressValue = m_display.progressMin;
}

bool Player::decoderEnded()
{
    return m_display.timerEnabled && !isWav() && m_c.processes.hasEnded(m_playerProcess);
}

void Player::tick()
{
    guarded([this] { step(); });
}

void Player::step()
{
    const Int32 e = elapsedSeconds(m_c.clock.secondsSinceMidnight(), m_playStartTime);
    const double value = e.value();
    m_display.progressValue = value >= m_display.progressMin && value <= m_display.progressMax ? value : m_display.progressMax;
    m_display.lblPlayTime = durationText(e.value());
    // The system's player of a finished WAV row is reaped here rather than left a zombie.
    if (m_soundProcess != 0)
        m_c.processes.hasEnded(m_soundProcess);

    const int count = rowCount();
    const bool rowValid = count > 0 && m_playRow >= 1 && m_playRow <= count;
    if (!isWav()) {
        if (!m_c.processes.hasEnded(m_playerProcess))
            return;
        if (rowValid)
            setBold(m_playRow, false);
    } else {
        // A WAV row ends by the clock against its listed duration, not by the sound itself.
        if (m_display.progressValue != m_display.progressMax || !rowValid)
            return;
        setBold(m_playRow, false);
    }
    m_playRow = m_playRow + Int16(1);
    if (m_playRow <= count) {
        m_display.timerEnabled = false;
        playStart();
    } else {
        idle();
    }
}

void Player::click(int button)
{
    guarded([&] {
        const int count = rowCount();
        if (count == 0 || button < Play || button > Next)
            return;
        switch (button) {
        case Play: {
            playStop();
            const int selected = m_c.firstSelectedRow ? m_c.firstSelectedRow() : -1;
            const int r = selected >= 0 && selected < count ? selected + 1 : count + 1;
            m_playRow = r - 1;
            if (isWav()) {
                m_playRow = r;
                playStart();
            } else {
                // The next tick finds no decoder running and starts row r.
                m_display.timerEnabled = true;
            }
            break;
        }
        case Stop:
            playStop();
            break;
        case Previous:
        case Next: {
            const bool allowed = button == Previous ? m_playRow >= 2 && m_playRow <= count : m_playRow >= 1 && m_playRow < count;
            if (!allowed)
                return;
            playStop();
            if (button == Previous)
                m_playRow = m_playRow - Int16(2);
            if (isWav()) {
                m_playRow = m_playRow + Int16(1);
                guarded([this] { playStart(); });
            }
            m_display.timerEnabled = true;
            break;
        }
        default:
            break;
        }
    });
}

} // namespace kv
