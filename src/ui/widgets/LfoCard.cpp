#include "ui/widgets/LfoCard.h"

#include "audio/PluginProcessor.h"
#include "engine/EngineLfo.h"
#include "ui/matrix/MatrixWiring.h"
#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/widgets/ValueFormat.h"

#include <cmath>

namespace morvane::ui::widgets
{
namespace
{
float realValue (const juce::RangedAudioParameter* p, float fallback)
{
    return p != nullptr ? p->convertFrom0to1 (p->getValue()) : fallback;
}

int choiceIndex (const juce::RangedAudioParameter* p)
{
    return p != nullptr ? juce::roundToInt (p->convertFrom0to1 (p->getValue())) : 0;
}
}

// The divisions are the engine LFO's own, so the text and the picture name what the voice plays.
juce::String lfoDivisionName (int index) { return EngineLfo::syncTable()[(size_t) juce::jlimit (0, 9, index)].label; }
float lfoDivisionBeats (int index) { return EngineLfo::syncTable()[(size_t) juce::jlimit (0, 9, index)].beats; }
int lfoDivisionIndex (float normalisedRate) noexcept { return EngineLfo::syncIndexFor (normalisedRate); }

float lfoPreviewValue (int shape, float p) noexcept
{
    const float frac = p - std::floor (p);
    switch (shape)
    {
        case 1: return std::abs (frac - 0.5f) * 4.0f - 1.0f;
        case 2: return frac < 0.5f ? 1.0f : -1.0f;
        case 3:
        {
            auto h = (juce::uint32) (juce::int32) std::floor (p);
            h = (h ^ (h >> 16)) * 0x7FEB352Du;
            h = (h ^ (h >> 15)) * 0x846CA68Bu;
            h = h ^ (h >> 16);
            return (float) (h & 0xFFFFu) / 32767.5f - 1.0f;
        }
        default: return std::sin (juce::MathConstants<float>::twoPi * p);
    }
}

// --- LfoPreviewStrip -----------------------------------------------------------------------

LfoPreviewStrip::LfoPreviewStrip (juce::AudioProcessorValueTreeState& s)
    : state (s), rate (s.getParameter ("lfo1Rate")), depth (s.getParameter ("lfo1Depth")),
      shape (s.getParameter ("lfo1Shape")), sync (s.getParameter ("lfo1Sync")), syncBpm (s.getParameter ("lfoSyncBpm"))
{
    setSize (280, 96);
    setTitle ("LFO preview");
    setHelpText ("Drag across for rate, up and down for depth.");
    startTimerHz (30);
}

LfoPreviewStrip::~LfoPreviewStrip() { stopTimer(); }

float LfoPreviewStrip::cyclesPerSecond() const
{
    if (choiceIndex (sync) == 1)
    {
        const float beats = lfoDivisionBeats (lfoDivisionIndex (rate != nullptr ? rate->getValue() : 0.0f));
        if (! (beats > 0.0f))
            return 0.0f;
        return realValue (syncBpm, 120.0f) / 60.0f / beats;
    }
    return realValue (rate, 1.0f);
}

void LfoPreviewStrip::advance()
{
    animationPhase += cyclesPerSecond() / 30.0f;
    if (animationPhase > 16.0f)
        animationPhase -= 16.0f;
    repaint();
}

void LfoPreviewStrip::paint (juce::Graphics& g)
{
    const auto bounds = getLocalBounds().toFloat();
    drawSurface (g, bounds, 2, 0);
    const auto inner = bounds.reduced (8.0f);
    if (inner.getWidth() <= 0.0f)
        return;

    const int s = choiceIndex (shape);
    const float d = depth != nullptr ? depth->getValue() : 0.5f;
    const bool flat = d < 0.02f;
    const float centre = inner.getCentreY();

    g.setColour (token (Token::borderHair).withAlpha (0.18f));
    g.fillRect (inner.getX(), centre - 0.5f, inner.getWidth(), 1.0f);

    const float a = flat ? 0.22f : d;
    juce::Path wave;
    for (int i = 0; i < 256; ++i)
    {
        const float t = (float) i / 255.0f;
        const float v = lfoPreviewValue (s, 2.0f * t + animationPhase);
        const juce::Point<float> pt (inner.getX() + inner.getWidth() * t, centre - a * v * inner.getHeight() * 0.4f);
        if (i == 0)
            wave.startNewSubPath (pt);
        else
            wave.lineTo (pt);
    }
    g.setColour (flat ? token (Token::textSecondary).withAlpha (0.34f) : sourceColour ("lfo1"));
    g.strokePath (wave, juce::PathStrokeType (1.5f));
}

void LfoPreviewStrip::mouseDown (const juce::MouseEvent& e)
{
    if (rate == nullptr || depth == nullptr)
        return;
    dragging = true;
    pressPosition = e.position;
    pressRate = rate->getValue();
    pressDepth = depth->getValue();
    rate->beginChangeGesture();
    depth->beginChangeGesture();
}

void LfoPreviewStrip::mouseDrag (const juce::MouseEvent& e)
{
    if (! dragging)
        return;
    rate->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, pressRate + (e.position.x - pressPosition.x) / 240.0f));
    depth->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, pressDepth + (pressPosition.y - e.position.y) / 200.0f));
}

