#include "settings/startupsettings.h"

#include "settings/configfile.h"
#include "settings/configrecord.h"

namespace kv {

StartupSettings loadStartupSettings(const QString &configPath, Files &files, const QLocale &locale)
{
    StartupSettings startup{SettingsControls(locale), false};
    ResetToDefaults(startup.controls);
    if (configFileQualifies(configPath, files)) {
        startup.fileRead = true;
        // The command-line tool never saves, so the record read is not kept.
        ConfigRecord record;
        LoadConfig(configPath, files, startup.controls, record);
    }
    return startup;
}

} // namespace kv
