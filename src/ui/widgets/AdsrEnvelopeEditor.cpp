#include "ui/widgets/AdsrEnvelopeEditor.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/widgets/ValueFormat.h"

namespace morvane::ui::widgets
{
using ostrel::widgets::Knob;
using ostrel::widgets::KnobSize;

AdsrRow::AdsrRow (juce::AudioProcessorValueTreeState& state, const juce::StringArray& ids)
{
    for (int i = 0; i < 4; ++i)
    {
        const auto id = ids[i];
        parameters[(size_t) i] = state.getParameter (id);
        auto& knob = knobs[(size_t) i];
        knob = std::make_unique<Knob> (KnobSize::Mini);
        knob->setLabel (labels[i]);
        if (parameters[(size_t) i] != nullptr)
            attachments[(size_t) i] = std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment> (state, id, *knob);
    }
    knobRow.setKnobs ({ knobs[0].get(), knobs[1].get(), knobs[2].get(), knobs[3].get() });
    knobRow.setGapStep (1);
    addAndMakeVisible (knobRow);
    setSize (280, 141);
    refresh();
    startTimerHz (20);
}

AdsrRow::~AdsrRow()
{
    if (dragHandle != 0)
        beginGestures (dragHandle, false);
}

void AdsrRow::setLabels (const juce::StringArray& newLabels)
{
    for (int i = 0; i < 4; ++i)
    {
        labels.set (i, newLabels[i]);
        knobs[(size_t) i]->setLabel (newLabels[i]);
    }
}

void AdsrRow::useEnvelopeFormatters()
{
    for (int i : { 0, 1, 3 })
        knobs[(size_t) i]->setValueFormatter ([] (double v) { return formatSeconds (v); });
    knobs[2]->setValueFormatter ([] (double v) { return juce::String (juce::roundToInt (v * 100.0)) + " %"; });
}

void AdsrRow::setCurveHeightRange (int minHeight, int maxHeight)
{
    curveMinHeight = std::max (std::min (minHeight, maxHeight), 16);
    curveMaxHeight = std::max (curveMinHeight, maxHeight);
    resized();
    repaint();
}

void AdsrRow::setCurveOnly (bool on)
{
    if (on == curveOnly)
        return;
    curveOnly = on;
    if (on)
        curveVisible = true;
    resized();
    repaint();
}

void AdsrRow::setCurveVisible (bool on)
{
    if (on == curveVisible)
        return;
    curveVisible = on;
    if (! on)
        curveOnly = false;
    resized();
    repaint();
}

bool AdsrRow::hasRoomForCurve() const { return curveVisible && getHeight() >= curveMinHeight + 120; }

juce::Rectangle<float> AdsrRow::curveBox() const
{
    const int w = getWidth(), h = getHeight();
    const int iw = std::max (w - 16, 0), ih = std::max (h - 16, 0);
    if (curveOnly)
        return { 8.0f, 8.0f, (float) iw, (float) ih };
    if (h < 44)
        return { 8.0f, 4.0f, (float) iw, (float) std::max (h - 8, 0) };
    if (hasRoomForCurve())
    {
        const int ch = ih - 104 >= curveMinHeight ? std::min (curveMaxHeight, ih - 104) : curveMinHeight;
        return { 8.0f, 8.0f, (float) iw, (float) ch };
    }
    return {};
}

std::array<juce::Point<float>, 4> AdsrRow::handlePositions() const
{
    auto v = cached;
    if (v[0] < 0.0f || v[1] < 0.0f || v[2] < 0.0f || v[3] < 0.0f)
        v = { 0.1f, 0.1f, 0.7f, 0.2f };
    const auto box = curveBox();
    const float total = v[0] + v[1] + 1.0f + v[3];
    const float bw = box.getWidth(), bh = box.getHeight();
    std::array<juce::Point<float>, 4> p;
    p[0] = { box.getX() + bw * v[0] / total, box.getY() };
    p[1] = { p[0].x + bw * v[1] / total, box.getY() + bh * (1.0f - v[2]) };
    p[2] = { p[1].x + bw / total, p[1].y };
    p[3] = { p[2].x + bw * v[3] / total, box.getBottom() };
    return p;
}

void AdsrRow::refresh()
{
    bool changed = false;
    for (size_t i = 0; i < 4; ++i)
    {
        if (parameters[i] == nullptr)
            continue;
        const float v = parameters[i]->getValue();
        if (std::abs (v - cached[i]) > 0.00001f)
        {
            cached[i] = v;
            changed = true;
        }
    }
    // A row that shows no curve has nothing of its own to redraw; its knobs follow by attachment.
    const bool drawsCurve = getHeight() < 44 || curveVisible;
    if (changed && drawsCurve)
        repaint (0, 0, getWidth(), curveMaxHeight + 8);
}

void AdsrRow::timerCallback() { refresh(); }

void AdsrRow::paint (juce::Graphics& g)
{
    if (curveOnly || curveVisible)
        drawSurface (g, getLocalBounds().toFloat(), 2, 0);
    const bool drawCurve = getHeight() < 44 || (curveVisible && (curveOnly || hasRoomForCurve()));
    const auto box = curveBox();
    if (! drawCurve || box.isEmpty())
        return;
    const auto handles = handlePositions();
    juce::Path path;
    path.startNewSubPath (box.getX(), box.getBottom());
    for (auto p : handles)
        path.lineTo (p);
    g.setColour (token (Token::accentPrimary));
    g.strokePath (path, juce::PathStrokeType (1.5f, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));
    g.setColour (token (Token::accentModRing));
    for (auto p : handles)
        g.fillEllipse (p.x - 4.0f, p.y - 4.0f, 8.0f, 8.0f);
}

void AdsrRow::resized()
{
    const int w = getWidth(), h = getHeight();
    if (curveOnly || h < 44)
    {
        knobRow.setVisible (false);
        return;
    }
    juce::Rectangle<int> rest;
    if (hasRoomForCurve())
    {
        rest = { 8, 8, std::max (w - 16, 0), std::max (h - 16, 0) };
        const int ch = (int) curveBox().getHeight();
        rest.removeFromTop (std::min (ch, rest.getHeight()));
        rest.removeFromTop (std::min (8, rest.getHeight()));
        knobRow.setGapStep (6);
    }
    else
    {
        rest = { 8, 0, std::max (w - 16, 0), h };
        knobRow.setGapStep (1);
    }
    knobRow.setBounds (rest.withHeight (std::min (rest.getHeight(), 96)));
    knobRow.setVisible (true);
}

void AdsrRow::beginGestures (int handle, bool begin)
{
    auto gesture = [begin] (juce::RangedAudioParameter* p) {
        if (p == nullptr)
            return;
        if (begin)
            p->beginChangeGesture();
        else
            p->endChangeGesture();
    };
    switch (handle)
    {
        case 1: gesture (parameters[0]); break;
        case 2: gesture (parameters[1]); gesture (parameters[2]); break;
        case 3: gesture (parameters[2]); break;
        case 4: gesture (parameters[3]); break;
        default: break;
    }
}

void AdsrRow::write (int index, float normalised)
{
    if (auto* p = parameters[(size_t) index])
        p->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, normalised));
}

