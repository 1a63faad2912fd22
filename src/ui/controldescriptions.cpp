#include "ui/controldescriptions.h"

namespace kv {

namespace {

struct Entry
{
    const char *objectName;
    const char *englishName, *englishDescription;
    const char *russianName, *russianDescription;
};

// UTF-8 texts, by the window's control names.
constexpr Entry entries[] = {
    {"drvMain", "Drive", "Mounted drives; choosing one shows its folders",
     "Диск", "Подключённые диски; выбранный диск показывает свои папки"},
    {"tvMain", "Folders", "Folder tree; choosing a folder lists its audio files",
     "Папки", "Дерево папок; выбранная папка показывает свои звуковые файлы"},
    {"lstMain", "Audio files", "Audio files of the folder; tick a file to convert it",
     "Звуковые файлы", "Звуковые файлы папки; отметьте файл флажком, чтобы преобразовать его"},
    {"TabOpt", "Encoder", "Chooses the options of MP3, Ogg or Musepack",
     "Кодер", "Выбор параметров MP3, Ogg или Musepack"},
    {"cmbMode", "MP3 mode", "How the MP3 encoder is driven", "Режим MP3", "Как задаётся сжатие MP3"},
    {"cmbPreset", "MP3 preset", "Quality preset of the MP3 encoder", "Предустановка MP3", "Предустановка качества MP3"},
    {"sliAbr", "MP3 average bitrate", "Average bitrate of MP3 in kbps", "Средний поток MP3", "Средний поток MP3 в Кб/с"},
    {"cmbCbr", "MP3 constant bitrate", "Constant bitrate of MP3", "Постоянный поток MP3", "Постоянный поток MP3"},
    {"txtCmd", "MP3 command line", "Options passed to the MP3 encoder as they are",
     "Командная строка MP3", "Параметры, передаваемые кодеру MP3 как есть"},
    {"cmbModeOgg", "Ogg mode", "How the Ogg Vorbis encoder is driven", "Режим Ogg", "Как задаётся сжатие Ogg Vorbis"},
    {"sliPresetOgg", "Ogg quality", "Quality of Ogg Vorbis, -1 to 10", "Качество Ogg", "Качество Ogg Vorbis, от -1 до 10"},
    {"sliAbrOgg", "Ogg average bitrate", "Average bitrate of Ogg Vorbis in kbps", "Средний поток Ogg",
     "Средний поток Ogg Vorbis в Кб/с"},
    {"txtCmdOgg", "Ogg command line", "Options passed to the Ogg Vorbis encoder as they are",
     "Командная строка Ogg", "Параметры, передаваемые кодеру Ogg Vorbis как есть"},
    {"cmbModeMpc", "Musepack mode", "How the Musepack encoder is driven", "Режим Musepack", "Как задаётся сжатие Musepack"},
    {"cmbPresetMpc", "Musepack preset", "Quality preset of the Musepack encoder", "Предустановка Musepack",
     "Предустановка качества Musepack"},
    {"sliMpc", "Musepack quality", "Quality of Musepack, 0 to 10", "Качество Musepack", "Качество Musepack, от 0 до 10"},
    {"txtCmdMpc", "Musepack command line", "Options passed to the Musepack encoder as they are",
     "Командная строка Musepack", "Параметры, передаваемые кодеру Musepack как есть"},
    {"cmdDefault", "", "Restores the default encoder options", "", "Возвращает исходные параметры сжатия"},
    {"frInfo", "Statistics", "Selected files and the forecast size after conversion", "Статистика",
     "Выбранные файлы и прогноз размера после преобразования"},
    {"frEncode", "Conversion", "The files being converted, the progress of the run and one picture per codec",
     "Преобразование", "Преобразуемые файлы, ход работы и по значку на каждый кодек"},
    {"lstCode", "Jobs", "One row per file of the run: its status, sizes and time; Enter tells why a job failed",
     "Задания", "По строке на файл: статус, размеры и время; Enter объясняет, почему задание не удалось"},
    {"pbEncode", "Progress", "Seconds of the run against its estimated length", "Ход работы",
     "Прошедшее время против ожидаемой длительности"},
    {"txtDetails", "Why the job failed", "How the codec ended and the end of its error output",
     "Почему задание не удалось", "Как завершился кодек и конец его сообщений об ошибках"},
    {"frPlayer", "Player", "Plays the listed files", "Проигрыватель", "Проигрывает файлы списка"},
    {"imPlay_0", "Play", "Plays the listed files from the selected one", "Играть",
     "Проигрывает файлы списка, начиная с выделенного"},
    {"imPlay_1", "Stop", "Stops playing", "Стоп", "Останавливает проигрывание"},
    {"imPlay_2", "Previous", "Plays the file before this one", "Предыдущий", "Проигрывает предыдущий файл"},
    {"imPlay_3", "Next", "Plays the file after this one", "Следующий", "Проигрывает следующий файл"},
    // The two labels are named by their text: the file that plays and the time played.
    {"lblPlay", "", "The file that plays and its duration", "", "Проигрываемый файл и его длительность"},
    {"lblPlayTime", "", "Time played of this file", "", "Сколько проиграно от файла"},
    {"pbPlay", "Position", "Seconds played against the file's duration", "Позиция",
     "Проигранные секунды против длительности файла"},
    {"stbMain", "Status", "Processors, free space and totals of the listed folder", "Состояние",
     "Процессоры, свободное место и итоги показанной папки"},
    {"stbMain_7", "", "Switches the interface language", "", "Переключает язык интерфейса"},
    {"stbMain_8", "", "Opens the help document", "", "Открывает справку"},
    {"tbMain", "Commands", "Conversion commands and the kind of files listed", "Команды",
     "Команды преобразования и вид показанных файлов"},
    {"qt_toolbar_ext_button", "More commands", "Shows the toolbar buttons that do not fit",
     "Ещё команды", "Показывает кнопки, которые не поместились на панели"},
    {"tbMain_1", "", "Converts the WAV files to MP3", "", "Сжимает WAV-файлы в MP3"},
    {"tbMain_2", "", "Converts the WAV files to Ogg Vorbis", "", "Сжимает WAV-файлы в Ogg Vorbis"},
    {"tbMain_3", "", "Converts the WAV files to Musepack", "", "Сжимает WAV-файлы в Musepack"},
    {"tbMain_4", "", "Decodes the listed files to WAV", "", "Распаковывает показанные файлы в WAV"},
    {"tbMain_6", "", "Pressed: every listed file; released: only ticked files", "",
     "Нажата: все файлы списка; отпущена: только отмеченные"},
    {"tbMain_8", "", "Lists the WAV files of the folder", "", "Показывает WAV-файлы папки"},
    {"tbMain_9", "", "Lists the MP3 files of the folder", "", "Показывает MP3-файлы папки"},
    {"tbMain_10", "", "Lists the Ogg Vorbis files of the folder", "", "Показывает файлы Ogg Vorbis папки"},
    {"tbMain_11", "", "Lists the Musepack files of the folder", "", "Показывает Musepack-файлы папки"},
};

struct Caption
{
    const char *objectName;
    const char *english, *russian;
};

// Within one options frame only the mode list and one input show at a time, so the inputs of
// different modes may share a letter.
constexpr Caption captions[] = {
    {"cmbMode", "&Mode:", "&Режим:"},
    {"cmbPreset", "&Preset:", "&Предустановка:"},
    {"sliAbr", "&Average bitrate:", "&Средний поток:"},
    {"cmbCbr", "&Bitrate:", "П&остоянный поток:"},
    {"txtCmd", "&Command line:", "Ко&мандная строка:"},
    {"cmbModeOgg", "&Mode:", "&Режим:"},
    {"sliPresetOgg", "&Quality:", "&Качество:"},
    {"sliAbrOgg", "&Average bitrate:", "&Средний поток:"},
    {"txtCmdOgg", "&Command line:", "Ко&мандная строка:"},
    {"cmbModeMpc", "&Mode:", "&Режим:"},
    {"cmbPresetMpc", "&Preset:", "&Предустановка:"},
    {"sliMpc", "&Quality:", "&Качество:"},
    {"txtCmdMpc", "&Command line:", "Ко&мандная строка:"},
};

} // namespace

QString controlCaption(const QString &objectName, Language language)
{
    for (const Caption &c : captions) {
        if (objectName == QLatin1String(c.objectName))
            return QString::fromUtf8(language == Language::Russian ? c.russian : c.english);
    }
    return {};
}

ControlDescription describeControl(const QString &objectName, Language language)
{
    // The slot pictures are one array: each is named by its number, from 1.
    static const QString slotPrefix = QStringLiteral("imProc_");
    if (objectName.startsWith(slotPrefix)) {
        const QString n = QString::number(objectName.mid(slotPrefix.size()).toInt() + 1);
        return language == Language::Russian
                   ? ControlDescription{QStringLiteral("Кодек ") + n, QStringLiteral("Зелёный, пока кодек работает; серый, пока ждёт")}
                   : ControlDescription{QStringLiteral("Codec ") + n, QStringLiteral("Green while its codec runs, grey while idle")};
    }
    for (const Entry &e : entries) {
        if (objectName != QLatin1String(e.objectName))
            continue;
        const bool ru = language == Language::Russian;
        return {QString::fromUtf8(ru ? e.russianName : e.englishName),
                QString::fromUtf8(ru ? e.russianDescription : e.englishDescription)};
    }
    return {};
}

} // namespace kv
