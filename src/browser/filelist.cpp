#include "browser/filelist.h"

#include "browser/columnvalues.h"
#include "browser/freespace.h"
#include "common/checked.h"
#include "media/readers.h"
#include "common/failure.h"
#include "common/texts.h"
#include "platform/folders.h"
#include "ui/interfacetexts.h"

namespace kv {

RowReader headerReaders(Files &files)
{
    return [&files](AudioFormat format, const QString &folder, const QString &name) {
        return readMediaInfo(format, folder, name, files);
    };
}

namespace {

// Totals read back from the rows' texts. A row the totals cannot read (a partial row: no colon
// in its duration, an empty bit rate) is a Failure that ends the scan before any panel changes.
struct Totals
{
    Int32 seconds;
    float megabytes = 0.0F; // single precision: the shown size carries its rounding on purpose
    Int32 kbps;
};

Totals totalsOf(const std::vector<FileRow> &rows)
{
    Totals t;
    for (const FileRow &row : rows) {
        t.seconds += Int32(secondsFromDurationText(row.info[MediaInfo::Duration]));
        t.megabytes = static_cast<float>(t.megabytes + megabytesFromColumn(row.info[MediaInfo::SizeKb]));
        t.kbps += kbpsFromColumn(row.info[MediaInfo::Bitrate]);
    }
    return t;
}

void writeTotals(ScanContext &c, const Totals &t, qsizetype rowCount)
{
    const QString blanks = QStringLiteral("  ");
    c.status.panel(3) = composePanel(c.text, 3, QString::number(rowCount) + blanks);
    c.status.panel(4) = composePanel(c.text, 4, megabytesText(t.megabytes, c.locale));
    c.status.panel(5) = composePanel(c.text, 5, durationText(t.seconds) + blanks);
    const Int32 average = rowCount > 0 ? Int32::fromReal(static_cast<double>(t.kbps.value()) / rowCount) : Int32(0);
    c.status.panel(6) = composePanel(c.text, 6, QString::number(average.value()));
}

} // namespace

ScanEnd ScanFolder(ScanContext &c)
{
    ScanEnd end = ScanEnd::Stopped;
    guarded([&] {
        if (c.stopPlayer)
            c.stopPlayer();
        c.list.currentFolder = c.list.path;
        if (!c.list.currentFolder.endsWith(QLatin1Char('/')))
            c.list.currentFolder += QLatin1Char('/');

        // A folder that cannot be read ends the scan here, before the old rows are cleared: the
        // window keeps showing what it showed, as it does for every failure.
        const std::optional<QStringList> names = c.folders.listFiles(c.list.path, c.list.pattern);
        if (!names) {
            end = ScanEnd::NotListed;
            return;
        }
        c.list.rows.clear();

        // The file counter is 16-bit: a folder of more than 32,767 matches ends the scan.
        const Int16 count = static_cast<long long>(names->size());
        // The pattern picks the reader, compared exactly; any other pattern reads no file.
        const std::optional<AudioFormat> format = formatFromPattern(c.list.pattern);
        if (format) {
            c.list.rows.reserve(static_cast<size_t>(count.value()));
            for (Int16 i = 0; i < count; ++i) {
                if (std::optional<MediaInfo> info = c.readRow(*format, c.list.currentFolder, names->at(i)))
                    c.list.rows.push_back(FileRow{std::move(*info)});
            }
        }

        const Totals totals = totalsOf(c.list.rows);
        writeTotals(c, totals, static_cast<qsizetype>(c.list.rows.size()));
        ShowFreeDiskSpace(c.list.currentFolder, c.folders, c.status, c.text, c.locale);
        if (c.refreshStats)
            c.refreshStats();
        if (c.resetPlayRow)
            c.resetPlayRow();
        end = ScanEnd::Finished;
    });
    return end;
}

} // namespace kv
