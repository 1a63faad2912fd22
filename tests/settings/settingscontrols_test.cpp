#include <functional>

#include <gtest/gtest.h>

#include <QLocale>

#include "common/failure.h"
#include "settings/configfile.h"
#include "settings/settingscontrols.h"
#include "support/qtprinters.h"

using namespace kv;

namespace {

const QLocale kComma(QLocale::German, QLocale::Germany);

} // namespace

TEST(SettingsControls, SettersRefuseWhatTheControlsRefuse)
{
    SettingsControls c(kComma);
    const struct
    {
        const char *name;
        std::function<void(SettingsControls &)> set;
    } refused[] = {
        {"mp3 mode 4", [](auto &c) { c.setMp3Mode(4); }},
        {"mp3 mode -2", [](auto &c) { c.setMp3Mode(-2); }},
        {"mp3 preset 4", [](auto &c) { c.setMp3Preset(4); }},
        {"cbr 17", [](auto &c) { c.setMp3Cbr(17); }},
        {"abr 127", [](auto &c) { c.setMp3Abr(127); }},
        {"abr 301", [](auto &c) { c.setMp3Abr(301); }},
        {"ogg mode 3", [](auto &c) { c.setOggMode(3); }},
        {"ogg quality -11", [](auto &c) { c.setOggQuality(-11); }},
        {"ogg quality 101", [](auto &c) { c.setOggQuality(101); }},
        {"ogg abr 301", [](auto &c) { c.setOggAbr(301); }},
        {"mpc mode 3", [](auto &c) { c.setMpcMode(3); }},
        {"mpc preset 7", [](auto &c) { c.setMpcPreset(7); }},
        {"mpc quality -1", [](auto &c) { c.setMpcQuality(-1); }},
        {"mpc quality 101", [](auto &c) { c.setMpcQuality(101); }},
        {"tab 0", [](auto &c) { c.setSelectedTab(0); }},
        {"tab 4", [](auto &c) { c.setSelectedTab(4); }},
        {"left 32768", [](auto &c) { c.setWindowLeft(32768); }},
        {"top -32769", [](auto &c) { c.setWindowTop(-32769); }},
        {"width 40000", [](auto &c) { c.setWindowWidth(40000); }},
    };
    for (const auto &r : refused)
        EXPECT_THROW(r.set(c), Failure) << r.name;
    // Nothing refused changed anything.
    EXPECT_EQ(c.settings(), EncoderSettings());
    EXPECT_EQ(c.selectedTab(), 1);

    // Every list takes -1 (no selection), and the slider ends are allowed.
    EXPECT_NO_THROW(c.setMp3Preset(-1));
    EXPECT_NO_THROW(c.setMp3Cbr(-1));
    EXPECT_NO_THROW(c.setMpcPreset(-1));
    EXPECT_NO_THROW(c.setOggQuality(-10));
    EXPECT_NO_THROW(c.setMpcQuality(100));
    EXPECT_NO_THROW(c.setOggAbr(300));
}

TEST(SettingsControls, ModeListsShowTheirModesControls)
{
    SettingsControls c;
    EXPECT_EQ(c.mp3Controls(), (Mp3ModeControls{true, false, false, false, false}));
    c.setMp3Mode(1);
    EXPECT_EQ(c.mp3Controls(), (Mp3ModeControls{false, true, true, false, false}));
    c.setMp3Mode(2);
    EXPECT_EQ(c.mp3Controls(), (Mp3ModeControls{false, false, false, true, false}));
    c.setMp3Mode(3);
    EXPECT_EQ(c.mp3Controls(), (Mp3ModeControls{false, false, false, false, true}));
    c.setMp3Mode(-1);
    EXPECT_EQ(c.mp3Controls(), Mp3ModeControls{});

    c.setOggMode(1);
    EXPECT_EQ(c.oggControls(), (OggModeControls{false, false, true, true, false}));
    c.setOggMode(2);
    EXPECT_EQ(c.oggControls(), (OggModeControls{false, false, false, false, true}));
    c.setMpcMode(1);
    EXPECT_EQ(c.mpcControls(), (MpcModeControls{false, true, true, false}));
    c.setMpcMode(-1);
    EXPECT_EQ(c.mpcControls(), MpcModeControls{});
}

