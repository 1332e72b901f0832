#pragma once

#include "ui/primitives/canonical/IconButton.h"
#include "ui/primitives/canonical/LabeledChipButton.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace morvane::ui
{
// The band across the top: the preset's name and position, stepping, and the doors to the
// browser, the workflow menu and the settings.
class Header : public juce::Component
{
public:
    Header();
    ~Header() override;

    std::function<void()> onPreviousPreset, onNextPreset, onBrowse, onWorkflow, onSettings;

    void setPresetPosition (int index, int count);
    void setPresetName (const juce::String& name);
    void setPeakDb (float db);
    juce::String getPresetName() const { return presetName; }
    juce::String getPositionText() const;

    void paint (juce::Graphics&) override;
    void resized() override;

private:
    juce::Rectangle<int> nameArea() const;
    juce::Rectangle<int> meterArea() const;

    primitives::canonical::IconButton previousButton, nextButton, workflowButton, settingsButton;
    primitives::canonical::LabeledChipButton browseButton;
    juce::String presetName;
    int presetIndex = 1, presetCount = 1;
    float peakDb = -120.0f;
    int meterPixels = 0;
};
}
