#pragma once

#include <QString>

#include "platform/files.h"
#include "platform/folders.h"
#include "settings/configrecord.h"
#include "settings/settingscontrols.h"

namespace kv {

// programFolder (ending in "/") + "kestrvan.cfg".
QString configFilePath(const QString &programFolder);

// Where the window keeps its file: beside the program when that folder is writable or the file
// is already there (a portable copy), otherwise in the user's configuration folder, so that an
// installed program in a read-only folder keeps its settings too.
QString configFileLocation(const QString &programFolder, const QString &userConfigFolder, bool fileInProgramFolder,
                           bool programFolderWritable);

// The start-up test: the file exists and is exactly one record long. Any other file is left alone
// (and overwritten from its start by the next save).
bool configFileQualifies(const QString &path, Files &files);

// The thirteen encoder settings back to their defaults, each through its control, then the
// slider labels. Tab, language, window and folder stay. False if a control refused a value.
bool ResetToDefaults(SettingsControls &controls);

// Reads the record into `record` and applies it to the controls step by step. The first refused
// value ends the load silently: what was applied stays, the rest keeps its value. False when the
// load ended early (or the file could not be read as one record).
bool LoadConfig(const QString &path, Files &files, SettingsControls &controls, ConfigRecord &record);

// The folder a remembered folder text names. The record keeps a name that is not UTF-8 as its
// own bytes, read back as Windows-1251 text: where a part of the path does not exist as that text
// but its Windows-1251 bytes name a folder there, the part is that folder. Anything else comes
// back as it was, and the tree opens the nearest folder of it that exists.
QString rememberedFolder(const QString &text, Folders &folders);

// Gathers the controls into `record` and writes it at the start of the file. The first refused
// value (a list without selection, say) ends the save before anything is written. False then,
// or when the file cannot be written.
bool SaveConfig(const QString &path, Files &files, const SettingsControls &controls,
                ConfigRecord &record);

} // namespace kv
