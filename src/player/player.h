#pragma once

#include <functional>

#include <QString>

#include "common/checked.h"
#include "platform/processes.h"

namespace kv {

class Clock;
struct FileListState;

// What the player frame shows; the window draws it again after every call.
struct PlayerDisplay
{
    QString lblPlay;
    QString lblPlayTime = QStringLiteral("0:00:00");
    double progressMin = 0;
    double progressMax = 100;
    double progressValue = 0;
    bool timerEnabled = false; // tmrPlay: on only while a row plays
};

// What the player reads and moves outside itself. Rows are 0-based here.
struct PlayerContext
{
    Processes &processes;
    Clock &clock;
    FileListState &list; // its rows' bold flags are the player's to set
    QString programFolder; // ends in "/"
    std::function<int()> firstSelectedRow; // -1 when no row is selected
    std::function<void(int row)> rowChanged; // a row's bold state changed
    std::function<void(int row)> selectRow;
    std::function<void(int row)> scrollTo;
};

// The preview player: plays the listed files from a row to the end of the list, one decoder
// process at a time, watched by a 100 ms tick. WAV rows go to the system's player and end when
// their listed duration has passed; the other kinds end when their decoder exits.
class Player
{
public:
    enum Button { Play = 0, Stop = 1, Previous = 2, Next = 3 };

    explicit Player(PlayerContext context);

    // Plays row playRow(); a failure shows "PlayStart Failed" or ends it silently.
    void PlayStart();
    // Stops what plays (the decoder's whole process group) and clears the display.
    void PlayStop();
    // tmrPlay's work: clock, progress, and the next row once this one ended.
    void tick();
    // imPlay's click, by button index.
    void click(int button);
    // Whether the tick would find the decoder of a decoded row ended now: its exit may run the
    // tick at once instead of a timer interval later. WAV rows end by the clock alone.
    bool decoderEnded();
    // After a refill of the file list: the next Play counts from the first row.
    void rewind() { m_playRow = 1; }

    // 1-based row that plays or played last; 0 before the first.
    int playRow() const { return m_playRow.value(); }
    const PlayerDisplay &display() const { return m_display; }
    const QString &playerCommand() const { return m_playerCommand; }

private:
    void playStart();
    void playStop();
    void step();
    bool isWav() const;
    int rowCount() const;
    void setBold(int row, bool bold); // 1-based; a row that does not exist is a failure
    void stopSound();
    void idle();

    PlayerContext m_c;
    PlayerDisplay m_display;
    Int16 m_playRow = 0;
    ProcessHandle m_playerProcess = 0; // the last decoder started
    ProcessHandle m_soundProcess = 0;  // the system's player of the last WAV row
    float m_playStartTime = 0;         // seconds since midnight, as coarse as the design's timer
    QString m_playerCommand;
};

} // namespace kv
