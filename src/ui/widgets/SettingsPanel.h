#pragma once

#include "widgets/SectionHeader.h"
#include "widgets/Tab.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <functional>

namespace morvane::ui::widgets
{
// The editor's preferences: display scale, tooltips, theme, the local folders and the versions.
// It owns no setting: every control calls back, and the editor answers through the setters.
class SettingsPanel : public juce::Component,
                      public juce::FileDragAndDropTarget
{
public:
    SettingsPanel();
    ~SettingsPanel() override;

    std::function<void (float)> onDisplayScale;
    std::function<void (bool)> onTooltips;
    std::function<void (const juce::String&)> onThemeChosen;
    std::function<void()> onImportTheme, onRevealThemes, onRevealUserPresets, onClose;
    std::function<void (const juce::File&)> onThemeFileDropped;

    void setScale (float scale);
    void setTooltips (bool on);
    void setThemeName (const juce::String& name);

    void paint (juce::Graphics&) override;
    void resized() override;
    bool isInterestedInFileDrag (const juce::StringArray& files) override;
    void filesDropped (const juce::StringArray& files, int x, int y) override;

    ostrel::widgets::SectionHeader titleHeader { "SETTINGS" };
    juce::Label subtitle;
    juce::TextButton closeButton;
    ostrel::widgets::SectionHeader displayHeader { "DISPLAY" };
    juce::Label scaleLabel, tooltipsLabel;
    std::array<ostrel::widgets::Tab, 4> scaleTabs;
    ostrel::widgets::Tab tooltipsOn { "On" }, tooltipsOff { "Off" };
    ostrel::widgets::SectionHeader appearanceHeader { "APPEARANCE" };
    juce::Label themeLabel;
    juce::ComboBox themeBox { "Theme" };
    juce::TextButton importThemeButton, themeFolderButton;
    ostrel::widgets::SectionHeader presetsHeader { "PRESETS" };
    juce::Label userPresetsLabel;
    juce::TextButton revealPresetsButton;
    ostrel::widgets::SectionHeader aboutHeader { "ABOUT" };
    juce::Label versionLabel, frameworkLabel;

private:
    std::array<int, 5> dividerY {};
    int dividerCount = 0;
};
}
