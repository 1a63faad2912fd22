#include "ui/uitext.h"

namespace kv {

const UiText &englishTexts()
{
    static const UiText texts{
        .statusInProgress = QStringLiteral("In Progress"),
        .statusDone = QStringLiteral("Done"),
        .statusBreak = QStringLiteral("Break"),
        .statusReadOnly = QStringLiteral("Read only"),
        .statusError = QStringLiteral("Error"),
        .finishedLabel = QStringLiteral("Finished "),
        .ofLabel = QStringLiteral(" of "),
        .cpuLabel = QStringLiteral("CPU: "),
        .freeLabel = QStringLiteral("Free Disk Space: "),
        .filesLabel = QStringLiteral("Files: "),
        .sizeLabel = QStringLiteral("Size: "),
        .mbUnit = QStringLiteral(" MB"),
        .durationLabel = QStringLiteral("Duration: "),
        .bitrateLabel = QStringLiteral("Average bitrate: "),
        .kbUnit = QStringLiteral(" KB"),
        .kbpsUnit = QStringLiteral(" kbps  "),
        .driveNotReady = QStringLiteral("Drive is not ready, change another drive"),
        .alreadyStarted = QStringLiteral("Program is already started"),
        // The misspelling is the message users know; it stays.
        .readOnlyTarget = QStringLiteral(" is Read only. Please delete file manualy"),
        .readOnlyConfig = QStringLiteral("Config file is Read only. Changes not written."),
        .stopButton = QStringLiteral("Stop"),
        .closeButton = QStringLiteral("Close"),
        .mp3Modes = {QStringLiteral("Variable bitrate"), QStringLiteral("Average bitrate"),
                     QStringLiteral("Constant bitrate"), QStringLiteral("Command line")},
        .oggModes = {QStringLiteral("Quality mode"), QStringLiteral("Average bitrate"),
                     QStringLiteral("Command line")},
        .mpcModes = {QStringLiteral("Preset"), QStringLiteral("Quality"), QStringLiteral("Command line")},
        .defaultButton = QStringLiteral("Default"),
        .optionsFrame = QStringLiteral("Encode Options"),
        .jobColumns = {QStringLiteral("File Name"), QStringLiteral("Status"), QStringLiteral("File Size"),
                       QStringLiteral("Size"), QStringLiteral("%"), QStringLiteral("Encoding time")},
        .listColumns = {QStringLiteral("File Name"), QStringLiteral("File Size, KB"), QStringLiteral("Duration"),
                        QStringLiteral("Bitrate, kbps"), QStringLiteral("Sampling, Hz"), QStringLiteral("Channel")},
        .makeButtons = {QStringLiteral("Make Mp3"), QStringLiteral("Make Ogg"), QStringLiteral("Make Mpc"),
                        QStringLiteral("Make Wav"), QStringLiteral("Make All")},
        .showButtons = {QStringLiteral("Show Wav"), QStringLiteral("Show Mp3"), QStringLiteral("Show Ogg"),
                        QStringLiteral("Show Mpc")},
        .languageName = QStringLiteral("English"),
        .help = QStringLiteral("Help"),
        .infoLabels = {QStringLiteral("Selected:"), QStringLiteral("Size:"), QStringLiteral("Average Wav File Size:"),
                       QStringLiteral("Average Mp3 File Size:"), QStringLiteral("Average Ogg File Size:"),
                       QStringLiteral("Average Mpc File Size:")},
    };
    return texts;
}

const UiText &russianTexts()
{
    static const UiText texts{
        .statusInProgress = QStringLiteral("Кодируется"),
        .statusDone = QStringLiteral("Готово"),
        .statusBreak = QStringLiteral("Прервано"),
        .statusReadOnly = QStringLiteral("Только чтение"),
        .statusError = QStringLiteral("Ошибка"),
        .finishedLabel = QStringLiteral("Выполнено "),
        .ofLabel = QStringLiteral(" из "),
        .cpuLabel = QStringLiteral("Процессоров: "),
        .freeLabel = QStringLiteral("Свободно: "),
        .filesLabel = QStringLiteral("Файлов: "),
        .sizeLabel = QStringLiteral("Размер: "),
        .mbUnit = QStringLiteral(" МБ"),
        .durationLabel = QStringLiteral("Время: "),
        .bitrateLabel = QStringLiteral("Поток: "),
        .kbUnit = QStringLiteral(" КБ"),
        .kbpsUnit = QStringLiteral(" Кб/с  "),
        .driveNotReady = QStringLiteral("Диск недоступен, выберите другой диск"),
        .alreadyStarted = QStringLiteral("Приложение уже запущено"),
        .readOnlyTarget = QStringLiteral(" доступен Только для чтения. Удалите файл вручную."),
        .readOnlyConfig = QStringLiteral("Файл конфигурации доступен Только для чтения. Изменения не записаны."),
        .stopButton = QStringLiteral("Остановить"),
        .closeButton = QStringLiteral("Закрыть"),
        .mp3Modes = {QStringLiteral("Переменный поток"), QStringLiteral("Средний поток"),
                     QStringLiteral("Постоянный поток"), QStringLiteral("Командная строка")},
        .oggModes = {QStringLiteral("Качество"), QStringLiteral("Средний поток"), QStringLiteral("Командная строка")},
        .mpcModes = {QStringLiteral("Предустановки"), QStringLiteral("Качество"), QStringLiteral("Командная строка")},
        .defaultButton = QStringLiteral("Исходные"),
        .optionsFrame = QStringLiteral("Параметры сжатия"),
        .jobColumns = {QStringLiteral("Имя файла"), QStringLiteral("Статус"), QStringLiteral("Исходный"),
                       QStringLiteral("Размер"), QStringLiteral("%"), QStringLiteral("Время работы")},
        .listColumns = {QStringLiteral("Имя файла"), QStringLiteral("Размер, КБ"), QStringLiteral("Время"),
                        QStringLiteral("Поток, Кб/с"), QStringLiteral("Частота, Гц"), QStringLiteral("Каналы")},
        .makeButtons = {QStringLiteral("Сделать Mp3"), QStringLiteral("Сделать Ogg"), QStringLiteral("Сделать Mpc"),
                        QStringLiteral("Сделать Wav"), QStringLiteral("Все файлы")},
        .showButtons = {QStringLiteral("Показать Wav"), QStringLiteral("Показать Mp3"), QStringLiteral("Показать Ogg"),
                        QStringLiteral("Показать Mpc")},
        .languageName = QStringLiteral("Русский"),
        .help = QStringLiteral("Справка"),
        .infoLabels = {QStringLiteral("Выделено файлов:"), QStringLiteral("Размер файлов:"),
                       QStringLiteral("Прогноз - Размер Wav:"), QStringLiteral("Прогноз - Размер Mp3:"),
                       QStringLiteral("Прогноз - Размер Ogg:"), QStringLiteral("Прогноз - Размер Mpc:")},
    };
    return texts;
}

} // namespace kv
