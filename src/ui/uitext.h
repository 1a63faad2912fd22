#pragma once

#include <array>

#include <QString>

namespace kv {

enum class Language { English, Russian };

// Every text of the interface in one language: the shared message strings the other parts
// compose with, and the texts of the controls. Held exactly, blanks included.
struct UiText
{
    // Shared message strings.
    QString statusInProgress, statusDone, statusBreak, statusReadOnly, statusError;
    QString statusKilled; // a running job whose codec a hard stop killed
    QString finishedLabel, ofLabel;                     // "Finished ", " of "
    QString cpuLabel, freeLabel, filesLabel, sizeLabel; // status panels 1 to 4
    QString mbUnit;                                     // " MB"
    QString durationLabel, bitrateLabel;                // status panels 5 and 6
    QString kbUnit;                                     // " KB"
    QString kbpsUnit;                                   // " kbps  "
    QString driveNotReady, alreadyStarted, readOnlyTarget, readOnlyConfig;

    // Control texts.
    QString stopButton, closeButton;
    std::array<QString, 4> mp3Modes;
    std::array<QString, 3> oggModes;
    std::array<QString, 3> mpcModes;
    QString defaultButton, optionsFrame;
    std::array<QString, 6> jobColumns;  // lstCode
    std::array<QString, 6> listColumns; // lstMain
    std::array<QString, 5> makeButtons; // Make Mp3, Ogg, Mpc, Wav, All
    std::array<QString, 4> showButtons; // Show Wav, Mp3, Ogg, Mpc
    QString languageName;               // status panel 7
    QString help;                       // status panel 8
    std::array<QString, 6> infoLabels;  // lblInfo 0, 1, 5, 6, 7, 8
};

const UiText &englishTexts();
const UiText &russianTexts();

} // namespace kv
