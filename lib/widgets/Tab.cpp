#include "Tab.h"

namespace ostrel::widgets
{

Tab::Tab(const juce::String& text, int v) : juce::Button(text), variant(v)
{
    setClickingTogglesState(true);
    setWantsKeyboardFocus(true);
    setMouseCursor(juce::MouseCursor::PointingHandCursor);
    setSize(96, 44); // the accessibility title falls back to the button text
}

Tab::~Tab() = default;

void Tab::setVariant(int newVariant)
{
    if (newVariant == variant)
        return;
    variant = newVariant;
    repaint();
}

void Tab::paintButton(juce::Graphics& g, bool over, bool down)
{
    const bool on = getToggleState();
    const bool danger = variant == 1;
    int fill = on ? accentSelection : surfaceBase;
    int outline = (over || down) ? borderFocus : borderSubtle;
    int text = on ? textPrimary : textMuted;
    if (danger)
    {
        if (down)
            fill = outline = semanticError, text = textPrimary;
        else if (over)
            outline = text = semanticError;
        else
            outline = borderSubtle, text = textMuted;
    }

    const auto bounds = getLocalBounds().toFloat();
    g.setColour(paletteColour(fill));
    g.fillRoundedRectangle(bounds, 2.0f);
    if (on || danger)
    {
        g.setColour(paletteColour(outline));
        g.drawRoundedRectangle(bounds.reduced(0.5f), 2.0f, 1.0f);
    }
    if (on)
    {
        g.setColour(paletteColour(danger ? semanticError : accentPrimary));
        g.fillRect(bounds.withHeight(2.0f));
    }
    if (hasKeyboardFocus(false))
    {
        g.setColour(paletteColour(borderFocus));
        g.drawRoundedRectangle(bounds.reduced(1.0f), 2.0f, 2.0f);
    }
    drawRoleText(g, 6, getButtonText(), getLocalBounds(), paletteColour(isEnabled() ? text : textDisabled), 36);
}

} // namespace ostrel::widgets
