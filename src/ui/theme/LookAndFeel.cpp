#include "ui/theme/LookAndFeel.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui
{
void LookAndFeel::drawButtonBackground (juce::Graphics& g, juce::Button& button, const juce::Colour&, bool over, bool down)
{
    drawControlSurface (g, button.getLocalBounds().toFloat(), over, down, button.getToggleState(),
                        button.hasKeyboardFocus (false), button.isEnabled(), surfaceVariantOf (button, 0));
}

int LookAndFeel::textButtonRole (const juce::String& text, int buttonHeight) noexcept
{
    const bool shortCapitalWord = text.length() < 6 && text == text.toUpperCase();
    return buttonHeight >= 25 && ! shortCapitalWord && text.length() >= 3 ? 3 : 6;
}

juce::Font LookAndFeel::getTextButtonFont (juce::TextButton& button, int buttonHeight)
{
    auto font = fontForTypeRole (textButtonRole (button.getButtonText(), buttonHeight));
    if (buttonHeight < 20)
        font.setHeight ((float) juce::jmax (8, buttonHeight - 8));
    return font;
}

void LookAndFeel::drawButtonText (juce::Graphics& g, juce::TextButton& button, bool over, bool)
{
    const auto colour = ! button.isEnabled() ? token (Token::textDisabled)
                      : over || button.getToggleState() ? token (Token::controlText)
                                                        : token (Token::textSecondary);
    g.setFont (getTextButtonFont (button, button.getHeight()));
    g.setColour (colour);
    g.drawFittedText (button.getButtonText(), button.getLocalBounds().reduced (8, 0), juce::Justification::centred, 1);
}

juce::Font LookAndFeel::getAlertWindowTitleFont() { return fontForTypeRole (1); }
juce::Font LookAndFeel::getAlertWindowMessageFont() { return fontForTypeRole (3); }
juce::Font LookAndFeel::getAlertWindowFont() { return fontForTypeRole (3); }
juce::Font LookAndFeel::getPopupMenuFont() { return fontForTypeRole (3); }
juce::Font LookAndFeel::getComboBoxFont (juce::ComboBox&) { return fontForTypeRole (5); }
juce::Font LookAndFeel::getSliderPopupFont (juce::Slider&) { return fontForTypeRole (5); }

namespace
{
bool isCompact (const juce::ComboBox& box)
{
    const auto& props = box.getProperties();
    if (props.contains ("ostrel.compactChoice"))
        return (bool) props["ostrel.compactChoice"];
    return (bool) props.getWithDefault ("morvane.compactChoice", false);
}
}

void LookAndFeel::drawComboBox (juce::Graphics& g, int width, int height, bool down, int, int, int, int, juce::ComboBox& box)
{
    drawControlSurface (g, { 0.0f, 0.0f, (float) width, (float) height }, box.isMouseOver (true), down, false,
                        box.hasKeyboardFocus (true), box.isEnabled(), surfaceVariantOf (box, 1));
    const auto x = (float) width - (isCompact (box) ? 8.0f : 14.0f);
    const auto y = (float) height * 0.5f;
    juce::Path arrow;
    arrow.startNewSubPath (x - 4.0f, y - 2.0f);
    arrow.lineTo (x, y + 2.0f);
    arrow.lineTo (x + 4.0f, y - 2.0f);
    g.setColour (box.isEnabled() ? token (Token::controlText) : token (Token::textDisabled));
    g.strokePath (arrow, juce::PathStrokeType (1.5f, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));
}

void LookAndFeel::positionComboBoxText (juce::ComboBox& box, juce::Label& label)
{
    if (isCompact (box))
    {
        label.setBounds (4, 1, box.getWidth() - 14, box.getHeight() - 2);
        label.setFont (fontForTypeRole (7));
        // Narrow field cells squeeze a long choice a little before they cut it.
        label.setMinimumHorizontalScale (0.6f);
    }
    else
    {
        label.setBounds (8, 1, box.getWidth() - 30, box.getHeight() - 2);
        label.setFont (getComboBoxFont (box));
    }
    label.setJustificationType (box.getJustificationType());
}
}
