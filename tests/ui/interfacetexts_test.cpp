#include <gtest/gtest.h>

#include "support/qtprinters.h"
#include "ui/interfacetexts.h"

using namespace kv;

namespace {

// The window as start-up leaves it after a scan: English applied, then every panel written.
InterfaceTexts startedWindow()
{
    InterfaceTexts ui;
    ApplyEnglish(ui);
    ui.status.panels = {QStringLiteral("CPU: 2"), QStringLiteral("Free Disk Space: 12345.6 MB  "), QStringLiteral("Files: 3  "),
                        QStringLiteral("Size: 0 MB  "), QStringLiteral("Duration: 10:00:00  "),
                        QStringLiteral("Average bitrate: 1411 kbps  "), ui.status.panel(7), ui.status.panel(8)};
    return ui;
}

// Every text of a table in one list: the shared strings, then the control texts, in the order
// the language table gives them.
QStringList allTexts(const UiText &t)
{
    QStringList all{t.statusInProgress, t.statusDone, t.statusBreak, t.statusReadOnly, t.statusError,
                    t.statusKilled, t.finishedLabel, t.ofLabel, t.cpuLabel, t.freeLabel, t.filesLabel, t.sizeLabel,
                    t.mbUnit, t.durationLabel, t.bitrateLabel, t.kbUnit, t.kbpsUnit, t.driveNotReady, t.alreadyStarted,
                    t.readOnlyTarget, t.readOnlyConfig, t.stopButton, t.closeButton};
    all += QStringList(t.mp3Modes.begin(), t.mp3Modes.end());
    all += QStringList(t.oggModes.begin(), t.oggModes.end());
    all += QStringList(t.mpcModes.begin(), t.mpcModes.end());
    all += QStringList{t.defaultButton, t.optionsFrame};
    all += QStringList(t.jobColumns.begin(), t.jobColumns.end());
    all += QStringList(t.listColumns.begin(), t.listColumns.end());
    all += QStringList(t.makeButtons.begin(), t.makeButtons.end());
    all += QStringList(t.showButtons.begin(), t.showButtons.end());
    all += QStringList{t.languageName, t.help};
    all += QStringList(t.infoLabels.begin(), t.infoLabels.end());
    return all;
}

QStringList texts(std::initializer_list<const char *> utf8)
{
    QStringList all;
    for (const char *t : utf8)
        all.append(QString::fromUtf8(t));
    return all;
}

// The language table, blanks included, written out once more so that a text changed in the
// code shows here.
const QStringList kEnglish = texts({
    "In Progress", "Done", "Break", "Read only", "Error", "Killed", "Finished ", " of ", "CPU: ", "Free Disk Space: ",
    "Files: ", "Size: ", " MB", "Duration: ", "Average bitrate: ", " KB", " kbps  ",
    "Drive is not ready, change another drive", "Program is already started",
    " is Read only. Please delete file manualy", "Config file is Read only. Changes not written.",
    "Stop", "Close",
    "Variable bitrate", "Average bitrate", "Constant bitrate", "Command line",
    "Quality mode", "Average bitrate", "Command line",
    "Preset", "Quality", "Command line",
    "Default", "Encode Options",
    "File Name", "Status", "File Size", "Size", "%", "Encoding time",
    "File Name", "File Size, KB", "Duration", "Bitrate, kbps", "Sampling, Hz", "Channel",
    "Make Mp3", "Make Ogg", "Make Mpc", "Make Wav", "Make All",
    "Show Wav", "Show Mp3", "Show Ogg", "Show Mpc",
    "English", "Help",
    "Selected:", "Size:", "Average Wav File Size:", "Average Mp3 File Size:", "Average Ogg File Size:",
    "Average Mpc File Size:",
});

const QStringList kRussian = texts({
    "Кодируется", "Готово", "Прервано", "Только чтение", "Ошибка", "Остановлено", "Выполнено ", " из ", "Процессоров: ",
    "Свободно: ", "Файлов: ", "Размер: ", " МБ", "Время: ", "Поток: ", " КБ", " Кб/с  ",
    "Диск недоступен, выберите другой диск", "Приложение уже запущено",
    " доступен Только для чтения. Удалите файл вручную.",
    "Файл конфигурации доступен Только для чтения. Изменения не записаны.",
    "Остановить", "Закрыть",
    "Переменный поток", "Средний поток", "Постоянный поток", "Командная строка",
    "Качество", "Средний поток", "Командная строка",
    "Предустановки", "Качество", "Командная строка",
    "Исходные", "Параметры сжатия",
    "Имя файла", "Статус", "Исходный", "Размер", "%", "Время работы",
    "Имя файла", "Размер, КБ", "Время", "Поток, Кб/с", "Частота, Гц", "Каналы",
    "Сделать Mp3", "Сделать Ogg", "Сделать Mpc", "Сделать Wav", "Все файлы",
    "Показать Wav", "Показать Mp3", "Показать Ogg", "Показать Mpc",
    "Русский", "Справка",
    "Выделено файлов:", "Размер файлов:", "Прогноз - Размер Wav:", "Прогноз - Размер Mp3:",
    "Прогноз - Размер Ogg:", "Прогноз - Размер Mpc:",
});

} // namespace