void AdsrRow::mouseDown (const juce::MouseEvent& e)
{
    const bool drawCurve = getHeight() < 44 || (curveVisible && (curveOnly || hasRoomForCurve()));
    if (! drawCurve || curveBox().isEmpty())
        return;
    refresh();
    const auto handles = handlePositions();
    int best = 0;
    float bestDistance = 12.0f;
    for (int i = 0; i < 4; ++i)
    {
        const float d = e.position.getDistanceFrom (handles[(size_t) i]);
        if (d <= bestDistance)
        {
            best = i + 1;
            bestDistance = d;
        }
    }
    if (best == 0)
        return;
    dragHandle = best;
    pressPosition = e.position;
    for (size_t i = 0; i < 4; ++i)
        pressValues[i] = parameters[i] != nullptr ? parameters[i]->getValue() : 0.0f;
    beginGestures (dragHandle, true);
}

void AdsrRow::mouseDrag (const juce::MouseEvent& e)
{
    const auto box = curveBox();
    if (dragHandle == 0 || box.isEmpty())
        return;
    const float dx = (e.position.x - pressPosition.x) / std::max (box.getWidth(), 1.0f);
    const float dy = (pressPosition.y - e.position.y) / std::max (box.getHeight(), 1.0f);
    switch (dragHandle)
    {
        case 1: write (0, pressValues[0] + dx); break;
        case 2: write (1, pressValues[1] + dx); write (2, pressValues[2] + dy); break;
        case 3: write (2, pressValues[2] + dy); break;
        case 4: write (3, pressValues[3] + dx); break;
        default: break;
    }
    refresh();
}

