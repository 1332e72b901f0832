#include "ui/widgets/CommandButtons.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui::widgets
{
namespace
{
void common (juce::TextButton& button, const juce::String& tooltip)
{
    button.getProperties().set (surfaceVariantProperty, "commandButton");
    button.setTooltip (tooltip);
    button.setTitle (tooltip);
    button.setWantsKeyboardFocus (true);
    button.setMouseCursor (juce::MouseCursor::PointingHandCursor);
}
}

void styleCloseButton (juce::TextButton& button, const juce::String& tooltip, const juce::String& description)
{
    common (button, tooltip);
    button.setDescription (description);
    button.setColour (juce::TextButton::buttonColourId, juce::Colours::transparentBlack);
    button.setColour (juce::TextButton::buttonOnColourId, juce::Colours::transparentBlack);
    button.setColour (juce::ComboBox::outlineColourId, juce::Colours::transparentBlack);
    button.setColour (juce::TextButton::textColourOffId, token (Token::textSecondary));
    button.setColour (juce::TextButton::textColourOnId, token (Token::textPrimary));
}

void styleCommandButton (juce::TextButton& button, const juce::String& tooltip)
{
    common (button, tooltip);
    button.setColour (juce::TextButton::buttonColourId, token (Token::controlFill));
    button.setColour (juce::TextButton::buttonOnColourId, token (Token::controlFill));
    button.setColour (juce::TextButton::textColourOffId, token (Token::controlText));
    button.setColour (juce::TextButton::textColourOnId, token (Token::controlText));
    button.setColour (juce::ComboBox::outlineColourId, token (Token::controlBorder));
}

void styleLabel (juce::Label& label, const juce::String& colourToken, int typeRole)
{
    label.getProperties().set (themeProperty::label, colourToken);
    label.setFont (fontForTypeRole (typeRole));
    label.setColour (juce::Label::textColourId, tokenByName (colourToken, token (Token::textSecondary)));
    label.setInterceptsMouseClicks (false, false);
    label.setBorderSize ({}); // text lines up with the section headers above it
}
}
