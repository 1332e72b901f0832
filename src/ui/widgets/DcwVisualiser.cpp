#include "ui/widgets/DcwVisualiser.h"

#include "engine/WaveShape.h"
#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"

namespace morvane::ui::widgets
{
DcwVisualiser::DcwVisualiser (juce::AudioProcessorValueTreeState& s, int index) : state (s), oscIndex (index)
{
    const auto prefix = "osc" + juce::String (oscIndex);
    depthParameter = state.getParameter (prefix + "DcwDepth");
    waveParameter = state.getParameter (prefix + "Wave");
    setSize (96, 96);
    setMouseCursor (juce::MouseCursor::UpDownResizeCursor);
    refresh();
    startTimerHz (30);
}

DcwVisualiser::~DcwVisualiser()
{
    if (dragging && depthParameter != nullptr)
        depthParameter->endChangeGesture();
}

bool DcwVisualiser::refresh()
{
    if (waveParameter == nullptr || depthParameter == nullptr)
        return false;
    const int wave = juce::roundToInt (waveParameter->convertFrom0to1 (waveParameter->getValue()));
    const float depth = depthParameter->convertFrom0to1 (depthParameter->getValue());
    if (wave == lastWave && std::abs (depth - lastDepth) < 0.005f)
        return false;
    lastWave = wave;
    lastDepth = depth;
    const int w = juce::jlimit (0, 9, wave);
    for (size_t i = 0; i < 128; ++i)
    {
        const float phase = (float) i / 128.0f;
        neutralCurve[i] = waveShape (w, phase, 0.0f, 16.0f);
        shapedCurve[i] = waveShape (w, phase, depth, 16.0f);
    }
    repaint();
    return true;
}

void DcwVisualiser::paint (juce::Graphics& g)
{
    drawSurface (g, getLocalBounds().toFloat(), 2, 0);
    const auto inner = getLocalBounds().toFloat().reduced (4.0f);
    if (inner.getWidth() < 4.0f || inner.getHeight() < 4.0f)
        return;
    g.setColour (token (Token::borderHair));
    g.drawLine (inner.getX(), inner.getCentreY(), inner.getRight(), inner.getCentreY(), 1.0f);

    auto pathOf = [&inner] (const std::array<float, 128>& curve) {
        juce::Path path;
        for (size_t i = 0; i < 128; ++i)
        {
            const float x = inner.getX() + inner.getWidth() * (float) i / 127.0f;
            const float y = inner.getCentreY() - juce::jlimit (-1.0f, 1.0f, curve[i]) * (inner.getHeight() / 2.0f) * 0.85f;
            if (i == 0)
                path.startNewSubPath (x, y);
            else
                path.lineTo (x, y);
        }
        return path;
    };
    g.setColour (token (Token::textTertiary).withAlpha (0.72f));
    g.strokePath (pathOf (neutralCurve), juce::PathStrokeType (1.0f));
    g.setColour (token (Token::accentPrimary));
    g.strokePath (pathOf (shapedCurve), juce::PathStrokeType (1.5f));
}

void DcwVisualiser::mouseDown (const juce::MouseEvent& e)
{
    if (depthParameter == nullptr || dragging)
        return;
    dragging = true;
    pressY = e.position.y;
    pressValue = depthParameter->getValue();
    depthParameter->beginChangeGesture();
}

void DcwVisualiser::mouseDrag (const juce::MouseEvent& e)
{
    if (! dragging)
        return;
    depthParameter->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, pressValue + (pressY - e.position.y) / 150.0f));
    refresh();
}

void DcwVisualiser::mouseUp (const juce::MouseEvent&)
{
    if (! dragging)
        return;
    dragging = false;
    depthParameter->endChangeGesture();
}
}