void LfoPreviewStrip::mouseUp (const juce::MouseEvent&)
{
    if (! dragging)
        return;
    dragging = false;
    rate->endChangeGesture();
    depth->endChangeGesture();
}

// --- LfoCard -------------------------------------------------------------------------------

LfoCard::LfoCard (juce::AudioProcessorValueTreeState& s, MorvaneAudioProcessor& processor)
    : state (s), preview (s), shapeChoice (s, "lfo1Shape", "LFO shape"), modeChoice (s, "lfo1Sync", "LFO mode")
{
    setName ("LfoCard");
    addAndMakeVisible (title);

    sourceChip.setAssignState (&state);
    addAndMakeVisible (preview);
    addAndMakeVisible (sourceChip);

    shapeChoice.setJustification (33);
    modeChoice.setJustification (33);
    modeChoice.setCompact (true);
    addAndMakeVisible (modeChoice);
    shapeField.setCompact (true);
    shapeField.setContent (&shapeChoice);
    addAndMakeVisible (shapeField);

    auto* rateParameter = state.getParameter ("lfo1Rate");
    rateKnob.setLabel ("RATE");
    rateKnob.setValueFormatter ([this, rateParameter] (double v)
    {
        if (choiceIndex (state.getParameter ("lfo1Sync")) == 1 && rateParameter != nullptr)
            return lfoDivisionName (lfoDivisionIndex (rateParameter->convertTo0to1 ((float) v)));
        return juce::String (v, v >= 10.0 ? 1 : 2) + " Hz";
    });
    depthKnob.setLabel ("DEPTH");
    depthKnob.setValueFormatter ([] (double v) { return formatPercent (v, true); });
    if (rateParameter != nullptr)
        rateAttachment = std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment> (state, "lfo1Rate", rateKnob);
    if (state.getParameter ("lfo1Depth") != nullptr)
        depthAttachment = std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment> (state, "lfo1Depth", depthKnob);
    matrix::wireKnob (rateKnob, processor, "lfo1Rate", 17);
    matrix::wireKnob (depthKnob, processor, "lfo1Depth", 18);

    // The rate text changes meaning with the mode: redraw it when the mode moves, from anywhere.
    modeChoice.getComboBox().onChange = [this] { rateKnob.repaint(); };

    phaseKnob.setLabel ("PHASE");
    phaseKnob.setTooltip ("Where in its cycle the LFO stands: an offset that a retrigger starts from.");
    phaseKnob.setValueFormatter ([] (double v) { return formatSignedInt (juce::roundToInt (v), true, false) + juce::String (juce::CharPointer_UTF8 ("\xc2\xb0")); });
    if (state.getParameter ("lfo1Phase") != nullptr)
        phaseAttachment = std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment> (state, "lfo1Phase", phaseKnob);
    rateKnob.setTooltip ("LFO rate, or its division of the beat when synced.");
    depthKnob.setTooltip ("LFO depth.");

    if (auto* retrig = dynamic_cast<juce::AudioParameterChoice*> (state.getParameter ("lfo1Retrig")))
    {
        retrigControl = std::make_unique<ostrel::widgets::SegmentedControl> (*retrig, juce::StringArray { "FREE", "NOTE" });
        retrigControl->setGapStep (1);
        retrigControl->getCell (0)->setTooltip ("The LFO runs on across notes.");
        retrigControl->getCell (1)->setTooltip ("Each new note restarts the LFO from its phase.");
    }
    retrigField.setContent (retrigControl.get());
    retrigField.setCompact (true);
    addAndMakeVisible (retrigField);

    knobRow.setGapStep (1);
    knobRow.setKnobs ({ &rateKnob, &depthKnob, &phaseKnob });
    addAndMakeVisible (knobRow);
}

LfoCard::~LfoCard() = default;

void LfoCard::resized()
{
    SectionFrame::resized();
    const auto b = getLocalBounds();
    const int x = b.getX(), y = b.getY();
    modeChoice.setBounds (x + 102, y + 12, 82, 22);
    title.setBounds (x + 20, y + 8, modeChoice.isVisible() ? 74 : 164, 22);
    // Preview, then shape and start side by side, then rate, depth and phase.
    preview.setBounds (x + 16, y + 62, 172, 96);
    sourceChip.setBounds (x + 16, y + 140, 74, 22);
    shapeField.setBounds (x + 16, y + 164, 84, 44);
    retrigField.setBounds (x + 108, y + 164, 80, 44);
    knobRow.setBounds (x + 16, y + 212, 172, 96);
}
}
