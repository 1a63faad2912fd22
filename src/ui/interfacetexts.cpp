#include "ui/interfacetexts.h"

namespace kv {

namespace {

const QString &twoBlanks()
{
    static const QString blanks = QStringLiteral("  ");
    return blanks;
}

// The value of a panel composed with the old table: the old label cut off the front, and for the
// size and bit-rate panels the unit with its blanks cut off the end. The cuts count characters
// and do not check what they remove, so a panel must have been composed with the old table.
QString panelValue(const UiText &old, int panel, const QString &shown)
{
    QString value = shown.mid(panelLabel(old, panel).size());
    if ((panel == 2 || panel == 4) && value.size() > 5)
        value.chop(5);
    else if (panel == 6 && value.size() > 5)
        value.chop(7);
    return value;
}

void applyLanguage(InterfaceTexts &ui, const UiText &next)
{
    std::array<QString, 6> values;
    for (int panel = 1; panel <= 6; ++panel)
        values.at(static_cast<size_t>(panel - 1)) = panelValue(ui.text, panel, ui.status.panel(panel));
    ui.text = next;
    for (int panel = 1; panel <= 6; ++panel)
        ui.status.panel(panel) = composePanel(ui.text, panel, values.at(static_cast<size_t>(panel - 1)));
    ui.status.panel(7) = ui.text.languageName;
    ui.status.panel(8) = ui.text.help;
}

} // namespace

const QString &panelLabel(const UiText &text, int panel)
{
    switch (panel) {
    case 1: return text.cpuLabel;
    case 2: return text.freeLabel;
    case 3: return text.filesLabel;
    case 4: return text.sizeLabel;
    case 5: return text.durationLabel;
    case 6: return text.bitrateLabel;
    default: break;
    }
    static const QString none;
    return none;
}

QString composePanel(const UiText &text, int panel, const QString &value)
{
    if (panel == 2 || panel == 4)
        return panelLabel(text, panel) + value + text.mbUnit + twoBlanks();
    if (panel == 6)
        return text.bitrateLabel + value + text.kbpsUnit;
    return panelLabel(text, panel) + value;
}

void ApplyEnglish(InterfaceTexts &ui)
{
    applyLanguage(ui, englishTexts());
}

void ApplyRussian(InterfaceTexts &ui)
{
    applyLanguage(ui, russianTexts());
}

Language currentLanguage(const InterfaceTexts &ui)
{
    return ui.status.panel(7) == russianTexts().languageName ? Language::Russian : Language::English;
}

PanelClick clickStatusPanel(InterfaceTexts &ui, int panel)
{
    if (panel < 1 || panel > static_cast<int>(ui.status.panels.size()))
        return PanelClick::Nothing;
    const QString &shown = ui.status.panel(panel);
    // The same (Russian) help document opens in both languages.
    if (shown == englishTexts().help || shown == russianTexts().help)
        return PanelClick::OpenHelp;
    if (shown == englishTexts().languageName) {
        ApplyRussian(ui);
        return PanelClick::LanguageSwitched;
    }
    if (shown == russianTexts().languageName) {
        ApplyEnglish(ui);
        return PanelClick::LanguageSwitched;
    }
    return PanelClick::Nothing;
}

} // namespace kv
