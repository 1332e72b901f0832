#include "ui/widgets/EffectCards.h"

#include "ui/matrix/MatrixWiring.h"
#include "ui/widgets/EffectCardSupport.h"

namespace morvane::ui::widgets
{
namespace
{
using ostrel::widgets::KnobSize;
using namespace fxcard;

SliderAttachmentPtr attach (juce::AudioProcessorValueTreeState& state, const char* id, ostrel::widgets::Knob& knob)
{
    return std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment> (state, id, knob);
}

ostrel::widgets::Knob::Formatter printfText (const char* format)
{
    return [format] (double v) { return juce::String::formatted (format, v); };
}
}

// ---------------------------------------------------------------------------------------------

MultibandDriveCard::MultibandDriveCard (juce::AudioProcessorValueTreeState& s, MorvaneAudioProcessor& processor)
    : BypassablePanel ("MULTIBAND DRIVE"),
      state (s),
      enableButton (s, "mbdEnable", "Multiband drive enable", "Enable multiband drive."),
      lowModeChoice (s, "mbdLowMode", "Multiband low mode"),
      midModeChoice (s, "mbdMidMode", "Multiband mid mode"),
      highModeChoice (s, "mbdHighMode", "Multiband high mode"),
      lowModeField ("LOW MODE"), midModeField ("MID MODE"), highModeField ("HIGH MODE"),
      lowKnob (KnobSize::Mini, false, false), midKnob (KnobSize::Mini, false, false),
      highKnob (KnobSize::Mini, false, false), lowCrossKnob (KnobSize::Mini, false, false),
      highCrossKnob (KnobSize::Mini, false, false), mixKnob (KnobSize::Mini, false, false)
{
    addEnable (*this, enableButton);
    addField (*this, lowModeField, lowModeChoice);
    addField (*this, midModeField, midModeChoice);
    addField (*this, highModeField, highModeChoice);
    addKnob (*this, lowKnob, "LOW", decibelText);
    addKnob (*this, midKnob, "MID", decibelText);
    addKnob (*this, highKnob, "HIGH", decibelText);
    addKnob (*this, lowCrossKnob, "X-LOW", printfText ("%.0f Hz"));
    addKnob (*this, highCrossKnob, "X-HI", printfText ("%.0f Hz"));
    addKnob (*this, mixKnob, "MIX", percentText);
    lowAttachment = attach (s, "mbdLowAmount", lowKnob);
    midAttachment = attach (s, "mbdMidAmount", midKnob);
    highAttachment = attach (s, "mbdHighAmount", highKnob);
    lowCrossAttachment = attach (s, "mbdLowCross", lowCrossKnob);
    highCrossAttachment = attach (s, "mbdHighCross", highCrossKnob);
    mixAttachment = attach (s, "mbdMix", mixKnob);
    matrix::wireKnob (lowKnob, processor, "mbdLowAmount", 29);
    matrix::wireKnob (midKnob, processor, "mbdMidAmount", 30);
    matrix::wireKnob (highKnob, processor, "mbdHighAmount", 31);
}

MultibandDriveCard::~MultibandDriveCard() = default;

void MultibandDriveCard::resized()
{
    BypassablePanel::resized();
    if (lowModeField.getParentComponent() == nullptr)
        return;
    auto area = bodyArea (getLocalBounds());
    // One knob cell is too narrow for "FOLLOW": the three modes share the width of the knob strip
    // below, each captioned with its band.
    auto modes = takeRow (area, 66);
    modes = modes.withSizeKeepingCentre (std::min (6 * 44 + 5 * 8, modes.getWidth()), modes.getHeight());
    const int third = std::max ((modes.getWidth() - 16) / 3, 0);
    for (auto* field : { &lowModeField, &midModeField })
    {
        field->setBounds (modes.removeFromLeft (third));
        modes.removeFromLeft (std::min (8, modes.getWidth()));
    }
    highModeField.setBounds (modes);
    layoutStrip (takeRow (area, 96), { &lowKnob, &midKnob, &highKnob, &lowCrossKnob, &highCrossKnob, &mixKnob });
}

// ---------------------------------------------------------------------------------------------

ModFxCard::ModFxCard (juce::AudioProcessorValueTreeState& s, MorvaneAudioProcessor& processor)
    : BypassablePanel ("MOD FX"),
      state (s),
      enableButton (s, "modFxEnable", "Mod FX enable", "Enable mod FX."),
      modeChoice (s, "modFxMode", "Mod FX mode"),
      modeField ("MODE"),
      rateKnob (KnobSize::Mini, false, false), depthKnob (KnobSize::Mini, false, false),
      feedbackKnob (KnobSize::Mini, false, false), mixKnob (KnobSize::Mini, false, false)
{
    addEnable (*this, enableButton);
    addField (*this, modeField, modeChoice);
    addKnob (*this, rateKnob, "RATE", printfText ("%.2f Hz"));
    addKnob (*this, depthKnob, "DEPTH", percentText);
    addKnob (*this, feedbackKnob, "FDBK", percentText);
    addKnob (*this, mixKnob, "MIX", percentText);
    rateAttachment = attach (s, "modFxRate", rateKnob);
    depthAttachment = attach (s, "modFxDepth", depthKnob);
    feedbackAttachment = attach (s, "modFxFeedback", feedbackKnob);
    mixAttachment = attach (s, "modFxMix", mixKnob);
    matrix::wireKnob (rateKnob, processor, "modFxRate", 32);
    matrix::wireKnob (depthKnob, processor, "modFxDepth", 33);
}

ModFxCard::~ModFxCard() = default;

void ModFxCard::resized()
{
    BypassablePanel::resized();
    if (modeField.getParentComponent() == nullptr)
        return;
    auto area = bodyArea (getLocalBounds());
    modeField.setBounds (takeFullRow (area, 66));
    layoutStrip (takeRow (area, 96), { &rateKnob, &depthKnob, &feedbackKnob, &mixKnob });
}

// ---------------------------------------------------------------------------------------------

PostEqCard::PostEqCard (juce::AudioProcessorValueTreeState& s, MorvaneAudioProcessor& processor)
    : BypassablePanel ("POST EQ"),
      state (s),
      enableButton (s, "postEqEnable", "Post EQ enable", "Enable post EQ."),
      tiltKnob (KnobSize::Mini, true, false), notchKnob (KnobSize::Mini, false, false),
      depthKnob (KnobSize::Mini, false, false)
{
    addEnable (*this, enableButton);
    addKnob (*this, tiltKnob, "TILT", decibelText);
    addKnob (*this, notchKnob, "NOTCH", printfText ("%.0f Hz"));
    addKnob (*this, depthKnob, "DEPTH", percentText);
    tiltAttachment = attach (s, "postEqTilt", tiltKnob);
    notchAttachment = attach (s, "postEqNotchHz", notchKnob);
    depthAttachment = attach (s, "postEqNotchDepth", depthKnob);
    matrix::wireKnob (notchKnob, processor, "postEqNotchHz", 34);
}

PostEqCard::~PostEqCard() = default;

void PostEqCard::resized()
{
    BypassablePanel::resized();
    if (tiltKnob.getParentComponent() == nullptr)
        return;
    auto area = bodyArea (getLocalBounds());
    layoutStrip (takeRow (area, 96), { &tiltKnob, &notchKnob, &depthKnob });
}

// ---------------------------------------------------------------------------------------------

DelayCard::DelayCard (juce::AudioProcessorValueTreeState& s, MorvaneAudioProcessor&)
    : BypassablePanel ("DELAY"),
      state (s),
      enableButton (s, "delayEnable", "Delay enable", "Enable master delay."),
      modeChoice (s, "delayPingPong", "Delay mode"),
      modeField ("MODE"),
      timeKnob (KnobSize::Mini, false, false), feedbackKnob (KnobSize::Mini, false, false),
      toneKnob (KnobSize::Mini, false, false), mixKnob (KnobSize::Mini, false, false)
{
    addEnable (*this, enableButton);
    addField (*this, modeField, modeChoice);
    addKnob (*this, timeKnob, "TIME", timeText);
    addKnob (*this, feedbackKnob, "FDBK", percentText);
    addKnob (*this, toneKnob, "TONE", frequencyText);
    addKnob (*this, mixKnob, "MIX", percentText);
    timeAttachment = attach (s, "delayTimeMs", timeKnob);
    feedbackAttachment = attach (s, "delayFeedback", feedbackKnob);
    toneAttachment = attach (s, "delayTone", toneKnob);
    mixAttachment = attach (s, "delayMix", mixKnob);
}

DelayCard::~DelayCard() = default;

void DelayCard::resized()
{
    BypassablePanel::resized();
    if (modeField.getParentComponent() == nullptr)
        return;
    auto area = bodyArea (getLocalBounds());
    modeField.setBounds (takeFullRow (area, 66));
    layoutStrip (takeRow (area, 96), { &timeKnob, &feedbackKnob, &toneKnob, &mixKnob });
}

// ---------------------------------------------------------------------------------------------

ReverbCard::ReverbCard (juce::AudioProcessorValueTreeState& s, MorvaneAudioProcessor&)
    : BypassablePanel ("REVERB"),
      state (s),
      enableButton (s, "reverbEnable", "Reverb enable", "Enable plate reverb."),
      predelayKnob (KnobSize::Mini, false, false), bandwidthKnob (KnobSize::Mini, false, false),
      decayKnob (KnobSize::Mini, false, false), dampingKnob (KnobSize::Mini, false, false),
      mixKnob (KnobSize::Mini, false, false)
{
    addEnable (*this, enableButton);
    addKnob (*this, predelayKnob, "PRE", printfText ("%.0f ms"));
    addKnob (*this, bandwidthKnob, "BW", percentText);
    addKnob (*this, decayKnob, "DECAY", percentText);
    addKnob (*this, dampingKnob, "DAMP", percentText);
    addKnob (*this, mixKnob, "MIX", percentText);
    predelayAttachment = attach (s, "reverbPredelayMs", predelayKnob);
    bandwidthAttachment = attach (s, "reverbBandwidth", bandwidthKnob);
    decayAttachment = attach (s, "reverbDecay", decayKnob);
    dampingAttachment = attach (s, "reverbDamping", dampingKnob);
    mixAttachment = attach (s, "reverbMix", mixKnob);
}

ReverbCard::~ReverbCard() = default;

void ReverbCard::resized()
{
    BypassablePanel::resized();
    if (predelayKnob.getParentComponent() == nullptr)
        return;
    auto area = bodyArea (getLocalBounds());
    layoutStrip (takeRow (area, 96), { &predelayKnob, &bandwidthKnob, &decayKnob, &dampingKnob, &mixKnob });
}

// ---------------------------------------------------------------------------------------------

BitCrushCard::BitCrushCard (juce::AudioProcessorValueTreeState& s, MorvaneAudioProcessor&)
    : BypassablePanel ("BIT CRUSH"),
      state (s),
      enableButton (s, "crushEnable", "Bit crush enable", "Enable bit crusher."),
      ditherChoice (s, "crushDither", "Crush dither"),
      ditherField ("DITHER"),
      bitsKnob (KnobSize::Mini, false, false), rateKnob (KnobSize::Mini, false, false),
      jitterKnob (KnobSize::Mini, false, false), mixKnob (KnobSize::Mini, false, false)
{
    addEnable (*this, enableButton);
    addField (*this, ditherField, ditherChoice);
    addKnob (*this, bitsKnob, "BITS", printfText ("%.1f b"));
    addKnob (*this, rateKnob, "RATE", frequencyText);
    addKnob (*this, jitterKnob, "JITT", percentText);
    addKnob (*this, mixKnob, "MIX", percentText);
    bitsAttachment = attach (s, "crushBits", bitsKnob);
    rateAttachment = attach (s, "crushRateHz", rateKnob);
    jitterAttachment = attach (s, "crushJitter", jitterKnob);
    mixAttachment = attach (s, "crushMix", mixKnob);
}

BitCrushCard::~BitCrushCard() = default;

void BitCrushCard::resized()
{
    BypassablePanel::resized();
    if (ditherField.getParentComponent() == nullptr)
        return;
    auto area = bodyArea (getLocalBounds());
    ditherField.setBounds (takeFullRow (area, 66));
    layoutStrip (takeRow (area, 96), { &bitsKnob, &rateKnob, &jitterKnob, &mixKnob });
}
}
