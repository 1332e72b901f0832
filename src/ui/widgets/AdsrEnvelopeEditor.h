#pragma once

#include "widgets/Widgets.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <array>

namespace morvane::ui::widgets
{
// An envelope as a curve with draggable handles above four knobs; either part can be shown alone.
// The curve lays its segments out by normalised value, so a drag writes normalised values directly.
class AdsrRow : public juce::Component, private juce::Timer
{
public:
    AdsrRow (juce::AudioProcessorValueTreeState& state, const juce::StringArray& parameterIds);
    ~AdsrRow() override;

    void setLabels (const juce::StringArray& newLabels);
    void setCurveHeightRange (int minHeight, int maxHeight);
    void setCurveOnly (bool on);
    void setCurveVisible (bool on);
    // The knobs take seconds for the three times and a spaced percent for the sustain.
    void useEnvelopeFormatters();

    ostrel::widgets::Knob& getKnob (int index) { return *knobs[(size_t) juce::jlimit (0, 3, index)]; }
    juce::Rectangle<float> curveBox() const;
    std::array<juce::Point<float>, 4> handlePositions() const;
    int getDragHandle() const noexcept { return dragHandle; }
    bool isCurveOnly() const noexcept { return curveOnly; }
    bool isCurveVisible() const noexcept { return curveVisible; }
    const ostrel::widgets::KnobRow& getKnobRow() const noexcept { return knobRow; }
    // Reads the parameters now; the timer does the same at 20 Hz.
    void refresh();

    void mouseDown (const juce::MouseEvent&) override;
    void mouseDrag (const juce::MouseEvent&) override;
    void mouseUp (const juce::MouseEvent&) override;
    void paint (juce::Graphics&) override;
    void resized() override;

private:
    void timerCallback() override;
    bool hasRoomForCurve() const;
    void beginGestures (int handle, bool begin);
    void write (int index, float normalised);

    std::array<juce::RangedAudioParameter*, 4> parameters {};
    std::array<std::unique_ptr<ostrel::widgets::Knob>, 4> knobs;
    std::array<std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment>, 4> attachments;
    ostrel::widgets::KnobRow knobRow { ostrel::widgets::KnobSize::Mini };
    juce::StringArray labels { "ATTACK", "DECAY", "SUSTAIN", "RELEASE" };
    std::array<float, 4> cached { -1.0f, -1.0f, -1.0f, -1.0f };
    bool curveVisible = true, curveOnly = false;
    int curveMinHeight = 48, curveMaxHeight = 72;
    int dragHandle = 0;
    juce::Point<float> pressPosition;
    std::array<float, 4> pressValues {};

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (AdsrRow)
};

// Two rows on the same envelope: a curve on top, the knobs below, and room for one extra knob.
class AdsrEnvelopeEditor : public juce::Component
{
public:
    AdsrEnvelopeEditor (juce::AudioProcessorValueTreeState& state, const juce::StringArray& parameterIds);
    ~AdsrEnvelopeEditor() override;

    void setLabels (const juce::StringArray& newLabels);
    // The extra control stands left of the knobs; a group of two knobs asks for more than one knob's width.
    void setExtraKnob (juce::Component* knob, int width = 44);
    void setCurveHeightRange (int minHeight, int maxHeight);

    AdsrRow& getCurveRow() noexcept { return curveRow; }
    AdsrRow& getKnobsRow() noexcept { return knobsRow; }

    void resized() override;

private:
    AdsrRow curveRow, knobsRow;
    juce::Component* extraKnob = nullptr;
    int extraWidth = 44;
    int gap = 8;
    int curveMinHeight = 44, curveMaxHeight = 204;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (AdsrEnvelopeEditor)
};
}