void AdsrRow::mouseUp (const juce::MouseEvent&)
{
    if (dragHandle != 0)
        beginGestures (dragHandle, false);
    dragHandle = 0;
}

AdsrEnvelopeEditor::AdsrEnvelopeEditor (juce::AudioProcessorValueTreeState& state, const juce::StringArray& ids)
    : curveRow (state, ids), knobsRow (state, ids)
{
    curveRow.setCurveOnly (true);
    curveRow.setCurveHeightRange (curveMinHeight, curveMaxHeight);
    knobsRow.setCurveVisible (false);
    knobsRow.setLabels ({ "A", "D", "S", "R" });
    knobsRow.useEnvelopeFormatters();
    addAndMakeVisible (curveRow);
    addAndMakeVisible (knobsRow);
}

AdsrEnvelopeEditor::~AdsrEnvelopeEditor() = default;

void AdsrEnvelopeEditor::setLabels (const juce::StringArray& newLabels) { knobsRow.setLabels (newLabels); }

void AdsrEnvelopeEditor::setExtraKnob (juce::Component* knob, int width)
{
    if (extraKnob != nullptr && extraKnob->getParentComponent() == this)
        removeChildComponent (extraKnob);
    extraKnob = knob;
    extraWidth = std::max (width, 1);
    if (knob != nullptr)
        addAndMakeVisible (knob);
    resized();
}

void AdsrEnvelopeEditor::setCurveHeightRange (int minHeight, int maxHeight)
{
    curveMinHeight = std::max (minHeight, 0);
    curveMaxHeight = std::max (minHeight, maxHeight);
    curveRow.setCurveHeightRange (curveMinHeight, curveMaxHeight);
    resized();
}

void AdsrEnvelopeEditor::resized()
{
    auto area = getLocalBounds();
    if (area.getWidth() <= 0 || area.getHeight() <= 0)
        return;
    const int h = area.getHeight();
    const int t = std::max (h - std::min (h, 96) - 8, 0);
    int curveHeight = t >= curveMinHeight ? std::min (t, curveMaxHeight) : curveMinHeight;
    curveHeight = std::min (curveHeight, h);
    curveRow.setBounds (area.removeFromTop (curveHeight));
    if (curveHeight > 0 && area.getHeight() > 0)
        area.removeFromTop (std::min (8, area.getHeight()));
    if (extraKnob != nullptr)
    {
        const int kh = std::min (area.getHeight(), 96);
        // At the top of the knobs' band, as the row's knobs stand, so that the circles line up.
        extraKnob->setBounds (area.getX(), area.getY(), std::min (extraWidth, area.getWidth()), kh);
        area.removeFromLeft (std::min (extraWidth + gap, area.getWidth()));
    }
    knobsRow.setBounds (area);
}
}
