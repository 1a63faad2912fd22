#pragma once

#include <array>
#include <utility>
#include <vector>

#include <QGroupBox>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QTabBar;

namespace kv {

class MainController;

// frOptions: the tab strip of the three encoders, each encoder's mode list and the inputs of its
// modes, and the Default button. Changes go to the controller's settings, which are shown again.
class OptionsFrame : public QGroupBox
{
    Q_OBJECT

public:
    explicit OptionsFrame(MainController &controller, QWidget *parent = nullptr);

    // The settings as they stand, shown again: values, slider labels, the mode's controls.
    void showSettings();
    // Mode lists, captions, the frame's title and the Default button in the interface language.
    void applyTexts();
    // The controls in the order Tab visits them, the tab strip first.
    std::vector<QWidget *> tabOrder() const;

private:
    void build();
    void connectSettings();

    MainController &m_c;
    std::vector<std::pair<QLabel *, QWidget *>> m_captions; // a control's caption and the control
    QTabBar *TabOpt = nullptr;
    std::array<QWidget *, 3> frEncOpt{};
    QComboBox *cmbMode = nullptr, *cmbPreset = nullptr, *cmbCbr = nullptr;
    QSlider *sliAbr = nullptr;
    QLabel *lblAbr = nullptr;
    QLineEdit *txtCmd = nullptr;
    QComboBox *cmbModeOgg = nullptr;
    QSlider *sliPresetOgg = nullptr, *sliAbrOgg = nullptr;
    QLabel *lblPresetOgg = nullptr, *lblAbrOgg = nullptr;
    QLineEdit *txtCmdOgg = nullptr;
    QComboBox *cmbModeMpc = nullptr, *cmbPresetMpc = nullptr;
    QSlider *sliMpc = nullptr;
    QLabel *lblMpc = nullptr;
    QLineEdit *txtCmdMpc = nullptr;
    QPushButton *cmdDefault = nullptr;
};

} // namespace kv
