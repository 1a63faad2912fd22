#include "browser/selectionstats.h"

#include "browser/columnvalues.h"
#include "common/checked.h"
#include "common/failure.h"
#include "common/rounding.h"
#include "settings/encodersettings.h"
#include "ui/uitext.h"

namespace kv {

void applySelectionCaptions(SelectionLabels &labels, const UiText &text)
{
    static constexpr int captionElements[] = {0, 1, 5, 6, 7, 8};
    for (size_t i = 0; i < text.infoLabels.size(); ++i)
        labels[captionElements[i]] = text.infoLabels.at(i);
}

bool RefreshSelectionStats(const std::vector<FileRow> &rows, bool makeAll, const EncoderSettings &settings,
                           const UiText &text, const QLocale &locale, SelectionLabels &labels)
{
    return guarded([&] {
        Int16 count = 0;
        float sizeMb = 0.0F; // single precision, like the size the status bar shows
        Int32 bitrateSum = 0;
        const Int16 n = static_cast<long long>(rows.size());
        for (Int16 i = 0; i < n; ++i) {
            const FileRow &row = rows[static_cast<size_t>(i.value())];
            if (!makeAll && !row.checked)
                continue;
            ++count;
            sizeMb = static_cast<float>(sizeMb + megabytesFromColumn(row.info[MediaInfo::SizeKb]));
            bitrateSum += kbpsFromColumn(row.info[MediaInfo::Bitrate]);
        }
        labels[SelectionLabels::Count] = QString::number(count.value());
        labels[SelectionLabels::Size] = megabytesText(sizeMb, locale) + text.mbUnit;

        BitrateEstimates expected; // starts at 0: an encoder no rule covers forecasts no change
        EstimateBitrates(settings, expected);
        const struct { int element; std::int16_t kbps; } forecasts[] = {
            {SelectionLabels::Mp3Forecast, expected.mp3},
            {SelectionLabels::OggForecast, expected.ogg},
            {SelectionLabels::MpcForecast, expected.mpc},
        };
        for (const auto &f : forecasts) {
            float ratio = 1.0F;
            if (count > 0 && f.kbps > 0)
                ratio = static_cast<float>(divide(divide(bitrateSum.value(), count.value()), f.kbps));
            // A selection whose bit rates sum to 0 divides by zero here and keeps the old forecasts.
            const auto forecast = static_cast<float>(divide(sizeMb, ratio));
            labels[f.element] = megabytesText(forecast, locale) + text.mbUnit;
        }
    });
}

} // namespace kv
