#include "ui/HeaderControls.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"
#include "widgets/Accessibility.h"
#include "widgets/ValueParse.h"

namespace morvane::ui::header
{
juce::String formatGlideChip (double s)
{
    if (s < 0.0005)
        return "0 ms";
    if (s < 1.0)
        return juce::String (juce::roundToInt (s * 1000.0)) + " ms";
    return juce::String (s, 2) + " s";
}

juce::String formatMasterChip (double db)
{
    if (db <= -59.5)
        return juce::String (juce::CharPointer_UTF8 ("\xe2\x88\x92\xe2\x88\x9e dB"));
    return juce::String (db, 1) + " dB";
}

StepChip::StepChip (const juce::String& caption, const juce::String& title, const juce::String& tooltip)
    : LabeledChipButton (caption, 6, 2)
{
    setTitle (title);
    setTooltip (tooltip);
}

HeaderValueChip::HeaderValueChip (const juce::String& l, std::function<juce::String (double)> f)
    : juce::Slider (juce::Slider::LinearVertical, juce::Slider::NoTextBox), label (l), formatter (std::move (f))
{
    if (! formatter)
        formatter = [] (double v) { return juce::String (v, 2); };
    setTitle (label);
    setRange (0.0, 1.0);
    setWantsKeyboardFocus (true);
    setMouseCursor (juce::MouseCursor::UpDownResizeCursor);
    setSize (96, 44);
    addChildComponent (valueEditor);
    valueEditor.onCommit = [this] (const juce::String& typed) { applyTypedValue (typed); };
}

HeaderValueChip::~HeaderValueChip() { valueDrag.end(); }

void HeaderValueChip::attach (juce::RangedAudioParameter* parameter, juce::UndoManager* undoManager)
{
    attachment.reset();
    if (parameter != nullptr)
        attachment = std::make_unique<juce::SliderParameterAttachment> (*parameter, *this, undoManager);
}

std::optional<double> HeaderValueChip::parseValue (const juce::String& typed)
{
    return ostrel::widgets::parseValueFor (typed, *this, formatter);
}

bool HeaderValueChip::applyTypedValue (const juce::String& typed)
{
    return ostrel::widgets::applyTypedValue (*this, parseValue (typed));
}

void HeaderValueChip::showValueEntry()
{
    if (! isEnabled())
        return;
    valueEditor.begin (getLocalBounds().reduced (4, 8), text());
    repaint();
}

void HeaderValueChip::mouseDrag (const juce::MouseEvent& e) { valueDrag.drag (*this, e); }

void HeaderValueChip::mouseDoubleClick (const juce::MouseEvent&) { showValueEntry(); }

bool HeaderValueChip::keyPressed (const juce::KeyPress& key)
{
    if (key.getKeyCode() == juce::KeyPress::returnKey)
    {
        showValueEntry();
        return true;
    }
    return juce::Slider::keyPressed (key);
}

std::unique_ptr<juce::AccessibilityHandler> HeaderValueChip::createAccessibilityHandler()
{
    return ostrel::widgets::makeSliderAccessibility (*this, [this] { return text(); },
                                                     [this] (const juce::String& typed) { return parseValue (typed); });
}

void HeaderValueChip::mouseEnter (const juce::MouseEvent& e)
{
    hovered = true;
    repaint();
    juce::Slider::mouseEnter (e);
}

void HeaderValueChip::mouseExit (const juce::MouseEvent& e)
{
    hovered = pressed = false;
    repaint();
    juce::Slider::mouseExit (e);
}

void HeaderValueChip::mouseDown (const juce::MouseEvent& e)
{
    valueEditor.end();
    pressed = true;
    repaint();
    if (isEnabled() && ! e.mods.isPopupMenu())
        valueDrag.begin (*this, e);
}

void HeaderValueChip::mouseUp (const juce::MouseEvent&)
{
    valueDrag.end();
    pressed = false;
    repaint();
}

void HeaderValueChip::paint (juce::Graphics& g)
{
    drawControlSurface (g, getLocalBounds().toFloat(), hovered, pressed, false, hasKeyboardFocus (false), isEnabled(), 4);
    if (! valueEditor.isEditing())
        drawTypeText (g, 5, text(), getLocalBounds().reduced (8, 0), token (isEnabled() ? Token::textPrimary : Token::textDisabled),
                      juce::Justification::centred);
}

LegatoButton::LegatoButton() : juce::Button ("legato")
{
    setClickingTogglesState (true);
    setSize (96, 44);
    setWantsKeyboardFocus (true);
    setMouseCursor (juce::MouseCursor::PointingHandCursor);
    setTitle ("Legato");
    setTooltip ("Legato: held notes glide without retriggering envelopes.");
}

void LegatoButton::paintButton (juce::Graphics& g, bool over, bool down)
{
    drawControlSurface (g, getLocalBounds().toFloat(), over, down, getToggleState(), hasKeyboardFocus (false), isEnabled(), 4);
    const auto colour = ! isEnabled() ? Token::textDisabled : getToggleState() ? Token::textPrimary : Token::textSecondary;
    drawTypeText (g, 5, getToggleState() ? onText : offText, getLocalBounds().reduced (4, 0), token (colour), juce::Justification::centred);
}

TransportBpmDisplay::TransportBpmDisplay (juce::AudioProcessorValueTreeState& p) : parameters (p)
{
    setWantsKeyboardFocus (true);
    setMouseCursor (juce::MouseCursor::IBeamCursor);
    setInterceptsMouseClicks (true, false);
    setTitle ("Tempo");
}

TransportBpmDisplay::~TransportBpmDisplay() = default;

juce::String TransportBpmDisplay::text() const { return bpm >= 100.0 ? juce::String (juce::roundToInt (bpm)) : juce::String (bpm, 1); }

void TransportBpmDisplay::mouseDoubleClick (const juce::MouseEvent&)
{
    if (editable)
        beginEdit();
}

void TransportBpmDisplay::beginEdit()
{
    if (editor != nullptr)
        return;
    editor = std::make_unique<juce::TextEditor>();
    editor->setFont (fontForTypeRole (5));
    styleTextEditor (*editor, "transparent", "transparent", "transparent", "text.primary", 0.35f);
    editor->setInputRestrictions (0, "0123456789.");
    editor->setText (juce::String (bpm, 1), false);
    editor->selectAll();
    editor->onReturnKey = [this] { endEdit (true); };
    editor->onFocusLost = [this] { endEdit (true); };
    editor->onEscapeKey = [this] { endEdit (false); };
    addAndMakeVisible (*editor);
    resized();
    editor->grabKeyboardFocus();
}

void TransportBpmDisplay::endEdit (bool commit)
{
    if (editor == nullptr)
        return;
    const auto typed = editor->getText().trim();
    if (commit && typed.isNotEmpty())
    {
        const auto value = juce::jlimit (40.0, 240.0, typed.getDoubleValue());
        if (auto* parameter = parameters.getParameter ("lfoSyncBpm"))
        {
            parameter->beginChangeGesture();
            parameter->setValueNotifyingHost (parameter->convertTo0to1 ((float) value));
            parameter->endChangeGesture();
        }
        bpm = value;
    }
    // The editor may be inside its own callback: let it return before it goes.
    auto* old = editor.release();
    old->onFocusLost = nullptr;
    old->setVisible (false);
    removeChildComponent (old);
    juce::MessageManager::callAsync ([old] { delete old; });
    repaint();
}

void TransportBpmDisplay::paint (juce::Graphics& g)
{
    const auto bounds = getLocalBounds().toFloat();
    const bool focused = hasKeyboardFocus (true);
    drawSurface (g, bounds, 1, focused ? SurfaceState::focused : synced ? SurfaceState::selected : SurfaceState::rest);
    if (synced)
    {
        g.setColour (overlay::selected);
        g.fillRoundedRectangle (bounds, 2.0f);
        g.setColour (token (Token::controlValue));
        g.fillRect (bounds.withHeight (2.0f));
    }
    if (! focused)
    {
        g.setColour (token (Token::controlBorder));
        g.drawRoundedRectangle (bounds.reduced (0.5f), 2.0f, 1.0f);
    }
    if (editor == nullptr)
        drawTypeText (g, 5, text(), getLocalBounds().reduced (8, 0), token (Token::textSecondary), juce::Justification::centredLeft);
}

void TransportBpmDisplay::resized()
{
    if (editor != nullptr)
        editor->setBounds (getLocalBounds().reduced (8, 4));
}

WorkflowButton::WorkflowButton() : IconButton ("workflow")
{
    setSize (44, 44);
    setTitle ("Workflow menu");
    setTooltip ("Open workflow tools: undo, compare slots, randomise, matrix, and browser.");
    drawIcon = [] (juce::Graphics& g, const juce::Rectangle<float>& b, juce::Colour c)
    {
        g.setColour (c);
        for (float dx : { -11.0f, 0.0f, 11.0f })
            g.fillEllipse (juce::Rectangle<float> (4.4f, 4.4f).withCentre (b.getCentre().translated (dx, 0.0f)));
    };
}

SettingsButton::SettingsButton() : IconButton ("settings")
{
    setSize (44, 44);
    setTitle ("Settings menu");
    setTooltip ("Open editor settings for display scale, tooltips, themes, and files.");
    drawIcon = [] (juce::Graphics& g, const juce::Rectangle<float>& b, juce::Colour c)
    {
        const auto centre = b.getCentre();
        g.setColour (c);
        g.drawEllipse (juce::Rectangle<float> (10.0f, 10.0f).withCentre (centre), 1.4f);
        g.fillEllipse (juce::Rectangle<float> (3.0f, 3.0f).withCentre (centre));
        for (int i = 0; i < 8; ++i)
        {
            const auto angle = juce::MathConstants<float>::pi * 0.25f * (float) i;
            const juce::Point<float> dir (std::sin (angle), -std::cos (angle));
            g.drawLine ({ centre + dir * 8.0f, centre + dir * 10.4f }, 1.3f);
        }
    };
}
}
