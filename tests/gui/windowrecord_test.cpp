#include <gtest/gtest.h>

#include "support/qtprinters.h"
#include "windowrecord.h"

using namespace kv;
using namespace kv::test;
using namespace Qt::StringLiterals;

namespace {

// The window with processes, as the program starts (the player is ready too), with a free space
// that stays the same, over a music folder of two MP3 files and two WAV files of 2 GB (sparse),
// which make a step of one kbps show in a forecast.
struct RecordRig : ProcessRig
{
    QString music = dir.path() + u"/music/"_s;

    RecordRig()
    {
        folders.clusters = 123456;
        folders.shrink = 0;
        installCodecs(program, "#!/bin/sh\n");
        QDir().mkpath(music + u"older"_s);
        for (const char *name : {"vbr.mp3", "mono.mp3"})
            QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/mp3/") + QLatin1String(name), music + QLatin1String(name));
        for (const char *name : {"a.wav", "b.wav"}) {
            QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav"), music + QLatin1String(name));
            QFile(music + QLatin1String(name)).resize(std::int64_t{2} << 30);
        }
    }
};

} // namespace

// What each control shows and tells in each language and options mode; then every value of every
// encoder option, taken as a user takes it (a list stepped by its arrow key, a slider dragged),
// with the value it shows and the three forecasts for the WAV files.
TEST(WindowRecord, WhatEachControlShowsAndEveryOptionValueWithTheForecastsItGives)
{
    RecordRig rig;
    ASSERT_EQ(rig.open(rig.environment(), rig.music), StartEnd::Running);
    // Wide enough that no toolbar caption breaks in two, whatever the font.
    rig.window->resize(1600, 900);
    rig.window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(rig.window.get()));
    rig.toolbar(ShowMp3)->trigger();
    rig.toolbar(MakeAll)->trigger();
    QApplication::processEvents();

    // Switched there and back first: the English record then also holds that every text comes back.
    for (int i = 0; i < 2; ++i)
        rig.w<QToolButton>("stbMain_7")->click();
    // The way a keyboard user walks with Tab from one control until another takes the focus.
    auto tabWalk = [&](const char *from, const char *until) {
        QStringList walk;
        rig.w(from)->setFocus();
        for (QWidget *focus = QApplication::focusWidget(); walk.isEmpty() || (focus != rig.w(until) && walk.size() < 40);
             focus = QApplication::focusWidget()) {
            walk.append(focus->objectName().isEmpty() ? QLatin1String(focus->metaObject()->className()) : focus->objectName());
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        return u"Tab: "_s + walk.join(u' ');
    };
    for (const char *language : {"english", "russian"}) {
        QStringList whole;
        describeWidgets(rig.window.get(), whole);
        whole.append(tabWalk("drvMain", "drvMain")); // round to the drive list again
        expectAsRecorded(u"window-"_s + QLatin1String(language), whole, rig.dir.path());
        // Each encoder's options in each of its modes.
        QStringList options;
        for (int tab = 0; tab < 3; ++tab) {
            rig.tab(tab);
            const char *mode = std::array{"cmbMode", "cmbModeOgg", "cmbModeMpc"}[static_cast<size_t>(tab)];
            for (int i = 0; i < rig.w<QComboBox>(mode)->count(); ++i) {
                rig.choose(mode, i);
                describeWidgets(rig.w(u"frEncOpt_%1"_s.arg(tab)), options);
                options.append(tabWalk("TabOpt", "cmdDefault"));
            }
            rig.choose(mode, 0);
        }
        rig.tab(0);
        expectAsRecorded(u"window-"_s + QLatin1String(language) + u"-options"_s, options, rig.dir.path());
        rig.w<QToolButton>("stbMain_7")->click();
    }

    rig.toolbar(ShowWav)->trigger();
    QStringList seen;
    auto note = [&](const QString &value) {
        QStringList line{value};
        for (const char *forecast : {"lblInfo_9", "lblInfo_10", "lblInfo_11"})
            line.append(rig.w<QLabel>(forecast)->text());
        seen.append(line.join(u" | "_s));
    };
    const struct { int tab; const char *mode; int index; const char *control, *shows; } options[] = {
        {0, "cmbMode", 0, "cmbPreset", nullptr}, {0, "cmbMode", 1, "sliAbr", "lblAbr"},
        {0, "cmbMode", 2, "cmbCbr", nullptr},    {0, "cmbMode", 3, "txtCmd", nullptr},
        {1, "cmbModeOgg", 0, "sliPresetOgg", "lblPresetOgg"}, {1, "cmbModeOgg", 1, "sliAbrOgg", "lblAbrOgg"},
        {1, "cmbModeOgg", 2, "txtCmdOgg", nullptr},           {2, "cmbModeMpc", 0, "cmbPresetMpc", nullptr},
        {2, "cmbModeMpc", 1, "sliMpc", "lblMpc"},             {2, "cmbModeMpc", 2, "txtCmdMpc", nullptr},
    };
    for (const auto &o : options) {
        rig.tab(o.tab);
        rig.choose(o.mode, o.index);
        seen.append(QLatin1String(o.control));
        if (auto *slider = qobject_cast<QSlider *>(rig.w(o.control))) {
            for (int v = slider->minimum(); v <= slider->maximum(); ++v) {
                slider->setSliderDown(true);
                slider->setSliderPosition(v);
                slider->setSliderDown(false);
                note(QString::number(v) + u' ' + rig.w<QLabel>(o.shows)->text());
            }
        } else if (auto *list = qobject_cast<QComboBox *>(rig.w(o.control))) {
            list->setFocus();
            rig.choose(o.control, 0);
            for (int i = 0; i < list->count(); ++i, QTest::keyClick(list, Qt::Key_Down))
                note(list->currentText());
        } else {
            note(rig.w<QLineEdit>(o.control)->text());
        }
    }
    expectAsRecorded(u"window-every-option"_s, seen, rig.dir.path());
}
