#pragma once

#include "ui/widgets/PanelEnableButton.h"

#include "widgets/ChoiceDropdown.h"
#include "widgets/FieldBox.h"
#include "widgets/Knob.h"
#include "widgets/SectionFrame.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <memory>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::widgets
{
// The six effect panels: an on switch in the header, an optional row of fields and one strip of
// Mini knobs, all bound to parameters. A bypassed card dims its controls but leaves them usable.
using SliderAttachmentPtr = std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment>;

class MultibandDriveCard : public ostrel::widgets::BypassablePanel
{
public:
    MultibandDriveCard (juce::AudioProcessorValueTreeState& state, MorvaneAudioProcessor& processor);
    ~MultibandDriveCard() override;
    void resized() override;

    juce::AudioProcessorValueTreeState& state;
    PanelEnableButton enableButton;
    ostrel::widgets::ChoiceDropdown lowModeChoice, midModeChoice, highModeChoice;
    ostrel::widgets::FieldBox lowModeField, midModeField, highModeField;
    ostrel::widgets::Knob lowKnob, midKnob, highKnob, lowCrossKnob, highCrossKnob, mixKnob;
    SliderAttachmentPtr lowAttachment, midAttachment, highAttachment, lowCrossAttachment, highCrossAttachment,
        mixAttachment;
};

class ModFxCard : public ostrel::widgets::BypassablePanel
{
public:
    ModFxCard (juce::AudioProcessorValueTreeState& state, MorvaneAudioProcessor& processor);
    ~ModFxCard() override;
    void resized() override;

    juce::AudioProcessorValueTreeState& state;
    PanelEnableButton enableButton;
    ostrel::widgets::ChoiceDropdown modeChoice;
    ostrel::widgets::FieldBox modeField;
    ostrel::widgets::Knob rateKnob, depthKnob, feedbackKnob, mixKnob;
    SliderAttachmentPtr rateAttachment, depthAttachment, feedbackAttachment, mixAttachment;
};

class PostEqCard : public ostrel::widgets::BypassablePanel
{
public:
    PostEqCard (juce::AudioProcessorValueTreeState& state, MorvaneAudioProcessor& processor);
    ~PostEqCard() override;
    void resized() override;

    juce::AudioProcessorValueTreeState& state;
    PanelEnableButton enableButton;
    ostrel::widgets::Knob tiltKnob, notchKnob, depthKnob;
    SliderAttachmentPtr tiltAttachment, notchAttachment, depthAttachment;
};

class DelayCard : public ostrel::widgets::BypassablePanel
{
public:
    DelayCard (juce::AudioProcessorValueTreeState& state, MorvaneAudioProcessor& processor);
    ~DelayCard() override;
    void resized() override;

    juce::AudioProcessorValueTreeState& state;
    PanelEnableButton enableButton;
    ostrel::widgets::ChoiceDropdown modeChoice;
    ostrel::widgets::FieldBox modeField;
    ostrel::widgets::Knob timeKnob, feedbackKnob, toneKnob, mixKnob;
    SliderAttachmentPtr timeAttachment, feedbackAttachment, toneAttachment, mixAttachment;
};

class ReverbCard : public ostrel::widgets::BypassablePanel
{
public:
    ReverbCard (juce::AudioProcessorValueTreeState& state, MorvaneAudioProcessor& processor);
    ~ReverbCard() override;
    void resized() override;

    juce::AudioProcessorValueTreeState& state;
    PanelEnableButton enableButton;
    ostrel::widgets::Knob predelayKnob, bandwidthKnob, decayKnob, dampingKnob, mixKnob;
    SliderAttachmentPtr predelayAttachment, bandwidthAttachment, decayAttachment, dampingAttachment, mixAttachment;
};

class BitCrushCard : public ostrel::widgets::BypassablePanel
{
public:
    BitCrushCard (juce::AudioProcessorValueTreeState& state, MorvaneAudioProcessor& processor);
    ~BitCrushCard() override;
    void resized() override;

    juce::AudioProcessorValueTreeState& state;
    PanelEnableButton enableButton;
    ostrel::widgets::ChoiceDropdown ditherChoice;
    ostrel::widgets::FieldBox ditherField;
    ostrel::widgets::Knob bitsKnob, rateKnob, jitterKnob, mixKnob;
    SliderAttachmentPtr bitsAttachment, rateAttachment, jitterAttachment, mixAttachment;
};
}
