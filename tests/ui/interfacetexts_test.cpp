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

} // namespace

// Every panel is relabelled around its value, and switching back gives it again; the same
// language twice changes nothing. The window's test switches every other text there and back.
TEST(Languages, SwitchingRelabelsEveryPanelAroundItsValue)
{
    const InterfaceTexts english = startedWindow();
    const std::array<QString, 8> russian{
        QStringLiteral("Процессоров: 2"), QStringLiteral("Свободно: 12345.6 МБ  "), QStringLiteral("Файлов: 3  "),
        QStringLiteral("Размер: 0 МБ  "), QStringLiteral("Время: 10:00:00  "),    QStringLiteral("Поток: 1411 Кб/с  "),
        QStringLiteral("Русский"),        QStringLiteral("Справка")};
    InterfaceTexts ui = english;
    ApplyRussian(ui);
    ApplyRussian(ui);
    EXPECT_EQ(ui.status.panels, russian);
    ApplyEnglish(ui);
    EXPECT_EQ(ui.status.panels, english.status.panels);
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
