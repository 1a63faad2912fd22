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
    const char *panels[] = {"CPU: 2", "Free Disk Space: 12345.6 MB  ", "Files: 3  ", "Size: 0 MB  ",
                            "Duration: 10:00:00  ", "Average bitrate: 1411 kbps  "};
    for (int p = 1; p <= 6; ++p)
        ui.status.panel(p) = QString::fromUtf8(panels[p - 1]);
    return ui;
}

} // namespace

TEST(Languages, RussianRelabelsEveryPanelKeepingItsValue)
{
    InterfaceTexts ui = startedWindow();
    ApplyRussian(ui);
    const std::array<QString, 8> expected{
        QStringLiteral("Процессоров: 2"), QStringLiteral("Свободно: 12345.6 МБ  "), QStringLiteral("Файлов: 3  "),
        QStringLiteral("Размер: 0 МБ  "), QStringLiteral("Время: 10:00:00  "),    QStringLiteral("Поток: 1411 Кб/с  "),
        QStringLiteral("Русский"),        QStringLiteral("Справка")};
    EXPECT_EQ(ui.status.panels, expected);
    EXPECT_EQ(ui.text.mp3Modes[3], QStringLiteral("Командная строка"));
}

TEST(Languages, SwitchingTwiceRestoresEveryTextAndPanel)
{
    const InterfaceTexts first = startedWindow();
    InterfaceTexts ui = first;
    ApplyRussian(ui);
    const InterfaceTexts russian = ui;
    ApplyEnglish(ui);
    EXPECT_EQ(ui.status.panels, first.status.panels);
    EXPECT_EQ(ui.text.listColumns, englishTexts().listColumns);
    EXPECT_EQ(ui.text.infoLabels, englishTexts().infoLabels);
    ApplyRussian(ui);
    ApplyRussian(ui); // the same language again changes nothing
    EXPECT_EQ(ui.status.panels, russian.status.panels);
}

TEST(Languages, PanelsWithoutAUnitKeepTheirTail)
{
    // Five characters or fewer after the label are kept whole: there is no unit to cut.
    InterfaceTexts ui;
    ApplyEnglish(ui);
    EXPECT_EQ(ui.status.panel(2), QStringLiteral("Free Disk Space:  MB  "));
    ui.status.panel(4) = QStringLiteral("Size: 1.5");
    ui.status.panel(6) = QStringLiteral("Average bitrate: 128");
    ApplyRussian(ui);
    EXPECT_EQ(ui.status.panel(4), QStringLiteral("Размер: 1.5 МБ  "));
    EXPECT_EQ(ui.status.panel(6), QStringLiteral("Поток: 128 Кб/с  "));
}

TEST(Languages, PanelClicksSwitchLanguageOrAskForHelp)
{
    InterfaceTexts ui = startedWindow();
    EXPECT_EQ(clickStatusPanel(ui, 3), PanelClick::Nothing);
    EXPECT_EQ(clickStatusPanel(ui, 8), PanelClick::OpenHelp);
    EXPECT_EQ(clickStatusPanel(ui, 7), PanelClick::LanguageSwitched);
    EXPECT_EQ(currentLanguage(ui), Language::Russian);
    EXPECT_EQ(clickStatusPanel(ui, 8), PanelClick::OpenHelp);
    EXPECT_EQ(clickStatusPanel(ui, 7), PanelClick::LanguageSwitched);
    EXPECT_EQ(ui.status.panel(7), QStringLiteral("English"));
    EXPECT_EQ(clickStatusPanel(ui, 9), PanelClick::Nothing);
}
