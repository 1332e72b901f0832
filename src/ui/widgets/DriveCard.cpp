#include "ui/widgets/DriveCard.h"

#include "audio/PluginProcessor.h"
#include "ui/matrix/MatrixWiring.h"
#include "ui/widgets/ValueFormat.h"

namespace morvane::ui::widgets
{
namespace
{
std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment> attach (juce::AudioProcessorValueTreeState& state,
                                                                              const char* id, juce::Slider& knob)
{
    if (state.getParameter (id) == nullptr)
        return {};
    return std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment> (state, id, knob);
}
}

DriveCard::DriveCard (juce::AudioProcessorValueTreeState& s, MorvaneAudioProcessor& processor)
    : BypassablePanel ("DRIVE"), state (s), thumbnail (s), enableButton (s, "driveEnabled", "Drive enable", "Enable drive."), modeChoice (s, "driveMode", "Drive mode")
{
    setName ("DriveCard");
    addAndMakeVisible (thumbnail);

    modeChoice.setJustification (33);
    modeChoice.setCompact (true);
    modeField.setCompact (true);
    modeField.setContent (&modeChoice);
    addAndMakeVisible (modeField);

    amountKnob.setLabel ("AMOUNT");
    amountKnob.setValueFormatter ([] (double v) { return formatSigned (v, 1, false, false, false) + " dB"; });
    mixKnob.setLabel ("MIX");
    mixKnob.setValueFormatter ([] (double v) { return formatPercent (v, true); });
    feedbackKnob.setLabel ("FDBK");
    feedbackKnob.setValueFormatter ([] (double v) { return formatPercent (v, true); });
    amountAttachment = attach (state, "drive", amountKnob);
    mixAttachment = attach (state, "driveMix", mixKnob);
    feedbackAttachment = attach (state, "feedbackAmount", feedbackKnob);
    matrix::wireKnob (amountKnob, processor, "drive", 2);
    matrix::wireKnob (feedbackKnob, processor, "feedbackAmount", 28);
    addAndMakeVisible (amountKnob);
    // The card shows one knob; mix and feedback stay bound, for the host and the matrix.
    addChildComponent (mixKnob);
    addChildComponent (feedbackKnob);

    for (auto* c : std::initializer_list<juce::Component*> { &thumbnail, &modeField, &amountKnob, &mixKnob, &feedbackKnob })
        addDimmedChild (c);

    enableButton.onToggled = [this] (bool on) { setActive (on); };
    setHeaderControl (&enableButton, 36);
    const auto* enabled = state.getRawParameterValue ("driveEnabled");
    setActive (enabled == nullptr || enabled->load() > 0.5f);
}

DriveCard::~DriveCard() = default;

void DriveCard::resized()
{
    BypassablePanel::resized();
    thumbnail.setBounds (16, 62, 172, 126);
    modeField.setBounds (16, 216, 64, 66);
    amountKnob.setBounds (134, 216, 44, 96);
}
}
