#include "settings/startupsettings.h"

#include "settings/configfile.h"

namespace kv {

StartupSettings loadStartupSettings(const QString &configPath, Files &files, const QLocale &locale)
{
    StartupSettings startup{SettingsControls(locale), ConfigRecord(), false};
    ResetToDefaults(startup.controls);
    if (configFileQualifies(configPath, files)) {
        startup.fileRead = true;
        LoadConfig(configPath, files, startup.controls, startup.record);
    }
    return startup;
}

} // namespace kv
