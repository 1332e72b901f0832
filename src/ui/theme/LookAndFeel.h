#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvane::ui
{
// Brings the framework's stock widgets into line with the surface painters and type roles.
// No colour scheme of its own: everything is read from the tokens at paint time.
class LookAndFeel : public juce::LookAndFeel_V4
{
public:
    void drawButtonBackground (juce::Graphics&, juce::Button&, const juce::Colour&, bool over, bool down) override;
    juce::Font getTextButtonFont (juce::TextButton&, int buttonHeight) override;
    void drawButtonText (juce::Graphics&, juce::TextButton&, bool over, bool down) override;

    juce::Font getAlertWindowTitleFont() override;
    juce::Font getAlertWindowMessageFont() override;
    juce::Font getAlertWindowFont() override;
    juce::Font getPopupMenuFont() override;

    void drawComboBox (juce::Graphics&, int width, int height, bool down, int buttonX, int buttonY, int buttonW,
                       int buttonH, juce::ComboBox&) override;
    juce::Font getComboBoxFont (juce::ComboBox&) override;
    void positionComboBoxText (juce::ComboBox&, juce::Label&) override;

    juce::Font getLabelFont (juce::Label& label) override { return label.getFont(); }
    juce::Font getSliderPopupFont (juce::Slider&) override;

    // The role of a text button's caption, by its height and text.
    static int textButtonRole (const juce::String& text, int buttonHeight) noexcept;
};
}
