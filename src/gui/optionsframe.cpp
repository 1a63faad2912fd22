#include "gui/optionsframe.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTabBar>
#include <QVBoxLayout>

#include "app/maincontroller.h"
#include "common/failure.h"
#include "settings/encodersettings.h"
#include "ui/controldescriptions.h"
#include "ui/interfacetexts.h"

namespace kv {

namespace {

template <typename W>
W *named(W *widget, const QString &name)
{
    widget->setObjectName(name);
    return widget;
}

QSlider *slider(const QString &name, int min, int max, int small, int large)
{
    auto *s = named(new QSlider(Qt::Horizontal), name);
    s->setRange(min, max);
    s->setSingleStep(small);
    s->setPageStep(large);
    return s;
}

void setComboIndex(QComboBox *combo, int index)
{
    const QSignalBlocker block(combo);
    combo->setCurrentIndex(index);
}

void setSliderValue(QSlider *s, int value)
{
    const QSignalBlocker block(s);
    s->setValue(value);
}

void setLineText(QLineEdit *edit, const QString &text)
{
    // Only when it differs, so the cursor of a box being typed in stays where it is.
    if (edit->text() != text)
        edit->setText(text);
}

} // namespace

OptionsFrame::OptionsFrame(MainController &controller, QWidget *parent) : QGroupBox(parent), m_c(controller)
{
    setObjectName(QStringLiteral("frOptions"));
    build();
    connectSettings();
}

void OptionsFrame::build()
{
    auto *layout = new QVBoxLayout(this);
    TabOpt = named(new QTabBar, QStringLiteral("TabOpt"));
    TabOpt->setDrawBase(true);
    TabOpt->setExpanding(false);
    for (const char *tab : {"Mp3", "Ogg", "Mpc"})
        TabOpt->addTab(QLatin1String(tab));
    layout->addWidget(TabOpt);

    for (int i = 0; i < 3; ++i)
        frEncOpt[static_cast<size_t>(i)] = named(new QWidget, QStringLiteral("frEncOpt_%1").arg(i));
    // The mode list on the first row; the inputs of all modes share the second, where only the
    // selected mode's one shows. Each carries a visible caption, which a screen reader names it by.
    auto modeRow = [this](QWidget *frame, QComboBox *mode, std::initializer_list<QWidget *> inputs) {
        auto *grid = new QGridLayout(frame);
        grid->setContentsMargins(0, 0, 0, 0);
        auto caption = [this, grid](QWidget *control, int row) {
            auto *l = named(new QLabel, control->objectName() + QStringLiteral("Caption"));
            l->setBuddy(control);
            grid->addWidget(l, row, 0);
            m_captions.emplace_back(l, control);
        };
        caption(mode, 0);
        grid->addWidget(mode, 0, 1, 1, 2);
        for (QWidget *w : inputs) {
            if (qobject_cast<QLabel *>(w) != nullptr) {
                grid->addWidget(w, 1, 2); // a slider's value
                continue;
            }
            caption(w, 1);
            const bool slider = qobject_cast<QSlider *>(w) != nullptr;
            grid->addWidget(w, 1, 1, 1, slider ? 1 : 2);
        }
        grid->setColumnStretch(1, 1);
        grid->setRowStretch(2, 1);
    };
    auto combo = [](const QString &name, const QStringList &items) {
        auto *c = named(new QComboBox, name);
        c->addItems(items);
        return c;
    };
    auto valueLabel = [](const QString &name) {
        auto *l = named(new QLabel, name);
        // Room for the widest value ("--quality 10", "300 kbps") so the slider does not jump.
        l->setMinimumWidth(l->fontMetrics().horizontalAdvance(QStringLiteral("--quality -0.8")));
        return l;
    };
    cmbMode = combo(QStringLiteral("cmbMode"), QStringList(4, QString()));
    cmbPreset = combo(QStringLiteral("cmbPreset"), mp3PresetTexts());
    sliAbr = slider(QStringLiteral("sliAbr"), SettingsControls::kAbrMin, SettingsControls::kAbrMax, 1, 5);
    lblAbr = valueLabel(QStringLiteral("lblAbr"));
    cmbCbr = combo(QStringLiteral("cmbCbr"), mp3CbrTexts());
    txtCmd = named(new QLineEdit, QStringLiteral("txtCmd"));
    modeRow(frEncOpt[0], cmbMode, {cmbPreset, sliAbr, lblAbr, cmbCbr, txtCmd});

    cmbModeOgg = combo(QStringLiteral("cmbModeOgg"), QStringList(3, QString()));
    sliPresetOgg = slider(QStringLiteral("sliPresetOgg"), SettingsControls::kOggQualityMin,
                          SettingsControls::kOggQualityMax, 2, 10);
    lblPresetOgg = valueLabel(QStringLiteral("lblPresetOgg"));
    sliAbrOgg = slider(QStringLiteral("sliAbrOgg"), SettingsControls::kAbrMin, SettingsControls::kAbrMax, 1, 5);
    lblAbrOgg = valueLabel(QStringLiteral("lblAbrOgg"));
    txtCmdOgg = named(new QLineEdit, QStringLiteral("txtCmdOgg"));
    modeRow(frEncOpt[1], cmbModeOgg, {sliPresetOgg, lblPresetOgg, sliAbrOgg, lblAbrOgg, txtCmdOgg});

    cmbModeMpc = combo(QStringLiteral("cmbModeMpc"), QStringList(3, QString()));
    cmbPresetMpc = combo(QStringLiteral("cmbPresetMpc"), mpcPresetTexts());
    sliMpc = slider(QStringLiteral("sliMpc"), SettingsControls::kMpcQualityMin, SettingsControls::kMpcQualityMax, 2, 10);
    lblMpc = valueLabel(QStringLiteral("lblMpc"));
    txtCmdMpc = named(new QLineEdit, QStringLiteral("txtCmdMpc"));
    modeRow(frEncOpt[2], cmbModeMpc, {cmbPresetMpc, sliMpc, lblMpc, txtCmdMpc});

    for (QWidget *frame : frEncOpt)
        layout->addWidget(frame, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    cmdDefault = named(new QPushButton, QStringLiteral("cmdDefault"));
    buttons->addWidget(cmdDefault);
    layout->addLayout(buttons);
}

void OptionsFrame::connectSettings()
{
    SettingsControls &s = m_c.controls();
    // Each change goes to the settings, which run the statistics; the window then shows the
    // settings again (mode controls, slider labels).
    auto onChange = [this](auto *control, auto signal, auto setter) {
        connect(control, signal, this, [this, setter](int value) {
            guarded([&] { setter(value); });
            showSettings();
        });
    };
    onChange(cmbMode, &QComboBox::activated, [&s](int i) { s.setMp3Mode(i); });
    onChange(cmbPreset, &QComboBox::activated, [&s](int i) { s.setMp3Preset(i); });
    onChange(cmbCbr, &QComboBox::activated, [&s](int i) { s.setMp3Cbr(i); });
    onChange(cmbModeOgg, &QComboBox::activated, [&s](int i) { s.setOggMode(i); });
    onChange(cmbModeMpc, &QComboBox::activated, [&s](int i) { s.setMpcMode(i); });
    onChange(cmbPresetMpc, &QComboBox::activated, [&s](int i) { s.setMpcPreset(i); });
    onChange(sliAbr, &QSlider::valueChanged, [&s](int v) { s.setMp3Abr(v); });
    onChange(sliPresetOgg, &QSlider::valueChanged, [&s](int v) { s.setOggQuality(v); });
    onChange(sliAbrOgg, &QSlider::valueChanged, [&s](int v) { s.setOggAbr(v); });
    onChange(sliMpc, &QSlider::valueChanged, [&s](int v) { s.setMpcQuality(v); });
    // Typing changes nothing else; the text is read when a job is made.
    connect(txtCmd, &QLineEdit::textEdited, this, [&s](const QString &t) { s.setMp3CommandLine(t); });
    connect(txtCmdOgg, &QLineEdit::textEdited, this, [&s](const QString &t) { s.setOggCommandLine(t); });
    connect(txtCmdMpc, &QLineEdit::textEdited, this, [&s](const QString &t) { s.setMpcCommandLine(t); });
    connect(TabOpt, &QTabBar::tabBarClicked, this, [this, &s](int index) {
        if (index >= 0)
            guarded([&] { s.setSelectedTab(index + 1); });
        showSettings();
    });
    connect(TabOpt, &QTabBar::currentChanged, this, [this, &s](int index) {
        if (index >= 0 && s.selectedTab() != index + 1) {
            guarded([&] { s.setSelectedTab(index + 1); });
            showSettings();
        }
    });
    connect(cmdDefault, &QPushButton::clicked, this, [this] {
        m_c.defaultClicked();
        showSettings();
    });
}

void OptionsFrame::showSettings()
{
    const SettingsControls &s = m_c.controls();
    const EncoderSettings &e = s.settings();
    setComboIndex(cmbMode, e.mp3.mode);
    setComboIndex(cmbPreset, e.mp3.presetIndex);
    setSliderValue(sliAbr, e.mp3.abrKbps);
    setComboIndex(cmbCbr, e.mp3.cbrIndex);
    setLineText(txtCmd, e.mp3.commandLine);
    setComboIndex(cmbModeOgg, e.ogg.mode);
    setSliderValue(sliPresetOgg, e.ogg.qualityTenths);
    setSliderValue(sliAbrOgg, e.ogg.abrKbps);
    setLineText(txtCmdOgg, e.ogg.commandLine);
    setComboIndex(cmbModeMpc, e.mpc.mode);
    setComboIndex(cmbPresetMpc, e.mpc.presetIndex);
    setSliderValue(sliMpc, e.mpc.qualityTenths);
    setLineText(txtCmdMpc, e.mpc.commandLine);
    lblAbr->setText(s.lblAbr());
    lblPresetOgg->setText(s.lblPresetOgg());
    lblAbrOgg->setText(s.lblAbrOgg());
    lblMpc->setText(s.lblMpc());

    const Mp3ModeControls &m = s.mp3Controls();
    cmbPreset->setVisible(m.cmbPreset);
    sliAbr->setVisible(m.sliAbr);
    lblAbr->setVisible(m.lblAbr);
    cmbCbr->setVisible(m.cmbCbr);
    txtCmd->setVisible(m.txtCmd);
    const OggModeControls &o = s.oggControls();
    sliPresetOgg->setVisible(o.sliPresetOgg);
    lblPresetOgg->setVisible(o.lblPresetOgg);
    sliAbrOgg->setVisible(o.sliAbrOgg);
    lblAbrOgg->setVisible(o.lblAbrOgg);
    txtCmdOgg->setVisible(o.txtCmdOgg);
    const MpcModeControls &p = s.mpcControls();
    cmbPresetMpc->setVisible(p.cmbPresetMpc);
    sliMpc->setVisible(p.sliMpc);
    lblMpc->setVisible(p.lblMpc);
    txtCmdMpc->setVisible(p.txtCmdMpc);

    {
        const QSignalBlocker block(TabOpt);
        TabOpt->setCurrentIndex(s.selectedTab() - 1);
    }
    for (int i = 0; i < 3; ++i)
        frEncOpt[static_cast<size_t>(i)]->setVisible(s.frameVisible(i));
    for (const auto &[caption, control] : m_captions)
        caption->setVisible(!control->isHidden());
}

void OptionsFrame::applyTexts()
{
    const UiText &t = m_c.text();
    const Language language = currentLanguage(m_c.ui());
    // Mode lists are rewritten in place, entry by entry.
    for (int i = 0; i < 4; ++i)
        cmbMode->setItemText(i, t.mp3Modes.at(static_cast<size_t>(i)));
    for (int i = 0; i < 3; ++i) {
        cmbModeOgg->setItemText(i, t.oggModes.at(static_cast<size_t>(i)));
        cmbModeMpc->setItemText(i, t.mpcModes.at(static_cast<size_t>(i)));
    }
    cmdDefault->setText(t.defaultButton);
    setTitle(t.optionsFrame);
    for (const auto &[caption, control] : m_captions)
        caption->setText(controlCaption(control->objectName(), language));
}

std::vector<QWidget *> OptionsFrame::tabOrder() const
{
    return {TabOpt, cmbMode, cmbPreset, sliAbr, cmbCbr, txtCmd, cmbModeOgg, sliPresetOgg, sliAbrOgg,
            txtCmdOgg, cmbModeMpc, cmbPresetMpc, sliMpc, txtCmdMpc, cmdDefault};
}

} // namespace kv
