#pragma once

#include <QString>

#include "ui/uitext.h"

namespace kv {

// What a screen reader says of a control: its name and a short description of what it does.
struct ControlDescription
{
    QString name;
    QString description;
};

// The description of the control with the given object name in one language; empty for a
// control that speaks for itself (buttons and labels whose text is their name).
ControlDescription describeControl(const QString &objectName, Language language);

// The visible caption beside an option control, with its mnemonic ("&Mode:"); empty for a
// control without one. A screen reader names the control from it, as it names a combo box by
// its label rather than by its current entry.
QString controlCaption(const QString &objectName, Language language);

} // namespace kv
