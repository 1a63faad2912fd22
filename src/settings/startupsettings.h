#pragma once

#include <QLocale>
#include <QString>

#include "platform/files.h"
#include "settings/settingscontrols.h"

namespace kv {

// The settings as start-up leaves them: defaults, then the configuration file when it qualifies.
// The command-line tool uses this so its commands see what the window would.
struct StartupSettings
{
    SettingsControls controls; // tab, window, language panel and folder included
    bool fileRead = false;     // the file existed with exactly one record's length

    const EncoderSettings &settings() const { return controls.settings(); }
};

StartupSettings loadStartupSettings(const QString &configPath, Files &files,
                                    const QLocale &locale = QLocale::system());

} // namespace kv
