#pragma once

#include "ui/widgets/CardFaces.h"
#include "widgets/Widgets.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <atomic>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::widgets
{
class FloatEndpointSegmentedControl;

// The sub and noise columns beside the oscillators.
class SourceUtilityStrip : public juce::Component,
                           private juce::AudioProcessorValueTreeState::Listener,
                           private juce::AsyncUpdater
{
public:
    explicit SourceUtilityStrip (MorvaneAudioProcessor& processor);
    ~SourceUtilityStrip() override;

    void resized() override;

    // The combo box id that stands for the present sub mode and wave: 1 for the sine, else the wave + 2.
    int waveIdFromParameters() const;
    // The segmented control that shows the noise route, a float, as two cells.
    ostrel::widgets::SegmentedControl* noiseRouteSegments() const;
    bool isSubMuted() const noexcept { return subMuted; }
    bool isNoiseMuted() const noexcept { return noiseMuted; }

    juce::AudioProcessorValueTreeState& state;
    ostrel::widgets::SectionFrame subFrame, noiseFrame;
    ostrel::widgets::SectionTitle subTitle { "SUB" }, noiseTitle { "NOISE" };
    ostrel::widgets::ChoiceDropdown waveChoice { "Sub wave" };
    ostrel::widgets::FieldBox waveField { "WAVE" };
    std::unique_ptr<ostrel::widgets::SegmentedControl> subRouteControl;
    ostrel::widgets::SegmentField subRouteField { "ROUTE", nullptr };
    std::unique_ptr<ostrel::widgets::SegmentedControl> colourControl;
    ostrel::widgets::SegmentField colourField { "COLOUR", nullptr };
    std::unique_ptr<FloatEndpointSegmentedControl> noiseRouteControl;
    ostrel::widgets::SegmentField noiseRouteField { "ROUTE", nullptr };
    ostrel::widgets::Knob subLevelKnob { ostrel::widgets::KnobSize::Mini }, dirtKnob { ostrel::widgets::KnobSize::Mini },
        noiseLevelKnob { ostrel::widgets::KnobSize::Mini }, subDcwKnob { ostrel::widgets::KnobSize::Mini };
    KnobValueField subLevelField { "LEVEL", subLevelKnob }, dirtField { "DIRT", dirtKnob }, noiseLevelField { "LEVEL", noiseLevelKnob },
        subDcwField { "DCW", subDcwKnob };

    // The sub's second face: its tuning and its DCW, set once per sound.
    FaceToggle subFace { "TUNE" };
    ostrel::widgets::ChoiceDropdown subOctaveChoice;
    ostrel::widgets::FieldBox subOctaveField { "OCTAVE" };
    ostrel::widgets::ValueChip subSemitoneChip, subFineChip;
    void showSubFace (bool second);

private:
    void parameterChanged (const juce::String& parameterId, float) override;
    void handleAsyncUpdate() override;
    void waveChosen();
    void syncWave();
    void updateSubMuting();
    void updateNoiseMuting();
    void updateSubDcwDimming();

    bool syncingWave = false;
    bool subMuted = false, noiseMuted = false;
    bool mutingKnown = false;
    std::atomic<bool> waveChanged { false }, subLevelChanged { false }, noiseLevelChanged { false };

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (SourceUtilityStrip)
};
}
