#pragma once

#include "ui/widgets/SourceChip.h"
#include "widgets/Widgets.h"

#include <juce_audio_processors/juce_audio_processors.h>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::widgets
{
// The synced LFO's divisions: name and length in beats, index 0 to 9 (held to that).
juce::String lfoDivisionName (int index);
float lfoDivisionBeats (int index);
// The division that a normalised rate picks in sync mode.
int lfoDivisionIndex (float normalisedRate) noexcept;
// One point of the preview's wave, p in cycles; -1 to 1.
float lfoPreviewValue (int shape, float p) noexcept;

// A moving picture of the LFO from its parameters alone; a drag across sets rate, up and down depth.
class LfoPreviewStrip : public juce::Component, private juce::Timer
{
public:
    explicit LfoPreviewStrip (juce::AudioProcessorValueTreeState& state);
    ~LfoPreviewStrip() override;

    void mouseDown (const juce::MouseEvent&) override;
    void mouseDrag (const juce::MouseEvent&) override;
    void mouseUp (const juce::MouseEvent&) override;
    void paint (juce::Graphics&) override;

    // Cycles per second of the picture now; 0 when it stands still.
    float cyclesPerSecond() const;
    float getAnimationPhase() const noexcept { return animationPhase; }
    void advance(); // one timer tick

private:
    void timerCallback() override { advance(); }

    juce::AudioProcessorValueTreeState& state;
    juce::RangedAudioParameter *rate, *depth, *shape, *sync, *syncBpm;
    float animationPhase = 0.0f;
    bool dragging = false;
    juce::Point<float> pressPosition;
    float pressRate = 0.0f, pressDepth = 0.0f;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (LfoPreviewStrip)
};

// The card of the one LFO: its source chip, preview, shape and mode, rate and depth.
class LfoCard : public ostrel::widgets::SectionFrame
{
public:
    LfoCard (juce::AudioProcessorValueTreeState& state, MorvaneAudioProcessor& processor);
    ~LfoCard() override;

    void resized() override;

    juce::AudioProcessorValueTreeState& state;
    ostrel::widgets::SectionTitle title { "LFO" };
    SourceChip sourceChip { "lfo1", "LFO" };
    LfoPreviewStrip preview;
    ostrel::widgets::ChoiceDropdown shapeChoice, modeChoice;
    ostrel::widgets::FieldBox shapeField { "SHAPE" };
    ostrel::widgets::Knob rateKnob { ostrel::widgets::KnobSize::Mini }, depthKnob { ostrel::widgets::KnobSize::Mini },
        phaseKnob { ostrel::widgets::KnobSize::Mini, true };
    ostrel::widgets::KnobRow knobRow { ostrel::widgets::KnobSize::Mini };
    std::unique_ptr<ostrel::widgets::SegmentedControl> retrigControl;
    ostrel::widgets::SegmentField retrigField { "START", nullptr };

private:
    std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment> rateAttachment, depthAttachment, phaseAttachment;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (LfoCard)
};
}
