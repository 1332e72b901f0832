#pragma once

#include "ui/primitives/canonical/LabeledChipButton.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <functional>

namespace morvane::ui::widgets
{
// The ON/OFF switch of a card header, bound to a bool parameter.
class PanelEnableButton : public primitives::canonical::LabeledChipButton,
                          private juce::AudioProcessorValueTreeState::Listener,
                          private juce::AsyncUpdater
{
public:
    PanelEnableButton (juce::AudioProcessorValueTreeState& state, const juce::String& parameterId,
                       const juce::String& accessibleTitle, const juce::String& helpText);
    ~PanelEnableButton() override;

    std::function<void (bool)> onToggled;
    // Follows the parameter now; a parameter change does it asynchronously.
    void syncFromParameter();

    void paintButton (juce::Graphics&, bool over, bool down) override;

private:
    // Listeners may run on any thread; the posted update allocates nothing.
    void parameterChanged (const juce::String&, float) override;
    void handleAsyncUpdate() override { syncFromParameter(); }
    void clicked() override;

    juce::AudioProcessorValueTreeState& state;
    juce::String parameterId;
    juce::AudioParameterBool* parameter = nullptr;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (PanelEnableButton)
};

}
