#include "ValueChip.h"
#include "Accessibility.h"
#include "ValueParse.h"

namespace ostrel::widgets
{

ValueChip::ValueChip(const juce::String& labelText) : label(labelText)
{
    setSliderStyle(juce::Slider::LinearVertical);
    setTextBoxStyle(juce::Slider::NoTextBox, false, 0, 0);
    setRange(0.0, 1.0, 0.0);
    setWantsKeyboardFocus(true);
    setMouseCursor(juce::MouseCursor::UpDownResizeCursor);
    setSize(96, 44);
    setTitle(labelText);

    addChildComponent(valueEditor);
    valueEditor.onCommit = [this](const juce::String& text) { applyTypedValue(text); };
}

ValueChip::ValueChip(juce::AudioProcessorValueTreeState& state, const juce::String& parameterId,
                     const juce::String& labelText)
    : ValueChip(labelText)
{
    if (state.getParameter(parameterId) != nullptr)
        attachment = std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment>(state, parameterId, *this);
}

ValueChip::~ValueChip() { valueDrag.end(); }

void ValueChip::setArrowsVisible(bool visible)
{
    if (visible == arrowsVisible)
        return;
    arrowsVisible = visible;
    repaint();
}

void ValueChip::setValueFormatter(Formatter formatter)
{
    valueFormatter = std::move(formatter);
    repaint();
}

juce::String ValueChip::formattedValue() const
{
    return valueFormatter ? valueFormatter(getValue()) : juce::String(getValue(), 2);
}

juce::String ValueChip::getTextFromValue(double value)
{
    return valueFormatter ? valueFormatter(value) : juce::String(value, 2);
}

std::optional<double> ValueChip::parseValue(const juce::String& text)
{
    return parseValueFor(text, *this, [this](double v) { return getTextFromValue(v); });
}

double ValueChip::getValueFromText(const juce::String& text) { return parseValue(text).value_or(getValue()); }

bool ValueChip::applyTypedValue(const juce::String& text) { return ostrel::widgets::applyTypedValue(*this, parseValue(text)); }

void ValueChip::showValueEntry()
{
    if (! isEnabled())
        return;
    valueEditor.begin(getLocalBounds().reduced(4, 8), formattedValue());
    repaint();
}

void ValueChip::mouseEnter(const juce::MouseEvent& e)
{
    hovered = true;
    repaint();
    juce::Slider::mouseEnter(e);
}

void ValueChip::mouseExit(const juce::MouseEvent& e)
{
    hovered = false;
    pressed = false;
    repaint();
    juce::Slider::mouseExit(e);
}

void ValueChip::mouseDown(const juce::MouseEvent& e)
{
    valueEditor.end();
    pressed = true;
    repaint();
    if (isEnabled() && ! e.mods.isPopupMenu())
        valueDrag.begin(*this, e);
}

void ValueChip::mouseDrag(const juce::MouseEvent& e) { valueDrag.drag(*this, e); }

void ValueChip::mouseUp(const juce::MouseEvent&)
{
    valueDrag.end();
    pressed = false;
    repaint();
}

void ValueChip::mouseDoubleClick(const juce::MouseEvent&) { showValueEntry(); }

bool ValueChip::keyPressed(const juce::KeyPress& key)
{
    if (key.getKeyCode() == juce::KeyPress::returnKey)
    {
        showValueEntry();
        return true;
    }
    return juce::Slider::keyPressed(key);
}

void ValueChip::paint(juce::Graphics& g)
{
    const auto bounds = getLocalBounds().toFloat();
    g.setColour(paletteColour(pressed || hovered ? accentSelection : surfaceOverlay));
    g.fillRoundedRectangle(bounds, 2.0f);

    const bool focused = hasKeyboardFocus(false);
    g.setColour(paletteColour(focused ? borderFocus : borderSubtle));
    g.drawRoundedRectangle(bounds.reduced(0.5f), 2.0f, focused ? 2.0f : 1.0f);

    auto content = getLocalBounds().reduced(8, 0);
    if (arrowsVisible && content.getWidth() >= 13)
    {
        const float ax = (float) content.getRight() - 4.0f, cy = (float) content.getCentreY();
        juce::Path chevrons;
        chevrons.startNewSubPath(ax - 2.0f, cy - 4.0f);
        chevrons.lineTo(ax, cy - 6.0f);
        chevrons.lineTo(ax + 2.0f, cy - 4.0f);
        chevrons.startNewSubPath(ax - 2.0f, cy + 4.0f);
        chevrons.lineTo(ax, cy + 6.0f);
        chevrons.lineTo(ax + 2.0f, cy + 4.0f);
        g.setColour(paletteColour(textMuted));
        g.strokePath(chevrons, juce::PathStrokeType(1.0f));
        content.removeFromRight(12);
    }

    if (label.isNotEmpty())
        drawRoleText(g, 6, label, content.removeFromTop(std::min(content.getHeight(), 22)), paletteColour(textMuted), 36);
    if (! valueEditor.isEditing())
        drawRoleText(g, 5, formattedValue(), content, paletteColour(isEnabled() ? textPrimary : textDisabled), 36);
}

std::unique_ptr<juce::AccessibilityHandler> ValueChip::createAccessibilityHandler()
{
    return makeSliderAccessibility(*this, [this] { return formattedValue(); },
                                   [this](const juce::String& text) { return parseValue(text); });
}

} // namespace ostrel::widgets
