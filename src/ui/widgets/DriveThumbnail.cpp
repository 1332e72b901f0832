#include "ui/widgets/DriveThumbnail.h"

#include "engine/DriveShaper.h"
#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

#include <cmath>

namespace morvane::ui::widgets
{
float driveThumbnailCurve (int mode, float u, float g) noexcept
{
    float y = 0.0f;
    if (mode == DriveShaper::soft)
    {
        // Normalised so that the curve always reaches the corners; the shaper's own ceiling is 1 / g.
        y = g <= 1.000001f ? u : DriveShaper::shape (mode, u, u, g) * g / std::tanh (g);
    }
    else
    {
        // The shaper passes its input straight through at unity; the picture shows the shape at the edge of drive.
        y = DriveShaper::shape (mode, u, u, juce::jmax (g, 1.000002f));
    }
    return juce::jlimit (-1.0f, 1.0f, y);
}

DriveThumbnail::DriveThumbnail (juce::AudioProcessorValueTreeState& s)
    : state (s), driveParameter (s.getParameter ("drive")), modeParameter (s.getParameter ("driveMode")),
      listener (std::make_unique<ParamListener> (*this))
{
    setSize (160, 68);
    setMouseCursor (juce::MouseCursor::UpDownResizeCursor);
    setTitle ("Drive curve");
    setHelpText ("Drag up or down for drive; double-click to type decibels.");
    state.addParameterListener ("drive", listener.get());
    state.addParameterListener ("driveMode", listener.get());
}

DriveThumbnail::~DriveThumbnail()
{
    state.removeParameterListener ("drive", listener.get());
    state.removeParameterListener ("driveMode", listener.get());
    cancelPendingUpdate();
    if (valueEditor != nullptr)
        valueEditor->onFocusLost = nullptr;
}

void DriveThumbnail::ParamListener::parameterChanged (const juce::String&, float)
{
    // Any thread, the audio thread too: a posted update that needs no allocation.
    owner.triggerAsyncUpdate();
}

float DriveThumbnail::driveDb() const
{
    return driveParameter != nullptr ? driveParameter->convertFrom0to1 (driveParameter->getValue()) : 0.0f;
}

int DriveThumbnail::modeIndex() const
{
    if (modeParameter == nullptr)
        return 0;
    return juce::jlimit (0, 2, juce::roundToInt (modeParameter->convertFrom0to1 (modeParameter->getValue())));
}

juce::Rectangle<float> DriveThumbnail::curveArea() const { return getLocalBounds().toFloat().reduced (4.0f); }

juce::Point<float> DriveThumbnail::curvePoint (float u) const
{
    const auto inner = curveArea();
    const float g = juce::jmax (std::pow (10.0f, driveDb() / 20.0f), 1.0f);
    const float y = driveThumbnailCurve (modeIndex(), u, g);
    return { inner.getX() + inner.getWidth() * (u + 1.0f) * 0.5f, inner.getCentreY() - inner.getHeight() * 0.45f * y };
}

void DriveThumbnail::paint (juce::Graphics& g)
{
    drawSurface (g, getLocalBounds().toFloat(), 2, 0);
    const auto inner = curveArea();
    if (inner.getWidth() <= 0.0f || inner.getHeight() <= 0.0f)
        return;

    const float d = driveDb();
    const float cy = inner.getCentreY();
    g.setColour (token (Token::textTertiary).withAlpha (0.4f));
    g.fillRect (inner.getX(), cy, inner.getWidth(), 0.5f);

    juce::Path curve;
    for (int i = 0; i < 96; ++i)
    {
        const auto pt = curvePoint (2.0f * (float) i / 95.0f - 1.0f);
        if (i == 0)
            curve.startNewSubPath (pt);
        else
            curve.lineTo (pt);
    }
    g.setColour (token (Token::accentEmber));
    g.strokePath (curve, juce::PathStrokeType (1.5f));

    const auto text = (juce::String (d, 1) + " dB").toUpperCase();
    const float pw = juce::jmin (fontForTypeRole (7).getStringWidthFloat (text) + 16.0f, 0.56f * inner.getWidth());
    const juce::Rectangle<float> pill (inner.getRight() - 4.0f - pw, inner.getY() + 4.0f, pw, 24.0f);
    g.setColour (token (Token::bgPanel).withAlpha (0.94f));
    g.fillRoundedRectangle (pill, 4.0f);
    g.setColour (token (Token::borderHair));
    g.drawRoundedRectangle (pill, 4.0f, 1.0f);
    drawTypeText (g, 7, text, pill, token (d > 12.0f ? Token::semanticWarn : Token::textPrimary), juce::Justification::centred);
}

void DriveThumbnail::mouseDown (const juce::MouseEvent& e)
{
    if (driveParameter == nullptr || e.getNumberOfClicks() > 1)
        return;
    dragging = true;
    pressY = e.y;
    pressValue = driveParameter->getValue();
    driveParameter->beginChangeGesture();
}

void DriveThumbnail::mouseDrag (const juce::MouseEvent& e)
{
    if (dragging)
        driveParameter->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, (float) (pressY - e.y) / 200.0f + pressValue));
}

void DriveThumbnail::mouseUp (const juce::MouseEvent&)
{
    if (! dragging)
        return;
    dragging = false;
    driveParameter->endChangeGesture();
}

void DriveThumbnail::mouseDoubleClick (const juce::MouseEvent&) { openValueEditor(); }

void DriveThumbnail::openValueEditor()
{
    if (driveParameter == nullptr)
        return;
    valueEditor = std::make_unique<juce::TextEditor> ("Drive dB");
    auto& editor = *valueEditor;
    styleTextEditor (editor, "control.fill", "control.borderHover", "border.focus", "control.text", 0.3f);
    editor.setFont (fontForTypeRole (5));
    editor.setBorder ({ 1, 4, 1, 4 });
    editor.setText (juce::String (driveDb(), 1), false);
    editor.setSelectAllWhenFocused (true);
    editor.selectAll();
    const auto area = getLocalBounds();
    editor.setBounds (4, 6, juce::jmax (area.getWidth() - 8, 0), juce::jmax (area.getHeight() - 12, 0));
    editor.onReturnKey = [this] { commitValueEditor(); };
    editor.onFocusLost = [this] { commitValueEditor(); };
    editor.onEscapeKey = [this] { cancelValueEditor(); };
    addAndMakeVisible (editor);
    if (isShowing())
        editor.grabKeyboardFocus();
}

void DriveThumbnail::commitValueEditor()
{
    if (valueEditor == nullptr)
        return;
    if (driveParameter != nullptr)
    {
        const auto range = driveParameter->getNormalisableRange();
        const float v = range.getRange().clipValue (valueEditor->getText().getFloatValue());
        driveParameter->beginChangeGesture();
        driveParameter->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, range.convertTo0to1 (v)));
        driveParameter->endChangeGesture();
    }
    closeValueEditor();
}

void DriveThumbnail::cancelValueEditor() { closeValueEditor(); }

void DriveThumbnail::closeValueEditor()
{
    if (valueEditor == nullptr)
        return;
    // The box may be calling us from its own key or focus handler: it leaves now and is deleted later.
    std::shared_ptr<juce::TextEditor> editor (std::move (valueEditor));
    removeChildComponent (editor.get());
    juce::MessageManager::callAsync ([editor] {});
    repaint();
}
}
