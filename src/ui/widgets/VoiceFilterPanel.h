#pragma once

#include "ui/widgets/PanelEnableButton.h"

#include "ui/primitives/canonical/LabeledChipButton.h"
#include "ui/widgets/AdsrEnvelopeEditor.h"
#include "ui/widgets/FilterResponseStrip.h"
#include "widgets/Widgets.h"

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::widgets
{
// The voice filter's card: switch, model, knobs, envelope and the draggable response strip.
class VoiceFilterPanel : public ostrel::widgets::BypassablePanel, private juce::Timer
{
public:
    VoiceFilterPanel (juce::AudioProcessorValueTreeState& state, MorvaneAudioProcessor& processor);
    ~VoiceFilterPanel() override;

    void resized() override;
    // The 15 Hz check of the model that shows or hides the phase knobs.
    void updatePhaserControls();

    FilterResponseStrip& getResponseStrip() noexcept { return responseStrip; }
    AdsrEnvelopeEditor& getEnvelope() noexcept { return envelope; }
    ostrel::widgets::HeaderChoice& getModelChoice() noexcept { return modelChoice; }
    PanelEnableButton& getEnableButton() noexcept { return enableButton; }
    ostrel::widgets::Knob& getCutoffKnob() noexcept { return cutoffKnob; }
    ostrel::widgets::Knob& getResoKnob() noexcept { return resoKnob; }
    ostrel::widgets::Knob& getPhaseKnob() noexcept { return phaseKnob; }
    ostrel::widgets::Knob& getNotchKnob() noexcept { return notchKnob; }
    ostrel::widgets::Knob& getEnvKnob() noexcept { return envKnob; }
    ostrel::widgets::Knob& getStereoKnob() noexcept { return stereoKnob; }
    ostrel::widgets::Knob& getVelocityKnob() noexcept { return velKnob; }
    bool arePhaserControlsShown() const noexcept { return phaserControlsShown; }

private:
    void timerCallback() override { updatePhaserControls(); }

    juce::AudioProcessorValueTreeState& state;
    FilterResponseStrip responseStrip;
    AdsrEnvelopeEditor envelope;
    ostrel::widgets::HeaderChoice modelChoice;
    PanelEnableButton enableButton;
    ostrel::widgets::Knob cutoffKnob { ostrel::widgets::KnobSize::Mini }, resoKnob { ostrel::widgets::KnobSize::Mini },
        phaseKnob { ostrel::widgets::KnobSize::Mini }, notchKnob { ostrel::widgets::KnobSize::Mini },
        envKnob { ostrel::widgets::KnobSize::Mini, true }, stereoKnob { ostrel::widgets::KnobSize::Mini, true },
        velKnob { ostrel::widgets::KnobSize::Mini };
    // ENV and VEL side by side, left of the envelope's knobs: both scale the envelope's sweep.
    juce::Component envKnobs;
    std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment> cutoffAttachment, resoAttachment,
        phaseAttachment, notchAttachment, envAttachment, stereoAttachment, velAttachment;
    bool phaserControlsShown = false;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (VoiceFilterPanel)
};
}
