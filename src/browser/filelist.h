#pragma once

#include <functional>
#include <optional>
#include <vector>

#include <QLocale>
#include <QString>

#include "media/mediainfo.h"

namespace kv {

class Files;
class Folders;
struct StatusBar;
struct UiText;

// One row of the file list: what the reader wrote, and the row's check box.
struct FileRow
{
    MediaInfo info;
    bool checked = false;
    bool bold = false;
};

// The file enumerator and the list it fills. path and pattern are what the tree and the show
// commands set; currentFolder is the listed folder with its trailing "/", set by the scan.
struct FileListState
{
    QString path;
    QString pattern = QStringLiteral("*.wav");
    QString currentFolder;
    std::vector<FileRow> rows;
};

// Reads one file's row: (format, folder with trailing "/", file name) -> row or none.
using RowReader = std::function<std::optional<MediaInfo>(AudioFormat, const QString &, const QString &)>;

class Files;
// The header readers over files, the reader every program and benchmark lists with.
RowReader headerReaders(Files &files);

// Everything ScanFolder reads and writes, passed in so tests can fake each piece.
struct ScanContext
{
    FileListState &list;
    StatusBar &status;
    const UiText &text;
    QLocale locale;
    Folders &folders;
    RowReader readRow;
    std::function<void()> stopPlayer;     // before the list is refilled
    std::function<void()> refreshStats;   // RefreshSelectionStats after the totals
    std::function<void()> resetPlayRow;   // the player's current row back to 1
};

// Where a scan ended. Short of Finished it stopped silently at a failure, keeping what it had
// done: NotListed when the folder could not be read (rows and panels as they were), Stopped
// when a later step failed (for example a partial row that the totals cannot read).
enum class ScanEnd { Finished, NotListed, Stopped };

// Lists the current folder again through the readers, writes the totals into panels 3 to 6 and
// the free space into panel 2, then refreshes the selection statistics and rewinds the player.
ScanEnd ScanFolder(ScanContext &context);

} // namespace kv
