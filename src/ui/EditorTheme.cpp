#include "ui/Editor.h"

#include "audio/SafeXml.h"
#include "presets/PresetLibrary.h"
#include "ui/theme/Themes.h"

namespace morvane::ui
{
void Editor::afterThemeChange()
{
    publishWidgetTheme();
    recolourComponents (*this);
    repaint();
}

void Editor::restoreTheme()
{
    if (applyThemeById (themeName))
    {
        if (themeName == "untitled")
            themeName = "velvetReactor";
    }
    else
    {
        bool custom = false;
        if (themeName == "custom" && settings != nullptr)
            custom = applyThemeJson (juce::JSON::parse (settings->getValue ("themeJson")));
        if (! custom)
        {
            applyThemeEntry (darkTheme());
            themeName = "dark";
        }
    }
    afterThemeChange();
}

void Editor::chooseTheme (const juce::String& id)
{
    auto name = id;
    if (! applyThemeById (name))
    {
        applyThemeEntry (darkTheme());
        name = "dark";
    }
    else if (name == "untitled")
    {
        name = "velvetReactor";
    }
    publishWidgetTheme();
    persistTheme (name, {});
    recolourComponents (*this);
    repaint();
}

bool Editor::importThemeFile (const juce::File& file)
{
    const auto read = readWellFormedTextFile (file);
    if (! read)
        return false;
    const auto text = *read;
    if (! applyThemeJson (juce::JSON::parse (text)))
        return false;
    publishWidgetTheme();
    persistTheme ("custom", text);
    recolourComponents (*this);
    repaint();
    return true;
}

namespace
{
juce::File ensureThemesFolder()
{
    const auto folder = presets::themesFolder();
    if (! folder.isDirectory() && folder.createDirectory())
        folder.getChildFile ("custom-theme-template.json").replaceWithText (customThemeTemplate(), false, false, "\r\n");
    return folder;
}
}

void Editor::chooseThemeJson()
{
    const auto folder = ensureThemesFolder();
    chooser = std::make_shared<juce::FileChooser> ("Import Morvane theme", folder, "*.json", true);
    juce::Component::SafePointer<Editor> safe (this);
    auto keep = chooser;
    chooser->launchAsync (juce::FileBrowserComponent::openMode | juce::FileBrowserComponent::canSelectFiles,
                          [safe, keep] (const juce::FileChooser& fc)
    {
        if (safe != nullptr && fc.getResult() != juce::File())
            safe->importThemeFile (fc.getResult());
    });
}

void Editor::revealThemesFolder() { ensureThemesFolder().startAsProcess(); }

void Editor::persistTheme (const juce::String& name, const juce::String& json)
{
    themeName = name;
    if (settings != nullptr)
    {
        settings->setValue ("themeName", name);
        if (json.isNotEmpty())
            settings->setValue ("themeJson", json);
        settings->saveIfNeeded();
    }
    settingsPanel.setThemeName (name);
}
}
