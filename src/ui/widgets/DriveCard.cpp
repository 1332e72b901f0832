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
    : BypassablePanel ("DRIVE"),
      state (s),
      thumbnail (s),
      enableButton (s, "driveOn", "Drive on", "Switch the voice drive on or off; off passes the signal untouched."),
      modeChoice (s, "driveMode", "Drive mode"),
      autoMakeupButton (s, "driveAutoMakeup", "Drive auto makeup", "Raise the level by what the drive's shape takes away."),
      positionChoice (s, "drivePosition", "Drive position"),
      feedbackPositionChoice (s, "feedbackPosition", "Feedback position")
{
    setName ("DriveCard");
    addAndMakeVisible (thumbnail);

    modeChoice.setJustification (33);
    modeChoice.setCompact (true);
    modeField.setCompact (true);
    modeField.setContent (&modeChoice);
    addAndMakeVisible (modeField);

    struct Binding
    {
        ostrel::widgets::Knob& knob;
        const char* label;
        const char* id;
        const char* tip;
        std::function<juce::String (double)> text;
        std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment>& attachment;
        int destination;
    };
    const auto decibels = [] (double v) { return formatSigned (v, 1, false, true, false) + " dB"; };
    const auto percent = [] (double v) { return formatPercent (v, true); };
    const Binding bindings[] = {
        { amountKnob, "AMOUNT", "drive", "Drive into the shaper, in decibels.", [] (double v) { return formatSigned (v, 1, false, false, false) + " dB"; }, amountAttachment, 2 },
        { mixKnob, "MIX", "driveMix", "Blend of the driven and the dry signal.", percent, mixAttachment, 0 },
        { feedbackKnob, "FDBK", "feedbackAmount", "Feedback of the voice around drive and filter.", percent, feedbackAttachment, 28 },
        { makeupKnob, "MAKEUP", "driveGain", "Gain after the shaper.", decibels, makeupAttachment, 0 },
        { velocityKnob, "VEL", "velToDrive", "How much the note's velocity scales the drive.", percent, velocityAttachment, 0 },
        { toneKnob, "TONE", "feedbackTone", "Low-pass corner of the feedback loop.",
          [] (double v) { return v < 1000.0 ? juce::String (juce::roundToInt (v)) + " Hz" : juce::String (v / 1000.0, 1) + " kHz"; }, toneAttachment, 0 },
    };
    for (const auto& b : bindings)
    {
        b.knob.setLabel (b.label);
        b.knob.setTooltip (b.tip);
        b.knob.setValueFormatter (b.text);
        b.attachment = attach (state, b.id, b.knob);
        if (b.destination > 0)
            matrix::wireKnob (b.knob, processor, b.id, b.destination);
    }
    addAndMakeVisible (amountKnob);

    autoMakeupField.setCompact (true);
    autoMakeupField.setContent (&autoMakeupButton);
    for (auto [field, choice] : { std::pair { &positionField, &positionChoice }, { &feedbackPositionField, &feedbackPositionChoice } })
    {
        choice->setJustification (33);
        choice->setCompact (true);
        field->setCompact (true);
        field->setContent (choice);
    }
    positionChoice.getComboBox().setTooltip ("Drive before the filter, or after it.");
    feedbackPositionChoice.getComboBox().setTooltip ("Where the feedback re-enters: before the drive, or after the filter.");
    for (auto* c : std::initializer_list<juce::Component*> { &mixKnob, &feedbackKnob, &makeupKnob, &velocityKnob, &toneKnob,
                                                            &autoMakeupField, &positionField, &feedbackPositionField })
        addChildComponent (c);

    for (auto* c : std::initializer_list<juce::Component*> { &thumbnail, &modeField, &amountKnob, &mixKnob, &makeupKnob, &velocityKnob,
                                                            &autoMakeupField, &positionField })
        addDimmedChild (c);

    faceToggle.setTooltip ("Show the drive's position, gain staging and feedback, or go back to its curve.");
    faceToggle.onFlip = [this] (bool second) { showFace (second); };
    addAndMakeVisible (faceToggle);

    // The narrow header holds MORE and the switch: the switch's own OFF says what "BYPASSED" would,
    // and the title keeps its room.
    enableButton.onToggled = [this] (bool on)
    {
        setActive (on);
        getTitle().setStatusText ({});
        updateFeedbackDimming();
    };
    setHeaderControl (&enableButton, 36);
    const auto* enabled = state.getRawParameterValue ("driveOn");
    setActive (enabled == nullptr || enabled->load() > 0.5f);
    getTitle().setStatusText ({});
    state.addParameterListener ("feedbackAmount", &feedbackListener);
    updateFeedbackDimming();
}

DriveCard::~DriveCard()
{
    state.removeParameterListener ("feedbackAmount", &feedbackListener);
    feedbackListener.cancelPendingUpdate();
}

void DriveCard::showFace (bool second)
{
    for (auto* c : std::initializer_list<juce::Component*> { &thumbnail, &modeField, &amountKnob })
        c->setVisible (! second);
    for (auto* c : std::initializer_list<juce::Component*> { &mixKnob, &feedbackKnob, &makeupKnob, &velocityKnob, &toneKnob,
                                                            &autoMakeupField, &positionField, &feedbackPositionField })
        c->setVisible (second);
}

void DriveCard::updateFeedbackDimming()
{
    // The feedback loop runs around the drive whether or not the drive is on, so the switch dims it
    // only as the card's own controls are dimmed: its knob, tone and position take their own.
    const auto* amount = state.getRawParameterValue ("feedbackAmount");
    const bool heard = amount == nullptr || amount->load() > 0.0f;
    for (auto* c : std::initializer_list<juce::Component*> { &toneKnob, &feedbackPositionField })
        c->setAlpha (heard ? 1.0f : 0.4f);
}

void DriveCard::resized()
{
    BypassablePanel::resized();
    const int w = getWidth();
    // MORE sits left of the switch, and the title takes what remains of the row.
    const int toggleX = std::max (w - 20 - headerReservedWidth() - 44, 20);
    faceToggle.setBounds (toggleX, 12, 44, 22);
    getTitle().setBounds (20, 8, std::max (toggleX - 24, 0), 22);

    thumbnail.setBounds (16, 62, 172, 126);
    modeField.setBounds (16, 216, 64, 66);
    amountKnob.setBounds (134, 216, 44, 96);

    positionField.setBounds (16, 62, 84, 44);
    autoMakeupField.setBounds (108, 62, 80, 44);
    mixKnob.setBounds (16, 112, 44, 96);
    makeupKnob.setBounds (80, 112, 44, 96);
    velocityKnob.setBounds (144, 112, 44, 96);
    feedbackKnob.setBounds (16, 214, 44, 96);
    toneKnob.setBounds (62, 214, 44, 96);
    feedbackPositionField.setBounds (110, 230, 78, 44);
}
}
