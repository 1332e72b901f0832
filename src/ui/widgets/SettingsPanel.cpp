#include "ui/widgets/SettingsPanel.h"

#include "ui/EditorScale.h"
#include "ui/theme/Surfaces.h"
#include "ui/theme/Themes.h"
#include "ui/theme/Tokens.h"
#include "ui/widgets/CommandButtons.h"

namespace morvane::ui::widgets
{
namespace
{
constexpr int scaleGroup = 7331, tooltipGroup = 7332;
}

SettingsPanel::SettingsPanel()
{
    setName ("SettingsPanel");
    setWantsKeyboardFocus (true);
    for (auto* c : std::initializer_list<juce::Component*> { &titleHeader, &subtitle, &closeButton, &displayHeader, &scaleLabel,
                                                             &tooltipsLabel, &tooltipsOn, &tooltipsOff, &appearanceHeader, &themeLabel,
                                                             &themeBox, &importThemeButton, &themeFolderButton, &presetsHeader,
                                                             &userPresetsLabel, &revealPresetsButton, &aboutHeader, &versionLabel,
                                                             &frameworkLabel })
        addAndMakeVisible (c);

    const std::pair<juce::Label*, const char*> labels[] = {
        { &subtitle, "Editor preferences and local files." }, { &scaleLabel, "Scale" }, { &tooltipsLabel, "Tooltips" },
        { &themeLabel, "Theme" }, { &userPresetsLabel, "User presets" },
        { &versionLabel, "Morvane " JucePlugin_VersionString }, { &frameworkLabel, nullptr },
    };
    for (auto [label, text] : labels)
    {
        label->setText (text != nullptr ? juce::String (text) : juce::SystemStats::getJUCEVersion(), juce::dontSendNotification);
        const bool quiet = label == &subtitle || label == &versionLabel || label == &frameworkLabel;
        styleLabel (*label, quiet ? "text.tertiary" : "text.secondary", 4);
        label->setJustificationType (juce::Justification::topLeft);
    }

    closeButton.setButtonText (juce::String (juce::CharPointer_UTF8 ("\xe2\x9c\x95")));
    styleCloseButton (closeButton, "Close settings", "Close the settings panel.");
    closeButton.onClick = [this] { if (onClose) onClose(); };

    for (int i = 0; i < 4; ++i)
    {
        auto& tab = scaleTabs[(size_t) i];
        const auto percent = juce::String (juce::roundToInt (scaleSteps[i] * 100.0f)) + "%";
        tab.setButtonText (percent);
        tab.setTooltip (percent + " editor scale");
        tab.setTitle (percent + " editor scale");
        tab.setRadioGroupId (scaleGroup, juce::dontSendNotification);
        tab.setClickingTogglesState (false);
        tab.onClick = [this, i] { if (onDisplayScale) onDisplayScale (scaleSteps[i]); };
        addAndMakeVisible (tab);
    }
    tooltipsOn.setTooltip ("Show tooltips");
    tooltipsOff.setTooltip ("Hide tooltips");
    for (auto* tab : { &tooltipsOn, &tooltipsOff })
    {
        tab->setTitle (tab->getTooltip());
        tab->setRadioGroupId (tooltipGroup, juce::dontSendNotification);
        tab->setClickingTogglesState (false);
    }
    tooltipsOn.onClick = [this] { if (onTooltips) onTooltips (true); };
    tooltipsOff.onClick = [this] { if (onTooltips) onTooltips (false); };

    themeBox.setTitle ("Theme");
    themeBox.setTooltip ("Editor colour theme");
    int id = 1;
    for (const auto& theme : builtInThemes())
        themeBox.addItem (theme.displayName, id++);
    themeBox.onChange = [this]
    {
        const int selected = themeBox.getSelectedId();
        const auto& themes = builtInThemes();
        if (onThemeChosen)
            onThemeChosen (selected >= 1 && selected <= (int) themes.size() ? juce::String (themes[(size_t) selected - 1].id) : juce::String());
    };

    importThemeButton.setButtonText ("Import theme");
    styleCommandButton (importThemeButton, "Import JSON theme");
    importThemeButton.onClick = [this] { if (onImportTheme) onImportTheme(); };
    themeFolderButton.setButtonText ("Folder");
    styleCloseButton (themeFolderButton, "Reveal themes folder", "Reveal themes folder");
    themeFolderButton.onClick = [this] { if (onRevealThemes) onRevealThemes(); };
    revealPresetsButton.setButtonText ("Reveal user preset folder");
    styleCommandButton (revealPresetsButton, "Reveal user preset folder");
    revealPresetsButton.setDescription ("Open the folder used for user presets.");
    revealPresetsButton.onClick = [this] { if (onRevealUserPresets) onRevealUserPresets(); };
}

SettingsPanel::~SettingsPanel() = default;

void SettingsPanel::setScale (float scale)
{
    for (int i = 0; i < 4; ++i)
        scaleTabs[(size_t) i].setToggleState (juce::approximatelyEqual (scale, scaleSteps[i]), juce::dontSendNotification);
}

void SettingsPanel::setTooltips (bool on)
{
    tooltipsOn.setToggleState (on, juce::dontSendNotification);
    tooltipsOff.setToggleState (! on, juce::dontSendNotification);
}

void SettingsPanel::setThemeName (const juce::String& name)
{
    const auto id = name == "untitled" ? juce::String ("velvetReactor") : name;
    const auto& themes = builtInThemes();
    for (size_t row = 0; row < themes.size(); ++row)
        if (id == themes[row].id)
        {
            themeBox.setSelectedId ((int) row + 1, juce::dontSendNotification);
            return;
        }
    if (name == "custom")
    {
        themeBox.setSelectedId (0, juce::dontSendNotification);
        themeBox.setText ("Custom", juce::dontSendNotification);
    }
}

bool SettingsPanel::isInterestedInFileDrag (const juce::StringArray& files)
{
    for (const auto& f : files)
        if (f.endsWithIgnoreCase (".json"))
            return true;
    return false;
}

void SettingsPanel::filesDropped (const juce::StringArray& files, int, int)
{
    for (const auto& f : files)
        if (f.endsWithIgnoreCase (".json"))
        {
            if (onThemeFileDropped)
                onThemeFileDropped (juce::File (f));
            return;
        }
}

void SettingsPanel::paint (juce::Graphics& g)
{
    drawSurface (g, getLocalBounds().toFloat(), 3, SurfaceState::rest);
    g.setColour (token (Token::accentModRing));
    g.fillRect (0, 0, 2, getHeight());
    g.setColour (token (Token::borderHair));
    g.fillRect (getWidth() - 1, 0, 1, getHeight());
    g.setColour (token (Token::borderHair).withAlpha (0.55f));
    for (int i = 0; i < dividerCount; ++i)
        g.fillRect (16, dividerY[(size_t) i], getWidth() - 32, 1);
}

void SettingsPanel::resized()
{
    auto area = getLocalBounds().reduced (16);
    dividerCount = 0;

    auto top = area.removeFromTop (44);
    closeButton.setBounds (top.removeFromRight (44));
    titleHeader.setBounds (top);
    subtitle.setBounds (area.removeFromTop (22));
    area.removeFromTop (16);

    auto section = [&] (ostrel::widgets::SectionHeader& header, int bodyHeight)
    {
        dividerY[(size_t) dividerCount++] = area.getY() - 8;
        header.setBounds (area.removeFromTop (22));
        area.removeFromTop (8);
        auto body = area.removeFromTop (juce::jmin (bodyHeight, area.getHeight()));
        area.removeFromTop (16);
        return body;
    };

    auto display = section (displayHeader, 148);
    scaleLabel.setBounds (display.removeFromTop (22));
    auto tabs = display.removeFromTop (44);
    const int tabWidth = (tabs.getWidth() - 12) / 4;
    for (int i = 0; i < 4; ++i)
    {
        scaleTabs[(size_t) i].setBounds (i < 3 ? tabs.removeFromLeft (tabWidth) : tabs);
        if (i < 3)
            tabs.removeFromLeft (4);
    }
    display.removeFromTop (8);
    tooltipsLabel.setBounds (display.removeFromTop (22));
    auto toggles = display.removeFromTop (44);
    tooltipsOn.setBounds (toggles.removeFromLeft ((toggles.getWidth() - 4) / 2));
    toggles.removeFromLeft (4);
    tooltipsOff.setBounds (toggles);

    auto appearance = section (appearanceHeader, 118);
    themeLabel.setBounds (appearance.removeFromTop (22));
    themeBox.setBounds (appearance.removeFromTop (44));
    appearance.removeFromTop (8);
    auto buttons = appearance.removeFromTop (44);
    importThemeButton.setBounds (buttons.removeFromLeft ((2 * buttons.getWidth() - 8) / 3));
    buttons.removeFromLeft (4);
    themeFolderButton.setBounds (buttons);

    auto presetsBody = section (presetsHeader, 66);
    userPresetsLabel.setBounds (presetsBody.removeFromTop (22));
    revealPresetsButton.setBounds (presetsBody.removeFromTop (44));

    dividerY[(size_t) dividerCount++] = area.getY() - 8;
    aboutHeader.setBounds (area.removeFromTop (22));
    area.removeFromTop (8);
    auto about = area.removeFromTop (22);
    versionLabel.setBounds (about.removeFromLeft ((about.getWidth() - 8) / 2));
    about.removeFromLeft (8);
    frameworkLabel.setBounds (about);
}
}
