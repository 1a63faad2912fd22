#pragma once

#include <array>
#include <vector>

#include <QLocale>
#include <QString>

#include "browser/filelist.h"

namespace kv {

struct EncoderSettings;
struct UiText;

// The statistics frame's label array lblInfo, by element. Captions: 0 selected, 1 size, 5 to 8
// the Wav, Mp3, Ogg and Mpc forecasts. Values: 3 count, 4 size, 9 Mp3, 10 Ogg, 11 Mpc forecast.
struct SelectionLabels
{
    static constexpr int Count = 3, Size = 4, Mp3Forecast = 9, OggForecast = 10, MpcForecast = 11;

    std::array<QString, 12> lblInfo;

    QString &operator[](int element) { return lblInfo.at(static_cast<size_t>(element)); }
    const QString &operator[](int element) const { return lblInfo.at(static_cast<size_t>(element)); }
};

// Writes the caption elements from the language table in force.
void applySelectionCaptions(SelectionLabels &labels, const UiText &text);

// Counts the ticked rows (every row when makeAll, the "Make All" button, is pressed) and writes
// their number, their size and the forecast size after each encoder under settings. Ends
// silently at the first failure with the labels written so far: a row whose size or bit rate is
// not a number stops it, and a selection whose bit rates sum to 0 leaves the forecasts as they
// were. Returns false when it ended early.
bool RefreshSelectionStats(const std::vector<FileRow> &rows, bool makeAll, const EncoderSettings &settings,
                           const UiText &text, const QLocale &locale, SelectionLabels &labels);

} // namespace kv
