#pragma once

#include "ui/primitives/canonical/LabeledChipButton.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <functional>

namespace morvane::ui::widgets
{
// The ON/OFF chip in a card header, bound to one bool parameter. A click is one gesture; a change
// from anywhere reaches the toggle state and onToggled on the message thread.
class PanelEnableButton : public primitives::canonical::LabeledChipButton,
                          private juce::AudioProcessorValueTreeState::Listener
{
public:
    PanelEnableButton (juce::AudioProcessorValueTreeState& state, const juce::String& parameterId,
                       const juce::String& accessibleTitle, const juce::String& helpText);
    ~PanelEnableButton() override;

    std::function<void (bool)> onToggled;

protected:
    void paintButton (juce::Graphics&, bool over, bool down) override;

private:
    void parameterChanged (const juce::String& parameterId, float newValue) override;
    void writeParameter (bool on);
    void applyValue (float value);

    juce::AudioProcessorValueTreeState& state;
    juce::String parameterId;
    juce::AudioParameterBool* parameter = nullptr;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (PanelEnableButton)
};
}
