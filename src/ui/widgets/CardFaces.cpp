#include "ui/widgets/CardFaces.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui::widgets
{
FaceToggle::FaceToggle (const juce::String& more) : LabeledChipButton (more, 6, 8), moreText (more)
{
    setClickingTogglesState (true);
    setTitle ("More controls");
    setTooltip ("Show this card's further controls, or go back to its first face.");
    setSize (44, 22);
}

FaceToggle::~FaceToggle() = default;

void FaceToggle::showSecondFace (bool second)
{
    setToggleState (second, juce::dontSendNotification);
    clicked();
}

void FaceToggle::clicked()
{
    repaint();
    if (onFlip)
        onFlip (getToggleState());
}

void FaceToggle::paintButton (juce::Graphics& g, bool over, bool down)
{
    const bool second = getToggleState();
    drawControlSurface (g, getLocalBounds().toFloat(), over, down, false, hasKeyboardFocus (false), isEnabled(), 8);
    drawTypeText (g, 6, second ? juce::String ("BACK") : moreText, getLocalBounds(),
                  token (over ? Token::textPrimary : Token::textSecondary), juce::Justification::centred);
}

KnobValueField::KnobValueField (const juce::String& label, ostrel::widgets::Knob& k) : FieldBox (label), knob (k)
{
    setCompact (true);
    knob.setValueVisible (false);
    knob.addListener (this);
    setContent (&knob);
}

KnobValueField::~KnobValueField() { knob.removeListener (this); }

void KnobValueField::paint (juce::Graphics& g)
{
    FieldBox::paint (g);
    const auto row = getLocalBounds().removeFromTop (std::min (getHeight(), 22));
    ostrel::widgets::drawRoleText (g, 4, knob.getTextFromValue (knob.getValue()), row,
                                   ostrel::widgets::paletteColour (ostrel::widgets::textPrimary), 34);
}

void KnobValueField::resized()
{
    FieldBox::resized();
    // The knob stands at the left under its label, as the other fields' controls do.
    const int y = std::min (getHeight(), 22);
    const int size = std::min (getHeight() - y, 30);
    knob.setBounds (0, y, std::max (size, 0), std::max (size, 0));
}
}
