#include "ui/primitives/canonical/IconButton.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"

namespace morvane::ui::primitives::canonical
{
IconButton::IconButton (const juce::String& name, IconPainter painter)
    : juce::Button (name), drawIcon (std::move (painter))
{
    setWantsKeyboardFocus (true);
    setMouseCursor (juce::MouseCursor::PointingHandCursor);
}

IconButton::~IconButton() = default;

void IconButton::paintButton (juce::Graphics& g, bool over, bool down)
{
    const auto bounds = getLocalBounds().toFloat();
    drawControlSurface (g, bounds, over, down, getToggleState(), hasKeyboardFocus (false), isEnabled(), surfaceVariant);
    if (drawIcon)
        drawIcon (g, bounds, ! isEnabled() ? token (Token::textDisabled)
                           : over ? token (Token::textPrimary)
                                  : token (Token::textSecondary));
}
}
