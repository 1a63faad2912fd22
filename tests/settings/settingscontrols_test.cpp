#include <functional>

#include <gtest/gtest.h>

#include <QLocale>

#include "common/failure.h"
#include "settings/settingscontrols.h"
#include "support/qtprinters.h"

using namespace kv;

// Upper bounds of what a file can store are in the configuration tests' random records.
TEST(SettingsControls, RefusedValuesChangeNothingAndChangesRunTheHandlerThenTheRefresh)
{
    SettingsControls c(QLocale(QLocale::German, QLocale::Germany));
    int refreshes = 0;
    QString labelSeen;
    c.setChangeHook([&] { ++refreshes; labelSeen = c.lblMpc(); });
    const std::function<void()> refused[] = {
        [&] { c.setMp3Mode(-2); },     [&] { c.setMp3Abr(127); },     [&] { c.setOggQuality(-11); },
        [&] { c.setOggQuality(101); }, [&] { c.setMpcQuality(-1); },  [&] { c.setSelectedTab(0); },
        [&] { c.setSelectedTab(4); },  [&] { c.setWindowLeft(32768); }, [&] { c.setWindowTop(-32769); },
    };
    for (std::size_t i = 0; i < std::size(refused); ++i)
        EXPECT_THROW(refused[i](), Failure) << i;
    EXPECT_EQ(c.settings(), EncoderSettings());
    EXPECT_EQ(refreshes, 0);

    c.setMpcQuality(45);
    EXPECT_EQ(labelSeen, QStringLiteral("--quality 4,5"));
    c.setMp3Mode(1);
    EXPECT_EQ(c.mp3Controls(), (Mp3ModeControls{false, true, true, false, false}));
    c.setOggMode(2);
    EXPECT_EQ(c.oggControls(), (OggModeControls{false, false, false, false, true}));
    c.setMpcMode(-1); // every list takes "no selection"
    EXPECT_EQ(c.mpcControls(), MpcModeControls{});
    // Text boxes, the tab and the window trigger nothing; a window below its minimum is raised to it.
    c.setMp3CommandLine(QStringLiteral("-V 0"));
    c.setSelectedTab(2);
    c.setWindowWidth(0);
    EXPECT_EQ(refreshes, 4);
    EXPECT_EQ(c.windowWidth(), SettingsControls::kMinWidthTwips);
    EXPECT_TRUE(c.frameVisible(1) && !c.frameVisible(0) && !c.frameVisible(2));
    bool russianApplied = false;
    c.setApplyRussianHook([&] { russianApplied = c.languagePanelText() == QStringLiteral("Русский"); });
    c.applyRussian();
    EXPECT_TRUE(russianApplied);
}
