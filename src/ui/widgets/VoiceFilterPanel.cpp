#include "ui/widgets/VoiceFilterPanel.h"

#include "audio/PluginProcessor.h"
#include "ui/matrix/MatrixWiring.h"
#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"
#include "ui/widgets/ValueFormat.h"

namespace morvane::ui::widgets
{
using ostrel::widgets::Knob;

VoiceFilterPanel::VoiceFilterPanel (juce::AudioProcessorValueTreeState& s, MorvaneAudioProcessor& processor)
    : BypassablePanel ("FILTER"),
      state (s),
      responseStrip (s),
      envelope (s, { "filterAttack", "filterDecay", "filterSustain", "filterRelease" }),
      modelChoice (s, "filterModel", "Filter model"),
      enableButton (s, "filterEnabled", "Filter enabled", "Filter enabled")
{
    setName ("VoiceFilterPanel");
    responseStrip.setEnvelopeOverlay (false);
    addAndMakeVisible (responseStrip);
    addAndMakeVisible (envelope);
    addAndMakeVisible (modelChoice);

    struct KnobBinding
    {
        Knob& knob;
        const char* label;
        const char* parameterId;
        int destination;
        std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment>& attachment;
    };
    KnobBinding bindings[] = {
        { cutoffKnob, "CUTOFF", "filterCutoff", 1, cutoffAttachment },
        { resoKnob, "RESO", "filterReso", 14, resoAttachment },
        { phaseKnob, "PHASE", "phaseMix", 26, phaseAttachment },
        { notchKnob, "NOTCH", "phaseNotch", 27, notchAttachment },
        { envKnob, "ENV", "filterEnvAmount", 15, envAttachment },
        { stereoKnob, "STEREO", "phaseStereo", 0, stereoAttachment },
        { velKnob, "VEL", "velToFilterEnv", 0, velAttachment },
    };
    cutoffKnob.setTooltip ("Filter cut-off frequency.");
    resoKnob.setTooltip ("Filter resonance.");
    phaseKnob.setTooltip ("Phase model: how much of the notched signal is mixed in.");
    notchKnob.setTooltip ("Phase model: depth of its three notches.");
    stereoKnob.setTooltip ("Phase model: moves the notches apart between left and right.");
    envKnob.setTooltip ("How far the filter envelope sweeps the cut-off, in semitones.");
    velKnob.setTooltip ("How much the note's velocity scales the filter envelope's sweep.");
    stereoKnob.setValueFormatter ([] (double v) { return formatPercent (v, true); });
    velKnob.setValueFormatter ([] (double v) { return formatPercent (v, true); });
    cutoffKnob.setValueFormatter ([] (double v) {
        return v < 1000.0 ? juce::String (juce::roundToInt (v)) + " Hz" : juce::String (v / 1000.0, 1) + " kHz";
    });
    for (auto* knob : { &resoKnob, &phaseKnob, &notchKnob })
        knob->setValueFormatter ([] (double v) { return formatPercent (v, true); });
    envKnob.setValueFormatter ([] (double v) { return formatSigned (v, 1, true, false, false) + " dB"; });
    for (auto& binding : bindings)
    {
        binding.knob.setLabel (binding.label);
        if (state.getParameter (binding.parameterId) == nullptr)
            continue;
        binding.attachment = std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment> (state, binding.parameterId, binding.knob);
        if (binding.destination > 0)
            matrix::wireKnob (binding.knob, processor, binding.parameterId, binding.destination);
    }
    for (auto* knob : { &cutoffKnob, &resoKnob, &phaseKnob, &notchKnob, &stereoKnob })
        addAndMakeVisible (knob);
    envKnobs.addAndMakeVisible (envKnob);
    envKnobs.addAndMakeVisible (velKnob);
    envKnob.setBounds (0, 0, 44, 96);
    velKnob.setBounds (48, 0, 44, 96);
    envelope.setExtraKnob (&envKnobs, 92);

    // The ENV knob lives inside the envelope editor, whose dimming it already inherits.
    // The phase model's knobs are dimmed apart from the panel's switch, on the other models.
    for (juce::Component* c : std::initializer_list<juce::Component*> { &responseStrip, &envelope, &modelChoice, &cutoffKnob, &resoKnob })
        addDimmedChild (c);
    enableButton.onToggled = [this] (bool on)
    {
        setActive (on);
        updatePhaserControls();
    };
    setHeaderControl (&enableButton, 36);
    setActive (enableButton.getToggleState());

    updatePhaserControls();
    startTimerHz (15);
}

VoiceFilterPanel::~VoiceFilterPanel() = default;

void VoiceFilterPanel::updatePhaserControls()
{
    auto* model = state.getRawParameterValue ("filterModel");
    const bool shown = model != nullptr && model->load() >= 2.5f;
    phaserControlsShown = shown;
    const float alpha = (shown ? 1.0f : 0.4f) * (isActive() ? 1.0f : 0.4f);
    for (auto* knob : { &phaseKnob, &notchKnob, &stereoKnob })
        if (knob->getAlpha() != alpha)
            knob->setAlpha (alpha);
}

void VoiceFilterPanel::resized()
{
    BypassablePanel::resized();
    const int w = getWidth();
    auto row = juce::Rectangle<int> (20, 8, std::max (w - 40 - headerReservedWidth(), 0), 22);
    const int choiceWidth = std::min (modelChoice.preferredWidth(), std::max (row.getWidth() - 16, 0));
    modelChoice.setBounds (row.getRight() - choiceWidth, 12, choiceWidth, 22);
    getTitle().setBounds (row.withTrimmedRight (std::min (row.getWidth(), choiceWidth + 8)));

    // Five knobs under the strip: the two of every model, then the phase model's three, which
    // stay in place and are dimmed on the other models.
    Knob* knobs[] = { &cutoffKnob, &resoKnob, &phaseKnob, &notchKnob, &stereoKnob };
    for (int i = 0; i < 5; ++i)
        knobs[i]->setBounds (14 + 42 * i, 216, 44, 96);

    responseStrip.setBounds (16, 62, 172, 126);
    envelope.setBounds (232, 62, 280, 234);
}
}
