#include "ui/widgets/PanelEnableButton.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui::widgets
{
namespace
{
constexpr int smallLabelRole = 6;
constexpr int enableSurfaceVariant = 8;
}

PanelEnableButton::PanelEnableButton (juce::AudioProcessorValueTreeState& s, const juce::String& id,
                                      const juce::String& accessibleTitle, const juce::String& helpText)
    : LabeledChipButton ("ON", smallLabelRole, enableSurfaceVariant),
      state (s),
      parameterId (id),
      parameter (dynamic_cast<juce::AudioParameterBool*> (s.getParameter (id)))
{
    setTitle (accessibleTitle);
    setHelpText (helpText);
    setSize (36, 22);
    setClickingTogglesState (true);
    setWantsKeyboardFocus (true);
    setMouseCursor (juce::MouseCursor::PointingHandCursor);
    setToggleState (parameter == nullptr || parameter->get(), juce::dontSendNotification);
    onClick = [this] { writeParameter (getToggleState()); };
    if (parameter != nullptr)
        state.addParameterListener (parameterId, this);
}

PanelEnableButton::~PanelEnableButton()
{
    if (parameter != nullptr)
        state.removeParameterListener (parameterId, this);
}

void PanelEnableButton::writeParameter (bool on)
{
    if (parameter == nullptr)
        return;
    parameter->beginChangeGesture();
    parameter->setValueNotifyingHost (parameter->convertTo0to1 (on ? 1.0f : 0.0f));
    parameter->endChangeGesture();
}

void PanelEnableButton::parameterChanged (const juce::String&, float newValue)
{
    // Any thread may call here: only post to the message thread.
    juce::MessageManager::callAsync ([safe = juce::Component::SafePointer<PanelEnableButton> (this), newValue]
                                     {
                                         if (safe != nullptr)
                                             safe->applyValue (newValue);
                                     });
}

void PanelEnableButton::applyValue (float value)
{
    const bool on = value >= 0.5f;
    setToggleState (on, juce::dontSendNotification);
    repaint();
    if (onToggled)
        onToggled (on);
}

void PanelEnableButton::paintButton (juce::Graphics& g, bool over, bool down)
{
    const bool on = getToggleState();
    drawControlSurface (g, getLocalBounds().toFloat(), over, down, on, hasKeyboardFocus (false), isEnabled(),
                        enableSurfaceVariant);
    const auto colour = ! isEnabled() ? token (Token::textDisabled)
                      : on ? token (Token::accentPrimaryText)
                      : over ? token (Token::textPrimary)
                             : token (Token::textSecondary);
    drawTypeText (g, smallLabelRole, on ? "ON" : "OFF", getLocalBounds(), colour, juce::Justification::centred);
}
}
