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
    ui.status.panel(1) = QStringLiteral("CPU: 2");
    ui.status.panel(2) = QStringLiteral("Free Disk Space: 12345.6 MB  ");
    ui.status.panel(3) = QStringLiteral("Files: 3  ");
    ui.status.panel(4) = QStringLiteral("Size: 0 MB  ");
    ui.status.panel(5) = QStringLiteral("Duration: 10:00:00  ");
    ui.status.panel(6) = QStringLiteral("Average bitrate: 1411 kbps  ");
    return ui;
}

} // namespace

TEST(Languages, EveryTextDiffersBetweenTheTablesExceptTheSharedOnes)
{
    const UiText &en = englishTexts();
    const UiText &ru = russianTexts();
    // Texts that are the same in both languages by design.
    EXPECT_EQ(ru.jobColumns[4], QStringLiteral("%"));
    EXPECT_EQ(en.jobColumns[4], ru.jobColumns[4]);
    for (size_t i = 0; i < en.listColumns.size(); ++i)
        EXPECT_NE(en.listColumns[i], ru.listColumns[i]) << i;
    // Blanks are part of the texts and are composed into panels and progress lines.
    EXPECT_EQ(en.kbpsUnit, QStringLiteral(" kbps  "));
    EXPECT_EQ(ru.kbpsUnit, QStringLiteral(" Кб/с  "));
    EXPECT_EQ(en.ofLabel, QStringLiteral(" of "));
    EXPECT_EQ(ru.finishedLabel, QStringLiteral("Выполнено "));
    EXPECT_EQ(ru.mbUnit, QStringLiteral(" МБ"));
    EXPECT_EQ(ru.listColumns[3], QStringLiteral("Поток, Кб/с"));
    EXPECT_EQ(en.infoLabels[3], QStringLiteral("Average Mp3 File Size:"));
}

TEST(Languages, RussianRelabelsEveryPanelKeepingItsValue)
{
    InterfaceTexts ui = startedWindow();
    ApplyRussian(ui);
    const QString expected[] = {
        QStringLiteral("Процессоров: 2"),
        QStringLiteral("Свободно: 12345.6 МБ  "),
        QStringLiteral("Файлов: 3  "),
        QStringLiteral("Размер: 0 МБ  "),
        QStringLiteral("Время: 10:00:00  "),
        QStringLiteral("Поток: 1411 Кб/с  "),
        QStringLiteral("Русский"),
        QStringLiteral("Справка"),
    };
    for (int panel = 1; panel <= 8; ++panel)
        EXPECT_EQ(ui.status.panel(panel), expected[panel - 1]) << panel;
    EXPECT_EQ(ui.text.mp3Modes[3], QStringLiteral("Командная строка"));
    EXPECT_EQ(currentLanguage(ui), Language::Russian);
}

TEST(Languages, SwitchingTwiceRestoresEveryTextAndPanel)
{
    const InterfaceTexts first = startedWindow();
    InterfaceTexts ui = first;
    ApplyRussian(ui);
    ApplyEnglish(ui);
    EXPECT_EQ(ui.status.panels, first.status.panels);
    // The table in force is the English one, field for field.
    EXPECT_EQ(ui.text.listColumns, englishTexts().listColumns);
    EXPECT_EQ(ui.text.readOnlyTarget, englishTexts().readOnlyTarget);
    EXPECT_EQ(ui.text.infoLabels, englishTexts().infoLabels);

    // The same from Russian; applying a language twice changes nothing either.
    InterfaceTexts ru = first;
    ApplyRussian(ru);
    const InterfaceTexts ruFirst = ru;
    ApplyRussian(ru);
    EXPECT_EQ(ru.status.panels, ruFirst.status.panels);
    ApplyEnglish(ru);
    ApplyRussian(ru);
    EXPECT_EQ(ru.status.panels, ruFirst.status.panels);
}

TEST(Languages, ShortSizeAndBitratePanelsKeepTheirTail)
{
    // Values of five characters or fewer after the label are not cut: such a panel was never
    // composed with a unit, and cutting would eat its value.
    InterfaceTexts ui;
    ApplyEnglish(ui);
    ui.status.panel(4) = QStringLiteral("Size: 1.5");
    ui.status.panel(6) = QStringLiteral("Average bitrate: 128");
    ApplyRussian(ui);
    EXPECT_EQ(ui.status.panel(4), QStringLiteral("Размер: 1.5 МБ  "));
    EXPECT_EQ(ui.status.panel(6), QStringLiteral("Поток: 128 Кб/с  "));
}

TEST(Languages, FirstApplyComposesEmptyPanels)
{
    InterfaceTexts ui;
    ApplyEnglish(ui);
    EXPECT_EQ(ui.status.panel(1), QStringLiteral("CPU: "));
    EXPECT_EQ(ui.status.panel(2), QStringLiteral("Free Disk Space:  MB  "));
    EXPECT_EQ(ui.status.panel(6), QStringLiteral("Average bitrate:  kbps  "));
    EXPECT_EQ(ui.status.panel(7), QStringLiteral("English"));
    EXPECT_EQ(ui.status.panel(8), QStringLiteral("Help"));
}

TEST(Languages, PanelClicksSwitchLanguageOrAskForHelp)
{
    InterfaceTexts ui = startedWindow();
    EXPECT_EQ(clickStatusPanel(ui, 3), PanelClick::Nothing);
    EXPECT_EQ(clickStatusPanel(ui, 8), PanelClick::OpenHelp);
    EXPECT_EQ(clickStatusPanel(ui, 7), PanelClick::LanguageSwitched);
    EXPECT_EQ(ui.status.panel(7), QStringLiteral("Русский"));
    EXPECT_EQ(clickStatusPanel(ui, 8), PanelClick::OpenHelp);
    EXPECT_EQ(clickStatusPanel(ui, 7), PanelClick::LanguageSwitched);
    EXPECT_EQ(ui.status.panel(7), QStringLiteral("English"));
    EXPECT_EQ(currentLanguage(ui), Language::English);
    EXPECT_EQ(clickStatusPanel(ui, 0), PanelClick::Nothing);
    EXPECT_EQ(clickStatusPanel(ui, 9), PanelClick::Nothing);
}
