#pragma once

#include <QString>

#include "ui/statusbar.h"
#include "ui/uitext.h"

namespace kv {

// The texts the window shows in its current language: the table in force and the status bar.
// A default value is the window before its first language is applied: everything empty.
struct InterfaceTexts
{
    UiText text;
    StatusBar status;
};

// Label of status panel 1 to 6 in the given table.
const QString &panelLabel(const UiText &text, int panel);

// Panel 1 to 6 composed from its value: label + value, and for the size panels (2 and 4) the MB
// unit and two blanks, for the bit-rate panel (6) the kbps unit. Callers that want two blanks
// after a plain value (panels 3 and 5) put them in the value.
QString composePanel(const UiText &text, int panel, const QString &value);

// Switch the whole interface to one language. Panels 1 to 6 keep their values; panel 7 shows the
// language's name (the only record of the language in force), panel 8 the help text.
void ApplyEnglish(InterfaceTexts &ui);
void ApplyRussian(InterfaceTexts &ui);

// The language panel 7 shows; anything but the Russian name counts as English.
Language currentLanguage(const InterfaceTexts &ui);

enum class PanelClick { Nothing, LanguageSwitched, OpenHelp };

// A click on status panel `panel` (numbered from 1), decided by the panel's text: the language
// name switches to the other language, the help text asks for the help document.
PanelClick clickStatusPanel(InterfaceTexts &ui, int panel);

} // namespace kv