TEST(SettingsControls, ChangeHookRunsForListsAndSlidersOnly)
{
    SettingsControls c(kComma);
    int refreshes = 0;
    QString labelSeenByHook;
    c.setChangeHook([&] {
        ++refreshes;
        labelSeenByHook = c.lblMpc();
    });
    c.setMpcQuality(45);
    EXPECT_EQ(refreshes, 1);
    EXPECT_EQ(labelSeenByHook, QStringLiteral("--quality 4,5")); // the label is written first
    c.setMp3Cbr(5);
    c.setOggMode(1);
    EXPECT_EQ(refreshes, 3);
    c.setMp3CommandLine(QStringLiteral("-V 0"));
    c.setSelectedTab(2);
    c.setWindowLeft(150);
    EXPECT_EQ(refreshes, 3);
    // A refused value refreshes nothing.
    EXPECT_THROW(c.setMpcQuality(200), Failure);
    EXPECT_EQ(refreshes, 3);
}

TEST(SettingsControls, FailingHooksDoNotEndTheSetter)
{
    SettingsControls c;
    c.setChangeHook([] { throw Failure("refresh failed"); });
    c.setApplyRussianHook([] { throw Failure("texts failed"); });
    EXPECT_NO_THROW(c.setOggAbr(200));
    EXPECT_EQ(c.lblAbrOgg(), QStringLiteral("200 kbps"));
    EXPECT_NO_THROW(c.applyRussian());
    EXPECT_EQ(c.languagePanelText(), QStringLiteral("Русский"));
}

TEST(SettingsControls, TabShowsExactlyOneFrame)
{
    SettingsControls c;
    for (int tab = 1; tab <= 3; ++tab) {
        c.setSelectedTab(tab);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(c.frameVisible(i), i == tab - 1) << tab << ' ' << i;
    }
    EXPECT_EQ(c.selectedEncoder(), Encoder::Mpc);
}

TEST(SettingsControls, WindowKeepsItsMinimumSize)
{
    SettingsControls c;
    c.setWindowWidth(0);
    c.setWindowHeight(-15);
    EXPECT_EQ(c.windowWidth(), 12000);
    EXPECT_EQ(c.windowHeight(), 9000);
    c.setWindowWidth(15000);
    c.setWindowLeft(-300);
    EXPECT_EQ(c.windowWidth(), 15000);
    EXPECT_EQ(c.windowLeft(), -300);
}

TEST(ResetToDefaults, RestoresTheThirteenSettingsOnly)
{
    SettingsControls c(kComma);
    c.setMp3Mode(3);
    c.setMp3Preset(0);
    c.setMp3Abr(300);
    c.setMp3Cbr(16);
    c.setMp3CommandLine(QStringLiteral("-V 2"));
    c.setOggMode(2);
    c.setOggQuality(-10);
    c.setOggAbr(128);
    c.setOggCommandLine(QString());
    c.setMpcMode(1);
    c.setMpcPreset(-1);
    c.setMpcQuality(45);
    c.setMpcCommandLine(QStringLiteral("x"));
    c.setSelectedTab(3);
    c.setWindowLeft(1500);
    c.setStartFolder(QStringLiteral("/music/"));
    c.applyRussian();
    int refreshes = 0;
    c.setChangeHook([&] { ++refreshes; });

    EXPECT_TRUE(ResetToDefaults(c));
    EXPECT_EQ(c.settings(), EncoderSettings());
    EXPECT_EQ(refreshes, 10); // six lists and four sliders
    EXPECT_EQ(c.lblAbr(), QStringLiteral("192 kbps"));
    EXPECT_EQ(c.lblAbrOgg(), QStringLiteral("192 kbps"));
    EXPECT_EQ(c.lblPresetOgg(), QStringLiteral("--quality 6"));
    EXPECT_EQ(c.lblMpc(), QStringLiteral("--quality 6"));
    EXPECT_EQ(c.mp3Controls(), (Mp3ModeControls{true, false, false, false, false}));
    EXPECT_EQ(c.oggControls(), (OggModeControls{true, true, false, false, false}));
    EXPECT_EQ(c.mpcControls(), (MpcModeControls{true, false, false, false}));
    EXPECT_EQ(c.selectedTab(), 3);
    EXPECT_EQ(c.windowLeft(), 1500);
    EXPECT_EQ(c.startFolder(), QStringLiteral("/music/"));
    EXPECT_EQ(c.languagePanelText(), QStringLiteral("Русский"));
}
