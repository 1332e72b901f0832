#pragma once

#include "ui/widgets/CardFaces.h"
#include "ui/widgets/PanelEnableButton.h"
#include "widgets/Widgets.h"

#include <juce_audio_processors/juce_audio_processors.h>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui
{
namespace hidden
{
    // Adds a submenu of a choice parameter, titled with its current choice; an item sets it in one
    // gesture, or calls choose with its index when that is given.
    void addChoiceSubmenu (juce::PopupMenu& menu, juce::AudioProcessorValueTreeState& state,
                           const juce::String& parameterId, const juce::String& title,
                           std::function<void (int)> choose = {});
}

namespace widgets
{
    // "OSC LINK": how oscillator 2 relates to oscillator 1.
    class DetuneBar : public ostrel::widgets::SectionFrame,
                      private juce::AudioProcessorValueTreeState::Listener,
                      private juce::AsyncUpdater
    {
    public:
        // With the processor, the reese knobs of the second face become modulation destinations.
        explicit DetuneBar (juce::AudioProcessorValueTreeState& state, MorvaneAudioProcessor* processor = nullptr);
        ~DetuneBar() override;

        void resized() override;

        // Keeps the detune knob on the parameter of the unit in force. It converts nothing: a preset,
        // a restore, an undo or the host may set the unit, and each brings its own detune values.
        void syncDetuneBinding();
        // The user's switch of the unit: the detune is carried over into the new unit, in one step.
        void switchDetuneUnit (int modeIndex);
        const juce::String& getBoundDetuneId() const noexcept { return boundDetuneId; }

        ostrel::widgets::Knob& getDetuneKnob() noexcept { return detuneKnob; }
        ostrel::widgets::Knob& getPhaseKnob() noexcept { return phaseKnob; }
        ostrel::widgets::Knob& getDriftKnob() noexcept { return driftKnob; }
        ostrel::widgets::Knob& getStereoKnob() noexcept { return stereoKnob; }
        ostrel::widgets::SegmentField& getDetuneUnitField() noexcept { return detuneUnitField; }
        ostrel::widgets::FieldBox& getPhaseField() noexcept { return phaseField; }

        // The second face: the reese pair and the mono low end.
        FaceToggle faceToggle;
        ostrel::widgets::Knob beatKnob { ostrel::widgets::KnobSize::Mini }, spreadKnob { ostrel::widgets::KnobSize::Mini },
            monoFreqKnob { ostrel::widgets::KnobSize::Mini };
        PanelEnableButton lockButton, monoButton;
        ostrel::widgets::FieldBox lockField { "REESE LOCK" }, monoField { "MONO LOW" };
        void showFace (bool second);
        void updateMonoDimming();

    private:
        // Listeners may run on any thread; the posted update allocates nothing.
        void parameterChanged (const juce::String& parameterId, float) override;
        void handleAsyncUpdate() override { syncDetuneBinding(); }

        juce::AudioProcessorValueTreeState& state;
        ostrel::widgets::SectionTitle title { "OSC LINK" };
        ostrel::widgets::Knob detuneKnob { ostrel::widgets::KnobSize::Mini, true },
            phaseKnob { ostrel::widgets::KnobSize::Mini, true }, driftKnob { ostrel::widgets::KnobSize::Mini },
            stereoKnob { ostrel::widgets::KnobSize::Mini };
        std::unique_ptr<ostrel::widgets::SegmentedControl> detuneUnit;
        ostrel::widgets::SegmentField detuneUnitField;
        ostrel::widgets::ChoiceDropdown phaseChoice;
        ostrel::widgets::FieldBox phaseField { "PHASE" };
        std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment> detuneAttachment, phaseAttachment,
            driftAttachment, stereoAttachment, beatAttachment, spreadAttachment, monoFreqAttachment;
        juce::String boundDetuneId;

        JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (DetuneBar)
    };
}
}
