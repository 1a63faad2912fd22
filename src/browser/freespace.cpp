#include "browser/freespace.h"

#include "browser/columnvalues.h"
#include "common/checked.h"
#include "common/failure.h"
#include "platform/folders.h"
#include "ui/interfacetexts.h"

namespace kv {

void ShowFreeDiskSpace(const QString &path, Folders &folders, StatusBar &status, const UiText &text,
                       const QLocale &locale)
{
    guarded([&] {
        // A failed query leaves every count at zero, so the panel reads 0 rather than going stale.
        const FreeSpace space = folders.freeSpace(path).value_or(FreeSpace{});
        // Each count is held in 32 bits, as the window always held them; a larger one ends here.
        const Int32 clusters = space.freeClusters;
        const Int32 sectorsPerCluster = space.sectorsPerCluster;
        const Int32 bytesPerSector = space.bytesPerSector;
        const double freeMb = (clusters.value() / 1048576.0) * sectorsPerCluster.value() * bytesPerSector.value();
        status.panel(2) = composePanel(text, 2, megabytesText(freeMb, locale));
    });
}

} // namespace kv
