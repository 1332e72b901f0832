#include "ui/widgets/FilterResponseStrip.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

#include <cmath>

namespace morvane::ui::widgets
{
namespace
{
const float L0 = std::log10 (20.0f), L1 = std::log10 (20000.0f);
const char* const envelopeIds[] = { "filterAttack", "filterDecay", "filterSustain", "filterRelease" };
}

float filterDrawingMagnitude (int model, float q, float r)
{
    if (model == 3)
    {
        const float width = r * 6.5f + 3.5f;
        float m = 1.0f;
        for (float centre : { 0.5f, 1.0f, 2.0f })
        {
            const float l = std::log (std::max (q / centre, 0.0001f));
            m *= 1.0f - std::exp (-l * l * width) * (r * 0.65f + 0.25f);
        }
        return m;
    }
    const float k = model == 1 ? 5.0f : model == 2 ? 3.25f : 4.0f;
    const float l = std::log (std::max (q, 0.0001f));
    return 1.0f / std::sqrt (std::pow (q, 8.0f) + 1.0f) + std::exp (-l * l * 6.0f) * r * k;
}

void FilterResponseStrip::ParamListener::parameterChanged (const juce::String&, float)
{
    owner.triggerAsyncUpdate();
}

FilterResponseStrip::FilterResponseStrip (juce::AudioProcessorValueTreeState& s)
    : state (s),
      cutoff (s.getParameter ("filterCutoff")),
      reso (s.getParameter ("filterReso")),
      envAmount (s.getParameter ("filterEnvAmount")),
      model (s.getParameter ("filterModel")),
      attack (s.getParameter (envelopeIds[0])),
      decay (s.getParameter (envelopeIds[1])),
      sustain (s.getParameter (envelopeIds[2])),
      release (s.getParameter (envelopeIds[3]))
{
    for (auto* id : { "filterCutoff", "filterReso", "filterEnvAmount", "filterModel", envelopeIds[0], envelopeIds[1],
                      envelopeIds[2], envelopeIds[3] })
        state.addParameterListener (id, &listener);
    setSize (580, 96);
    startTimerHz (15);
}

FilterResponseStrip::~FilterResponseStrip()
{
    if (dragMode != 0)
        gestures (false);
    for (auto* id : { "filterCutoff", "filterReso", "filterEnvAmount", "filterModel", envelopeIds[0], envelopeIds[1],
                      envelopeIds[2], envelopeIds[3] })
        state.removeParameterListener (id, &listener);
}

void FilterResponseStrip::setEnvelopeOverlay (bool on)
{
    envelopeOverlay = on;
    repaint();
}

float FilterResponseStrip::realValue (juce::RangedAudioParameter* p, float fallback)
{
    return p != nullptr ? p->convertFrom0to1 (p->getValue()) : fallback;
}

juce::Path FilterResponseStrip::buildCurve (float cutoffHz, float r, int modelIndex) const
{
    juce::Path path;
    if (plot.getWidth() < 1 || plot.getHeight() < 1)
        return path;
    const float fc = std::max (cutoffHz, 1.0f);
    for (int i = 0; i < 96; ++i)
    {
        const float lf = L0 + (L1 - L0) * (float) i / 95.0f;
        const float f = std::pow (10.0f, lf);
        const float m = filterDrawingMagnitude (modelIndex, f / fc, r);
        const float n = (20.0f * std::log10 (std::max (m, 0.0001f)) + 36.0f) / 48.0f;
        const float x = (float) plot.getX() + (float) plot.getWidth() * juce::jlimit (0.0f, 1.0f, (lf - L0) / (L1 - L0));
        const float y = (float) plot.getBottom() - (float) plot.getHeight() * juce::jlimit (0.0f, 1.0f, n);
        if (i == 0)
            path.startNewSubPath (x, y);
        else
            path.lineTo (x, y);
    }
    return path;
}

bool FilterResponseStrip::refresh()
{
    juce::RangedAudioParameter* params[] = { cutoff, reso, envAmount, model, attack, decay, sustain, release };
    std::array<float, 8> now;
    for (size_t i = 0; i < 8; ++i)
        now[i] = params[i] != nullptr ? params[i]->getValue() : cached[i];
    bool curveDirty = curve.isEmpty() || envelopedCurve.isEmpty();
    bool envelopeDirty = false;
    for (size_t i = 0; i < 8; ++i)
        if (std::abs (now[i] - cached[i]) >= 0.00001f)
            (i < 4 ? curveDirty : envelopeDirty) = true;
    if (! curveDirty && ! envelopeDirty)
        return false;
    // With no plot the empty paths would make every tick dirty; nothing to draw anyway.
    if (plot.getWidth() < 1 || plot.getHeight() < 1)
    {
        if (cached == now)
            return false;
        cached = now;
        repaint();
        return true;
    }
    cached = now;
    if (curveDirty)
    {
        const float hz = realValue (cutoff, 20000.0f);
        const float r = realValue (reso, 0.0f);
        const int modelIndex = juce::roundToInt (realValue (model, 0.0f));
        const float envHz = hz * std::pow (2.0f, realValue (envAmount, 0.0f) / 12.0f);
        curve = buildCurve (hz, r, modelIndex);
        envelopedCurve = buildCurve (juce::jlimit (20.0f, 20000.0f, envHz), r, modelIndex);
    }
    repaint();
    return true;
}

float FilterResponseStrip::xOfFrequency (float hz) const
{
    const float p = juce::jlimit (0.0f, 1.0f, (std::log10 (std::max (hz, 0.0001f)) - L0) / (L1 - L0));
    return (float) plot.getX() + (float) plot.getWidth() * p;
}

juce::Point<float> FilterResponseStrip::cutoffHandle() const
{
    const float r = reso != nullptr ? reso->getValue() : 0.0f;
    return { xOfFrequency (realValue (cutoff, 20000.0f)), (float) plot.getBottom() - (float) plot.getHeight() * r };
}

std::array<juce::Point<float>, 4> FilterResponseStrip::envelopePoints() const
{
    auto value = [] (juce::RangedAudioParameter* p, float fallback) { return p != nullptr ? p->getValue() : fallback; };
    const float a = value (attack, 0.1f), d = value (decay, 0.2f), s = value (sustain, 0.6f), rel = value (release, 0.3f);
    const float total = a + d + 1.0f + rel;
    const auto pr = plot.toFloat();
    std::array<juce::Point<float>, 4> p;
    p[0] = { pr.getX() + pr.getWidth() * a / total, pr.getY() };
    p[1] = { p[0].x + pr.getWidth() * d / total, pr.getY() + pr.getHeight() * (1.0f - s) };
    p[2] = { p[1].x + pr.getWidth() / total, p[1].y };
    p[3] = { p[2].x + pr.getWidth() * rel / total, pr.getBottom() };
    return p;
}

void FilterResponseStrip::resized()
{
    plot = getLocalBounds().reduced (8);
    plot.removeFromBottom (std::min (16, plot.getHeight()));
    curve.clear();
    envelopedCurve.clear();
    refresh();
}

void FilterResponseStrip::paint (juce::Graphics& g)
{
    drawSurface (g, getLocalBounds().toFloat(), 2, 0);
    if (plot.getWidth() < 1 || plot.getHeight() < 1)
        return;
    const auto pr = plot.toFloat();
    const auto hair = token (Token::borderHair);
    {
        juce::Graphics::ScopedSaveState save (g);
        g.reduceClipRegion (plot);
        g.setColour (hair.withAlpha (0.14f));
        for (float db : { -24.0f, -12.0f, 0.0f, 12.0f })
        {
            const float y = pr.getBottom() - pr.getHeight() * juce::jlimit (0.0f, 1.0f, (db + 36.0f) / 48.0f);
            g.drawLine (pr.getX(), y, pr.getRight(), y, 1.0f);
        }
        for (float decade : { 10.0f, 100.0f, 1000.0f, 10000.0f })
            for (int m = 1; m <= 9; ++m)
            {
                const float f = decade * (float) m;
                if (f < 20.0f || f > 20000.0f)
                    continue;
                const bool strong = m == 1 || f == 20.0f || f == 20000.0f;
                g.setColour (hair.withAlpha (strong ? 0.28f : (m == 2 || m == 5) ? 0.18f : 0.10f));
                const float x = std::round (xOfFrequency (f));
                g.drawLine (x, pr.getY(), x, pr.getBottom(), 1.0f);
            }
    }

    const auto handle = cutoffHandle();
    const auto handleBox = juce::Rectangle<float> (12.0f, 12.0f).withCentre (handle);
    struct Label { float hz; const char* text; int justification; };
    const Label labels[] = { { 20.0f, "20", 33 }, { 100.0f, "100", 36 }, { 1000.0f, "1k", 36 }, { 10000.0f, "10k", 36 }, { 20000.0f, "20k", 34 } };
    const float roleTextHalfWidth = 12.0f;
    for (const auto& label : labels)
    {
        const float x = xOfFrequency (label.hz);
        auto box = juce::Rectangle<float> (x - 16.0f, pr.getBottom(), 32.0f, 12.0f);
        if (label.justification == 33)
            box.setX (x);
        else if (label.justification == 34)
            box.setX (x - 32.0f);
        if (box.intersects (handleBox))
            box.translate (0.0f, -12.0f);
        // A narrow strip has no room for both "10k" and "20k": the inner label gives way.
        if (label.hz == 10000.0f && xOfFrequency (20000.0f) - 32.0f < x + roleTextHalfWidth)
            continue;
        drawTypeText (g, 6, label.text, box, token (Token::textTertiary), juce::Justification (label.justification));
    }

    if (envelopeOverlay && std::abs (realValue (envAmount, 0.0f)) > 0.01f)
    {
        g.setColour (token (Token::accentModRing).withAlpha (0.45f));
        g.strokePath (envelopedCurve, juce::PathStrokeType (1.0f));
    }
    g.setColour (token (Token::accentPrimary));
    g.strokePath (curve, juce::PathStrokeType (1.5f, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));

    if (envelopeOverlay)
    {
        const auto points = envelopePoints();
        g.setColour (token (Token::accentModRing).withAlpha (0.85f));
        juce::Point<float> from { pr.getX(), pr.getBottom() };
        for (auto to : points)
        {
            const float length = from.getDistanceFrom (to);
            for (float t = 0.0f; t < length; t += 7.0f)
            {
                const auto a = from + (to - from) * (t / std::max (length, 0.001f));
                const auto b = from + (to - from) * (std::min (t + 4.0f, length) / std::max (length, 0.001f));
                g.drawLine ({ a, b }, 1.0f);
            }
            from = to;
        }
        g.setColour (token (Token::accentModRing));
        for (auto p : points)
            g.fillEllipse (p.x - 4.0f, p.y - 4.0f, 8.0f, 8.0f);
    }

    g.setColour (token (Token::accentModRing));
    g.fillEllipse (handleBox);
    g.setColour (token (Token::textPrimary));
    g.drawEllipse (handleBox, 2.0f);
}

void FilterResponseStrip::gestures (bool begin)
{
    auto gesture = [begin] (juce::RangedAudioParameter* p) {
        if (p == nullptr)
            return;
        if (begin)
            p->beginChangeGesture();
        else
            p->endChangeGesture();
    };
    juce::RangedAudioParameter* envelope[] = { attack, decay, sustain, release };
    if (dragMode == 1)
    {
        gesture (cutoff);
        gesture (reso);
    }
    else if (dragMode >= 2 && dragMode <= 5)
        gesture (envelope[dragMode - 2]);
}

void FilterResponseStrip::mouseDown (const juce::MouseEvent& e)
{
    if (dragMode != 0 || plot.getWidth() < 1 || plot.getHeight() < 1)
        return;
    dragMode = 0;
    if (e.position.getDistanceFrom (cutoffHandle()) <= 8.0f)
        dragMode = 1;
    else if (envelopeOverlay)
    {
        const auto points = envelopePoints();
        float best = 0.0f;
        for (int i = 0; i < 4; ++i)
        {
            const float d = e.position.getDistanceFrom (points[(size_t) i]);
            if (d <= 12.0f && (dragMode == 0 || d < best))
            {
                best = d;
                dragMode = 2 + i;
            }
        }
    }
    pressPosition = e.position;
    pressCutoff = cutoff != nullptr ? cutoff->getValue() : 0.0f;
    pressReso = reso != nullptr ? reso->getValue() : 0.0f;
    juce::RangedAudioParameter* envelope[] = { attack, decay, sustain, release };
    if (dragMode >= 2)
        pressValue = envelope[dragMode - 2] != nullptr ? envelope[dragMode - 2]->getValue() : 0.0f;
    gestures (true);
}

void FilterResponseStrip::mouseDrag (const juce::MouseEvent& e)
{
    if (dragMode == 1)
    {
        if (cutoff != nullptr)
        {
            const float p = juce::jlimit (0.0f, 1.0f, (e.position.x - (float) plot.getX()) / (float) std::max (plot.getWidth(), 1));
            const auto& range = cutoff->getNormalisableRange();
            const float hz = juce::jlimit (range.start, range.end, std::pow (10.0f, L0 + (L1 - L0) * p));
            cutoff->setValueNotifyingHost (cutoff->convertTo0to1 (hz));
        }
        if (reso != nullptr && plot.getHeight() > 0)
            reso->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, 1.0f - (e.position.y - (float) plot.getY()) / (float) plot.getHeight()));
    }
    else if (dragMode >= 2 && dragMode <= 5)
    {
        juce::RangedAudioParameter* envelope[] = { attack, decay, sustain, release };
        if (auto* p = envelope[dragMode - 2])
            p->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, pressValue + (pressPosition.y - e.position.y) / 200.0f));
    }
    else
        return;
    refresh();
}

void FilterResponseStrip::mouseUp (const juce::MouseEvent&)
{
    gestures (false);
    dragMode = 0;
}
}
