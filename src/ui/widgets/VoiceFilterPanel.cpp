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
    };
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
        matrix::wireKnob (binding.knob, processor, binding.parameterId, binding.destination);
    }
    for (auto* knob : { &cutoffKnob, &resoKnob, &phaseKnob, &notchKnob })
        addChildComponent (knob);
    cutoffKnob.setVisible (true);
    resoKnob.setVisible (true);
    envelope.setExtraKnob (&envKnob);

    // The ENV knob lives inside the envelope editor, whose dimming it already inherits.
    for (juce::Component* c : std::initializer_list<juce::Component*> { &responseStrip, &envelope, &modelChoice, &cutoffKnob,
                                                                        &resoKnob, &phaseKnob, &notchKnob })
        addDimmedChild (c);
    enableButton.onToggled = [this] (bool on) { setActive (on); };
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
    phaseKnob.setVisible (shown);
    notchKnob.setVisible (shown);
    if (shown != phaserControlsShown)
    {
        phaserControlsShown = shown;
        resized();
    }
}

void VoiceFilterPanel::resized()
{
    BypassablePanel::resized();
    const int w = getWidth();
    auto row = juce::Rectangle<int> (20, 8, std::max (w - 40 - headerReservedWidth(), 0), 22);
    const int choiceWidth = std::min (modelChoice.preferredWidth(), std::max (row.getWidth() - 16, 0));
    modelChoice.setBounds (row.getRight() - choiceWidth, 12, choiceWidth, 22);
    getTitle().setBounds (row.withTrimmedRight (std::min (row.getWidth(), choiceWidth + 8)));

    // Four knobs at the two-knob pitch would run into the envelope's ENV knob, so the group
    // narrows to the strip's width; both groups are centred under the strip.
    const int pitch = phaserControlsShown ? 42 : 48;
    const int count = phaserControlsShown ? 4 : 2;
    const int x0 = 16 + (172 - (44 + pitch * (count - 1))) / 2;
    Knob* knobs[] = { &cutoffKnob, &resoKnob, &phaseKnob, &notchKnob };
    for (int i = 0; i < count; ++i)
        knobs[i]->setBounds (x0 + pitch * i, 216, 44, 96);

    responseStrip.setBounds (16, 62, 172, 126);
    envelope.setBounds (232, 62, 280, 234);
}
}
