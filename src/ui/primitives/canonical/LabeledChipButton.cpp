#include "ui/primitives/canonical/LabeledChipButton.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui::primitives::canonical
{
LabeledChipButton::LabeledChipButton (const juce::String& caption, int role, int variant)
    : juce::Button (caption), textRole (role), surfaceVariant (variant), font (fontForTypeRole (role))
{
    setWantsKeyboardFocus (true);
    setMouseCursor (juce::MouseCursor::PointingHandCursor);
}

LabeledChipButton::~LabeledChipButton() = default;

void LabeledChipButton::paintButton (juce::Graphics& g, bool over, bool down)
{
    const auto caption = typeRoleRecord (textRole).upperCase ? getButtonText().toUpperCase() : getButtonText();
    drawControlSurface (g, getLocalBounds().toFloat(), over, down, getToggleState(), hasKeyboardFocus (false),
                        isEnabled(), surfaceVariant);
    const auto colour = ! isEnabled() ? token (Token::textDisabled)
                      : getToggleState() ? token (Token::accentPrimaryText)
                      : over ? token (Token::textPrimary)
                             : token (Token::textSecondary);
    g.setFont (font);
    g.setColour (colour);
    g.drawText (caption, getLocalBounds(), juce::Justification::centred, true);
}
}
