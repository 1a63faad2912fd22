#include <functional>

#include <gtest/gtest.h>

#include <QLocale>

#include "common/failure.h"
#include "settings/configfile.h"
#include "settings/settingscontrols.h"
#include "support/qtprinters.h"

using namespace kv;

TEST(SettingsControls, SettersRefuseWhatTheControlsRefuse)
{
    SettingsControls c;
    const std::function<void()> refused[] = {
        [&] { c.setMp3Mode(4); },   [&] { c.setMp3Mode(-2); },   [&] { c.setMp3Preset(4); },
        [&] { c.setMp3Cbr(17); },   [&] { c.setMp3Abr(127); },   [&] { c.setMp3Abr(301); },
        [&] { c.setOggMode(3); },   [&] { c.setOggQuality(-11); }, [&] { c.setOggQuality(101); },
        [&] { c.setOggAbr(301); },  [&] { c.setMpcMode(3); },    [&] { c.setMpcPreset(7); },
        [&] { c.setMpcQuality(-1); }, [&] { c.setMpcQuality(101); }, [&] { c.setSelectedTab(0); },
        [&] { c.setSelectedTab(4); }, [&] { c.setWindowLeft(32768); }, [&] { c.setWindowTop(-32769); },
    };
    int refreshes = 0;
    c.setChangeHook([&] { ++refreshes; });
    for (std::size_t i = 0; i < std::size(refused); ++i)
        EXPECT_THROW(refused[i](), Failure) << i;
    EXPECT_EQ(c.settings(), EncoderSettings());
    EXPECT_EQ(refreshes, 0);
    // Lists take -1 (no selection); a window below its minimum size is raised to it.
    EXPECT_NO_THROW(c.setMp3Cbr(-1));
    c.setWindowWidth(0);
    EXPECT_EQ(c.windowWidth(), SettingsControls::kMinWidthTwips);
}

TEST(SettingsControls, ChangesRunTheHandlerThenTheRefresh)
{
    SettingsControls c(QLocale(QLocale::German, QLocale::Germany));
    int refreshes = 0;
    QString labelSeen;
    c.setChangeHook([&] { ++refreshes; labelSeen = c.lblMpc(); });
    c.setMpcQuality(45);
    EXPECT_EQ(labelSeen, QStringLiteral("--quality 4,5"));
    c.setMp3Mode(1);
    EXPECT_EQ(c.mp3Controls(), (Mp3ModeControls{false, true, true, false, false}));
    c.setOggMode(2);
    EXPECT_EQ(c.oggControls(), (OggModeControls{false, false, false, false, true}));
    c.setMpcMode(-1);
    EXPECT_EQ(c.mpcControls(), MpcModeControls{});
    EXPECT_EQ(refreshes, 4);
    // Text boxes, the tab and the window trigger nothing.
    c.setMp3CommandLine(QStringLiteral("-V 0"));
    c.setSelectedTab(2);
    c.setWindowLeft(150);
    EXPECT_EQ(refreshes, 4);
    EXPECT_TRUE(c.frameVisible(1) && !c.frameVisible(0) && !c.frameVisible(2));
}

TEST(ResetToDefaults, RestoresTheThirteenSettingsOnly)
{
    SettingsControls c(QLocale(QLocale::German, QLocale::Germany));
    c.setMp3Mode(3);
    c.setMp3Abr(300);
    c.setMp3CommandLine(QStringLiteral("-V 2"));
    c.setOggQuality(-10);
    c.setOggAbr(128);
    c.setMpcMode(1);
    c.setMpcPreset(-1);
    c.setMpcQuality(45);
    c.setSelectedTab(3);
    c.setWindowLeft(1500);
    c.setStartFolder(QStringLiteral("/music/"));
    int russianApplied = 0;
    c.setApplyRussianHook([&] { ++russianApplied; });
    c.applyRussian();
    EXPECT_EQ(russianApplied, 1);
    int refreshes = 0;
    c.setChangeHook([&] { ++refreshes; });

    EXPECT_TRUE(ResetToDefaults(c));
    EXPECT_EQ(c.settings(), EncoderSettings());
    EXPECT_EQ(refreshes, 10); // six lists and four sliders
    EXPECT_EQ(QStringList({c.lblAbr(), c.lblAbrOgg(), c.lblPresetOgg(), c.lblMpc()}),
              QStringList({QStringLiteral("192 kbps"), QStringLiteral("192 kbps"), QStringLiteral("--quality 6"),
                           QStringLiteral("--quality 6")}));
    EXPECT_EQ(c.mpcControls(), (MpcModeControls{true, false, false, false}));
    EXPECT_EQ(c.selectedTab(), 3);
    EXPECT_EQ(c.windowLeft(), 1500);
    EXPECT_EQ(c.startFolder(), QStringLiteral("/music/"));
    EXPECT_EQ(c.languagePanelText(), QStringLiteral("Русский"));
}
