#pragma once

#include "ui/PlaceholderPanel.h"

#include <functional>

namespace morvane::ui::widgets
{
// Panels that lie over the canvas. Until each is built it is a titled plate that closes.
class SettingsPanel : public PlaceholderPanel
{
public:
    SettingsPanel() : PlaceholderPanel ("Settings", 3, true) {}

    std::function<void (float)> onDisplayScale;
    std::function<void (bool)> onTooltips;
    std::function<void (const juce::String&)> onThemeChosen;
    std::function<void()> onImportTheme, onRevealThemes, onRevealUserPresets;
    std::function<void (const juce::File&)> onThemeFileDropped;

    void setDisplayScale (float s) { displayScale = s; }
    void setShowTooltips (bool b) { showTooltips = b; }
    void setThemeName (const juce::String& name) { themeName = name; }
    float getDisplayScale() const noexcept { return displayScale; }
    bool getShowTooltips() const noexcept { return showTooltips; }
    const juce::String& getThemeName() const noexcept { return themeName; }

private:
    float displayScale = 1.0f;
    bool showTooltips = true;
    juce::String themeName { "dark" };
};

class MatrixSlideOut : public PlaceholderPanel
{
public:
    MatrixSlideOut() : PlaceholderPanel ("Mod matrix", 3, true) {}
};

class PlayOverlay : public PlaceholderPanel
{
public:
    PlayOverlay() : PlaceholderPanel ("Play", 3, true) {}
};
}
