#include "settings/configfile.h"

#include "common/checked.h"
#include "common/failure.h"
#include "platform/nativenames.h"
#include "settings/windows1251.h"

namespace kv {

namespace {

Int16 twipsFromPixels(std::int16_t pixels)
{
    // 16-bit on purpose: a stored measure above 2184 pixels overflows and ends the load here.
    return Int16(pixels) * Int16(SettingsControls::kTwipsPerPixel);
}

Int16 pixelsFromTwips(int twips)
{
    return Int16::fromReal(static_cast<double>(twips) / SettingsControls::kTwipsPerPixel);
}

// The folder field is Windows-1251. A part of the path whose name is not UTF-8 goes in as its own
// bytes (each byte has its character in the code page), so a folder named in Windows-1251 or any
// other single-byte code is remembered as it is. A UTF-8 name goes in as text, and characters the
// code page lacks become "?" as in every text of the record: the next start then opens the
// nearest folder above it.
QString folderFieldText(const QString &folder)
{
    QStringList parts = folder.split(QLatin1Char('/'));
    for (QString &part : parts) {
        if (shownName(part) != part) // holds bytes that are not UTF-8
            part = fromWindows1251(bytesFromName(part));
    }
    return parts.join(QLatin1Char('/'));
}

} // namespace

QString configFilePath(const QString &programFolder)
{
    return programFolder + QStringLiteral("kestrvan.cfg");
}

QString configFileLocation(const QString &programFolder, const QString &userConfigFolder, bool fileInProgramFolder,
                           bool programFolderWritable)
{
    if (fileInProgramFolder || programFolderWritable || userConfigFolder.isEmpty())
        return configFilePath(programFolder);
    QString folder = userConfigFolder;
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    return configFilePath(folder);
}

bool configFileQualifies(const QString &path, Files &files)
{
    const std::optional<std::int64_t> size = files.fileSize(path);
    return size && *size == ConfigRecord::kSize;
}

bool ResetToDefaults(SettingsControls &controls)
{
    return guarded([&] {
        const EncoderSettings defaults;
        controls.setMp3Mode(defaults.mp3.mode);
        controls.setMp3Preset(defaults.mp3.presetIndex);
        controls.setMp3Abr(defaults.mp3.abrKbps);
        controls.setMp3Cbr(defaults.mp3.cbrIndex);
        controls.setMp3CommandLine(defaults.mp3.commandLine);
        controls.setOggMode(defaults.ogg.mode);
        controls.setOggQuality(defaults.ogg.qualityTenths);
        controls.setOggAbr(defaults.ogg.abrKbps);
        controls.setOggCommandLine(defaults.ogg.commandLine);
        controls.setMpcMode(defaults.mpc.mode);
        controls.setMpcPreset(defaults.mpc.presetIndex);
        controls.setMpcQuality(defaults.mpc.qualityTenths);
        controls.setMpcCommandLine(defaults.mpc.commandLine);
        controls.writeMp3AbrLabel();
        controls.writeOggQualityLabel();
        controls.writeOggAbrLabel();
        controls.writeMpcQualityLabel();
    });
}

bool LoadConfig(const QString &path, Files &files, SettingsControls &controls, ConfigRecord &record)
{
    return guarded([&] {
        const std::optional<QByteArray> bytes = files.readAll(path);
        std::optional<ConfigRecord> read = bytes ? ConfigRecord::fromBytes(*bytes) : std::nullopt;
        if (!read)
            throw Failure("configuration record not readable");
        record = *read;
        using R = ConfigRecord;

        controls.setWindowLeft(twipsFromPixels(record.int16(R::kWindowLeft)));
        controls.setWindowTop(twipsFromPixels(record.int16(R::kWindowTop)));
        controls.setWindowWidth(twipsFromPixels(record.int16(R::kWindowWidth)));
        controls.setWindowHeight(twipsFromPixels(record.int16(R::kWindowHeight)));

        const int tab = record.byte(R::kTab);
        if (tab >= 1 && tab <= 3)
            controls.setSelectedTab(tab);

        // English is already applied, so only Russian needs doing.
        if (record.byte(R::kLanguage) != 0)
            controls.applyRussian();

        controls.setMp3Mode(record.byte(R::kMp3Mode));
        controls.setMp3Preset(record.byte(R::kMp3Preset));
        controls.setMp3Abr(record.byte(R::kMp3Abr) + 128);
        controls.writeMp3AbrLabel();
        controls.setMp3Cbr(record.byte(R::kMp3Cbr));
        controls.setMp3CommandLine(trimBlanks(record.text(R::kMp3CommandLine)));

        controls.setOggMode(record.byte(R::kOggMode));
        controls.setOggQuality(record.byte(R::kOggQuality) - 10);
        controls.writeOggQualityLabel();
        controls.setOggAbr(record.byte(R::kOggAbr) + 128);
        controls.writeOggAbrLabel();
        controls.setOggCommandLine(trimBlanks(record.text(R::kOggCommandLine)));

        controls.setMpcMode(record.byte(R::kMpcMode));
        controls.setMpcPreset(record.byte(R::kMpcPreset));
        controls.setMpcQuality(record.byte(R::kMpcQuality));
        controls.writeMpcQualityLabel();
        controls.setMpcCommandLine(trimBlanks(record.text(R::kMpcCommandLine)));

        // The drive for this folder is chosen when the folder tree opens it: on Linux that is the
        // mount point containing the path (longest prefix), where a drive letter was before.
        controls.setStartFolder(trimBlanks(record.text(R::kFolder)));
    });
}

QString rememberedFolder(const QString &text, Folders &folders)
{
    QStringList parts = text.split(QLatin1Char('/'));
    QString parent;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        QString &part = parts[i];
        // Only a part beyond ASCII reads differently as bytes; the text comes first.
        const QString asBytes = nameFromBytes(toWindows1251(part));
        if (i > 0 && asBytes != part) {
            const std::optional<QStringList> names =
                folders.listFolders(parent.isEmpty() ? QStringLiteral("/") : parent);
            if (names && !names->contains(part) && names->contains(asBytes))
                part = asBytes;
        }
        parent += (i > 0 ? QStringLiteral("/") : QString()) + part;
    }
    return parts.join(QLatin1Char('/'));
}

