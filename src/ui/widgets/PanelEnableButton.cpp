#include "ui/widgets/PanelEnableButton.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui::widgets
{
PanelEnableButton::PanelEnableButton (juce::AudioProcessorValueTreeState& s, const juce::String& id,
                                      const juce::String& accessibleTitle, const juce::String& helpText)
    : LabeledChipButton ("ON", 6, 8),
      state (s),
      parameterId (id),
      parameter (dynamic_cast<juce::AudioParameterBool*> (s.getParameter (id)))
{
    setTitle (accessibleTitle);
    setHelpText (helpText);
    setTooltip (helpText);
    setClickingTogglesState (true);
    setToggleState (parameter == nullptr || parameter->get(), juce::dontSendNotification);
    setSize (36, 22);
    if (parameter != nullptr)
        state.addParameterListener (parameterId, this);
}

PanelEnableButton::~PanelEnableButton()
{
    if (parameter != nullptr)
        state.removeParameterListener (parameterId, this);
}

void PanelEnableButton::clicked()
{
    if (parameter != nullptr)
    {
        parameter->beginChangeGesture();
        parameter->setValueNotifyingHost (getToggleState() ? 1.0f : 0.0f);
        parameter->endChangeGesture();
    }
    if (onToggled)
        onToggled (getToggleState());
}

void PanelEnableButton::syncFromParameter()
{
    if (parameter == nullptr)
        return;
    setToggleState (parameter->get(), juce::dontSendNotification);
    repaint();
    if (onToggled)
        onToggled (getToggleState());
}

void PanelEnableButton::parameterChanged (const juce::String&, float)
{
    triggerAsyncUpdate();
}

void PanelEnableButton::paintButton (juce::Graphics& g, bool over, bool down)
{
    const bool on = getToggleState();
    drawControlSurface (g, getLocalBounds().toFloat(), over, down, on, hasKeyboardFocus (false), isEnabled(), 8);
    const auto colour = ! isEnabled() ? token (Token::textDisabled)
                      : on            ? token (Token::accentPrimaryText)
                      : over          ? token (Token::textPrimary)
                                      : token (Token::textSecondary);
    drawTypeText (g, 6, on ? "ON" : "OFF", getLocalBounds(), colour, juce::Justification::centred);
}

}
