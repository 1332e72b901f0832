#include "ui/PlaceholderPanel.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui
{
void drawCloseGlyph (juce::Graphics& g, const juce::Rectangle<float>& bounds, juce::Colour colour)
{
    const auto r = bounds.withSizeKeepingCentre (8.0f, 8.0f);
    g.setColour (colour);
    g.drawLine ({ r.getTopLeft(), r.getBottomRight() }, 1.5f);
    g.drawLine ({ r.getBottomLeft(), r.getTopRight() }, 1.5f);
}

PlaceholderPanel::PlaceholderPanel (const juce::String& t, int level, bool closable)
    : title (t), surfaceLevel (level)
{
    setName (t);
    setTitle (t);
    if (closable)
    {
        closeButton = std::make_unique<primitives::canonical::IconButton> ("Close", drawCloseGlyph);
        closeButton->setTitle ("Close " + t);
        closeButton->onClick = [this] { if (onClose) onClose(); };
        addAndMakeVisible (*closeButton);
        setWantsKeyboardFocus (true);
    }
}

PlaceholderPanel::~PlaceholderPanel() = default;

void PlaceholderPanel::paint (juce::Graphics& g)
{
    drawSurface (g, getLocalBounds().toFloat(), surfaceLevel, rest);
    drawTypeText (g, 6, title, getLocalBounds().reduced (12).withHeight (24), token (Token::textSecondary),
                  juce::Justification::centredLeft);
}

void PlaceholderPanel::resized()
{
    if (closeButton != nullptr)
        closeButton->setBounds (getWidth() - 36, 12, 24, 24);
}
}