// Both tables whole, and what the window holds after each switch: switching there and back
// twice gives every text again, and every panel relabelled around its value.
TEST(Languages, EveryTextOfBothTables)
{
    EXPECT_EQ(allTexts(englishTexts()), kEnglish);
    EXPECT_EQ(allTexts(russianTexts()), kRussian);
    const InterfaceTexts english = startedWindow();
    const std::array<QString, 8> russian{
        QStringLiteral("Процессоров: 2"), QStringLiteral("Свободно: 12345.6 МБ  "), QStringLiteral("Файлов: 3  "),
        QStringLiteral("Размер: 0 МБ  "), QStringLiteral("Время: 10:00:00  "),    QStringLiteral("Поток: 1411 Кб/с  "),
        QStringLiteral("Русский"),        QStringLiteral("Справка")};
    InterfaceTexts ui = english;
    for (int round = 0; round < 2; ++round) {
        ApplyRussian(ui);
        ApplyRussian(ui); // the same language again changes nothing
        EXPECT_EQ(allTexts(ui.text), kRussian) << round;
        EXPECT_EQ(ui.status.panels, russian) << round;
        ApplyEnglish(ui);
        EXPECT_EQ(allTexts(ui.text), kEnglish) << round;
        EXPECT_EQ(ui.status.panels, english.status.panels) << round;
    }
    // Five characters or fewer after the label are kept whole: there is no unit to cut.
    ui.status.panel(4) = QStringLiteral("Size: 1.5");
    ui.status.panel(6) = QStringLiteral("Average bitrate: 128");
    ApplyRussian(ui);
    EXPECT_EQ(ui.status.panel(4), QStringLiteral("Размер: 1.5 МБ  "));
    EXPECT_EQ(ui.status.panel(6), QStringLiteral("Поток: 128 Кб/с  "));
}

TEST(Languages, PanelClicksSwitchLanguageOrAskForHelp)
{
    InterfaceTexts ui = startedWindow();
    using enum PanelClick;
    const struct { int panel; PanelClick click; Language after; } clicks[] = {
        {3, Nothing, Language::English}, {8, OpenHelp, Language::English}, {7, LanguageSwitched, Language::Russian},
        {8, OpenHelp, Language::Russian}, {7, LanguageSwitched, Language::English}, {9, Nothing, Language::English}};
    for (const auto &c : clicks) {
        EXPECT_EQ(clickStatusPanel(ui, c.panel), c.click) << c.panel;
        EXPECT_EQ(currentLanguage(ui), c.after);
    }
}