bool SaveConfig(const QString &path, Files &files, const SettingsControls &controls,
                ConfigRecord &record)
{
    return guarded([&] {
        using R = ConfigRecord;
        // A minimised or maximised window has no place worth keeping: the loaded one stays.
        if (controls.windowState() == WindowState::Normal) {
            record.setInt16(R::kWindowLeft, pixelsFromTwips(controls.windowLeft()));
            record.setInt16(R::kWindowTop, pixelsFromTwips(controls.windowTop()));
            record.setInt16(R::kWindowWidth, pixelsFromTwips(controls.windowWidth()));
            record.setInt16(R::kWindowHeight, pixelsFromTwips(controls.windowHeight()));
        }
        record.setByte(R::kTab, controls.selectedTab());
        record.setByte(R::kLanguage, controls.languagePanelText() == QStringLiteral("English") ? 0 : 1);
        record.setText(R::kFolder, folderFieldText(trimBlanks(controls.startFolder())));

        const EncoderSettings &s = controls.settings();
        record.setByte(R::kMp3Mode, s.mp3.mode);
        record.setByte(R::kMp3Preset, s.mp3.presetIndex);
        record.setByte(R::kMp3Abr, s.mp3.abrKbps - 128);
        record.setByte(R::kMp3Cbr, s.mp3.cbrIndex);
        record.setText(R::kMp3CommandLine, trimBlanks(s.mp3.commandLine));

        record.setByte(R::kOggMode, s.ogg.mode);
        record.setByte(R::kOggQuality, s.ogg.qualityTenths + 10);
        record.setByte(R::kOggAbr, s.ogg.abrKbps - 128);
        record.setText(R::kOggCommandLine, trimBlanks(s.ogg.commandLine));

        record.setByte(R::kMpcMode, s.mpc.mode);
        record.setByte(R::kMpcPreset, s.mpc.presetIndex);
        record.setByte(R::kMpcQuality, s.mpc.qualityTenths);
        record.setText(R::kMpcCommandLine, trimBlanks(s.mpc.commandLine));

        if (!files.writeAtStart(path, record.bytes()))
            throw Failure("configuration file not writable");
    });
}

} // namespace kv
