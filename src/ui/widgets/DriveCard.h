#pragma once

#include "ui/widgets/DriveThumbnail.h"
#include "ui/widgets/VoiceFilterPanel.h"
#include "widgets/Widgets.h"

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::widgets
{
// The card of the voice drive: its curve, mode and amount.
class DriveCard : public ostrel::widgets::BypassablePanel
{
public:
    DriveCard (juce::AudioProcessorValueTreeState& state, MorvaneAudioProcessor& processor);
    ~DriveCard() override;

    void resized() override;

    juce::AudioProcessorValueTreeState& state;
    DriveThumbnail thumbnail;
    PanelEnableButton enableButton;
    ostrel::widgets::ChoiceDropdown modeChoice;
    ostrel::widgets::FieldBox modeField { "MODE" };
    ostrel::widgets::Knob amountKnob { ostrel::widgets::KnobSize::Mini }, mixKnob { ostrel::widgets::KnobSize::Mini },
        feedbackKnob { ostrel::widgets::KnobSize::Mini };

private:
    std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment> amountAttachment, mixAttachment, feedbackAttachment;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (DriveCard)
};
}
