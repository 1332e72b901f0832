#pragma once

#include "presets/Catalogue.h"
#include "ui/EditorScale.h"
#include "ui/Header.h"
#include "ui/theme/LookAndFeel.h"
#include "ui/views/BrowseView.h"
#include "ui/views/SingleCanvasView.h"
#include "ui/widgets/FxSlideOut.h"
#include "ui/widgets/MatrixSlideOut.h"
#include "ui/widgets/PlayOverlay.h"
#include "ui/widgets/SettingsPanel.h"
#include "ui/widgets/StatusFooter.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <memory>
#include <random>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui
{
// The whole window: one 1332 x 828 design canvas scaled as a single picture in four steps, with a
// header, a footer and six mutually exclusive views. Children never talk to one another; every
// callback is answered here.
class Editor : public juce::AudioProcessorEditor,
               public juce::DragAndDropContainer,
               private juce::Timer
{
public:
    enum View { canvasViewCode = 0, browserView = 1, settingsView = 2, matrixView = 3, playView = 4, fxView = 5 };

    // The settings live in the user's Morvane.settings; an empty file means none are read or kept.
    explicit Editor (MorvaneAudioProcessor& processor, const juce::File& settingsFile = defaultSettingsFile());
    ~Editor() override;

    static juce::File defaultSettingsFile();
    static bool debugGridFromEnvironment();

    void paint (juce::Graphics&) override;
    void paintOverChildren (juce::Graphics&) override;
    bool keyPressed (const juce::KeyPress&) override;
    void resized() override;

    void setDisplayScale (float scale);
    void setShowTooltips (bool show);
    void setActiveView (int view);
    void showWorkflowMenu();
    juce::PopupMenu buildWorkflowMenu();

    // Presets.
    void loadFactoryPreset (int position);
    void saveCurrentPreset (bool askForName);
    void loadPresetFromFile();
    void revealUserPresetFolder();
    void refreshPresetDisplay();
    void presetChosenInBrowser (const juce::String& xml);

    // Themes.
    void chooseTheme (const juce::String& id);
    bool importThemeFile (const juce::File& file);
    void chooseThemeJson();
    void revealThemesFolder();
    void persistTheme (const juce::String& name, const juce::String& json);

    // Patch tools.
    void captureSlot (int slot);
    void recallSlot (int slot);
    void morphSlots (float t);
    void randomisePatch (const juce::String& scope);
    // One edit back or forth; the menu entries and Ctrl+Z, Ctrl+Shift+Z, Ctrl+Y.
    void undoEdit();
    void redoEdit();
    void applyMacro (int index, float value, widgets::StatusFooter::MacroGesture gesture);

    int getActiveView() const noexcept { return activeView; }
    float getDisplayScale() const noexcept { return displayScale; }
    bool getShowTooltips() const noexcept { return showTooltips; }
    bool isDebugGridOn() const noexcept { return debugGrid; }
    const juce::String& getThemeName() const noexcept { return themeName; }
    int getCurrentPresetIndex() const noexcept { return currentPresetIndex; }
    const presets::Catalogue& getCatalogue() const noexcept { return catalogue; }
    juce::Component& getCanvas() noexcept { return canvas; }
    Header& getHeader() noexcept { return header; }
    widgets::StatusFooter& getFooter() noexcept { return footer; }
    views::SingleCanvasView* getCanvasView() noexcept { return canvasView.get(); }
    views::BrowseView& getBrowseView() noexcept { return *browseView; }
    juce::Component& getViewPanel (int view);
    juce::PropertiesFile* getSettings() noexcept { return settings.get(); }

    // One pass of the 20 Hz timer, for tools that draw the editor without a message loop.
    void refreshReadouts() { timerCallback(); }

private:
    void timerCallback() override;
    void restoreTheme();
    void afterThemeChange();
    void layoutCanvas();
    void toggleView (int view);
    juce::Rectangle<int> viewBounds (int view) const;

    MorvaneAudioProcessor& processor;
    LookAndFeel lookAndFeel;
    presets::Catalogue catalogue;
    std::unique_ptr<juce::TooltipWindow> tooltipWindow;
    juce::Component canvas;
    Header header;
    widgets::StatusFooter footer;
    widgets::SettingsPanel settingsPanel;
    widgets::MatrixSlideOut matrixSlideOut { processor };
    widgets::PlayOverlay playOverlay { processor };
    widgets::FxSlideOut fxSlideOut;
    std::unique_ptr<views::SingleCanvasView> canvasView;
    std::unique_ptr<views::BrowseView> browseView;
    int activeView = 0;
    int currentPresetIndex = 1;
    bool lastDirty = false;
    float displayScale = 1.0f;
    bool showTooltips = true;
    bool debugGrid = false;
    juce::String themeName { "dark" };
    juce::ValueTree compareA, compareB;
    std::mt19937 randomEngine;
    std::unique_ptr<juce::PropertiesFile> settings;
    SnapScaleConstrainer constrainer;
    std::shared_ptr<juce::FileChooser> chooser;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (Editor)
};
}
