#pragma once

#include "ui/widgets/CardFaces.h"
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

    // The second face: how the stage sits in the voice, its gain staging, and the feedback loop.
    FaceToggle faceToggle;
    ostrel::widgets::Knob makeupKnob { ostrel::widgets::KnobSize::Mini }, velocityKnob { ostrel::widgets::KnobSize::Mini },
        toneKnob { ostrel::widgets::KnobSize::Mini };
    PanelEnableButton autoMakeupButton;
    ostrel::widgets::FieldBox autoMakeupField { "AUTO GAIN" };
    ostrel::widgets::ChoiceDropdown positionChoice, feedbackPositionChoice;
    ostrel::widgets::FieldBox positionField { "POSITION" }, feedbackPositionField { "FDBK AT" };

    void showFace (bool second);
    // Tone and position of the feedback do nothing while there is no feedback.
    void updateFeedbackDimming();

private:
    struct FeedbackListener : juce::AudioProcessorValueTreeState::Listener, juce::AsyncUpdater
    {
        explicit FeedbackListener (DriveCard& c) : card (c) {}
        void parameterChanged (const juce::String&, float) override { triggerAsyncUpdate(); }
        void handleAsyncUpdate() override { card.updateFeedbackDimming(); }
        DriveCard& card;
    };

    std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment> amountAttachment, mixAttachment, feedbackAttachment,
        makeupAttachment, velocityAttachment, toneAttachment;
    FeedbackListener feedbackListener { *this };

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (DriveCard)
};
}
