#include "ui/widgets/RoutingRow.h"

#include "audio/EditHistory.h"

#include "engine/ModLabels.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"
#include "ui/widgets/CommandButtons.h"

namespace morvane::ui::widgets
{
RoutingRow::ParamListener::ParamListener (juce::RangedAudioParameter& p, std::function<void()> f)
    : parameter (p), callback (std::move (f))
{
    parameter.addListener (this);
}

RoutingRow::ParamListener::~ParamListener()
{
    parameter.removeListener (this);
    cancelPendingUpdate();
}

RoutingRow::RoutingRow (juce::AudioProcessorValueTreeState& s, int n)
    : state (s), slot (n), slotText (juce::String::formatted ("%02d", n))
{
    setName ("RoutingRow" + slotText);
    sourceChip = std::make_unique<SourceChip> ("off", "OFF");
    sourceChip->setDraggable (false);
    sourceChip->setOnClick ([this]
    {
        juce::Component::SafePointer<RoutingRow> safe (this);
        buildSourceMenu().showMenuAsync (juce::PopupMenu::Options().withTargetComponent (sourceChip.get()), [safe] (int result)
        {
            if (safe != nullptr && result > 0)
                safe->chooseSource (result - 1);
        });
    });
    addAndMakeVisible (*sourceChip);

    destinationChoice = std::make_unique<ostrel::widgets::ChoiceDropdown> (state, "mod" + juce::String (slot) + "Dest", "Modulation destination");
    addAndMakeVisible (*destinationChoice);

    amountBar.setInteractive (true);
    amountBar.setTitle ("Modulation amount " + juce::String (slot));
    if (auto* amount = parameter ("Amount"))
    {
        amountBar.onGestureStart = [amount] { amount->beginChangeGesture(); };
        amountBar.onGestureEnd = [amount] { amount->endChangeGesture(); };
        amountBar.onValueChanged = [amount] (float v) { amount->setValueNotifyingHost (amount->convertTo0to1 (v)); };
    }
    addAndMakeVisible (amountBar);

    if (auto* curve = dynamic_cast<juce::AudioParameterChoice*> (state.getParameter ("matrix" + juce::String (slot) + "Curve")))
    {
        curveControl = std::make_unique<ostrel::widgets::SegmentedControl> (*curve, juce::StringArray { "LIN", "EXP" });
        addAndMakeVisible (*curveControl);
    }

    clearButton.setButtonText (juce::String (juce::CharPointer_UTF8 ("\xe2\x9c\x95")));
    styleCloseButton (clearButton, "Clear modulation slot", "Remove the source, destination, and amount from this slot.");
    clearButton.onClick = [this] { clear(); };
    addAndMakeVisible (clearButton);

    hoverRelay = std::make_unique<HoverRelay> (*this);
    addMouseListener (hoverRelay.get(), true);

    if (auto* source = parameter ("Source"))
        sourceListener = std::make_unique<ParamListener> (*source, [this] { refreshSource(); });
    if (auto* amount = parameter ("Amount"))
        amountListener = std::make_unique<ParamListener> (*amount, [this] { refreshAmount(); });
    refreshSource();
    refreshAmount();
    setSize (704, 88);
}

RoutingRow::~RoutingRow()
{
    removeMouseListener (hoverRelay.get());
}

juce::RangedAudioParameter* RoutingRow::parameter (const char* field) const
{
    return state.getParameter ("mod" + juce::String (slot) + field);
}

void RoutingRow::refreshSource()
{
    auto* source = dynamic_cast<juce::AudioParameterChoice*> (parameter ("Source"));
    const int count = source != nullptr ? source->choices.size() : 1;
    const int i = juce::jlimit (0, juce::jmax (0, count - 1), source != nullptr ? source->getIndex() : 0);
    sourceChip->setSource (i == 0 ? juce::String ("off") : sourceId (i), sourceChipLabel (i), i == 0);
    sourceChip->setDraggable (false);
    amountBar.setVisible (i != 0);
    repaint();
}

void RoutingRow::refreshAmount()
{
    if (const auto* raw = state.getRawParameterValue ("mod" + juce::String (slot) + "Amount"))
        amountBar.setDisplayValue (raw->load());
}

juce::PopupMenu RoutingRow::buildSourceMenu() const
{
    auto* source = dynamic_cast<juce::AudioParameterChoice*> (parameter ("Source"));
    juce::PopupMenu menu;
    const int count = source != nullptr ? source->choices.size() : 1;
    for (int i = 0; i < count; ++i)
        menu.addItem (i + 1, sourceChipLabel (i), true, source != nullptr && source->getIndex() == i);
    return menu;
}

void RoutingRow::chooseSource (int index)
{
    auto* source = dynamic_cast<juce::AudioParameterChoice*> (parameter ("Source"));
    if (source == nullptr)
        return;
    source->beginChangeGesture();
    source->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, (float) index / (float) juce::jmax (source->choices.size() - 1, 1)));
    source->endChangeGesture();
}

void RoutingRow::clear()
{
    const EditHistory::Step step (state);
    if (auto* source = parameter ("Source"))
    {
        source->beginChangeGesture();
        source->setValueNotifyingHost (0.0f);
        source->endChangeGesture();
    }
    if (auto* amount = parameter ("Amount"))
    {
        amount->beginChangeGesture();
        amount->setValueNotifyingHost (amount->convertTo0to1 (0.0f));
        amount->endChangeGesture();
    }
}

void RoutingRow::setMarked (bool m)
{
    if (m == marked)
        return;
    marked = m;
    repaint();
}

int RoutingRow::destinationIndex() const
{
    auto* dest = dynamic_cast<juce::AudioParameterChoice*> (parameter ("Dest"));
    return dest != nullptr ? dest->getIndex() : 0;
}

void RoutingRow::hovered()
{
    auto* dest = dynamic_cast<juce::AudioParameterChoice*> (parameter ("Dest"));
    if (onDestinationFlash && dest != nullptr && dest->getIndex() > 0)
        onDestinationFlash (dest->getIndex());
}

void RoutingRow::paint (juce::Graphics& g)
{
    const auto bounds = getLocalBounds().toFloat();
    g.setColour (token (Token::bgSurface));
    g.fillRoundedRectangle (bounds, 2.0f);
    g.setColour (marked ? token (Token::accentModRing) : token (Token::borderHair));
    g.drawRoundedRectangle (bounds.reduced (marked ? 1.0f : 0.5f), 2.0f, marked ? 2.0f : 1.0f);
    drawTypeText (g, 6, slotText, juce::Rectangle<int> (16, 16, juce::jmin (getWidth() - 32, 44), getHeight() - 32),
                  token (Token::textSecondary), juce::Justification::centredLeft);
}

void RoutingRow::resized()
{
    auto area = getLocalBounds().reduced (16);
    const int h = area.getHeight();
    auto gap = [&area] { area.removeFromLeft (juce::jmin (8, area.getWidth())); };
    area.removeFromLeft (juce::jmin (44, area.getWidth()));
    gap();
    sourceChip->setBounds (area.removeFromLeft (juce::jmin (96, area.getWidth())).withHeight (h));
    gap();
    // The amount is what a row is read by: a narrow row takes from the destination's list first,
    // down to 88, so that a stub of bar and the signed percentage keep their room.
    const int right = 44 + 8 + (curveControl != nullptr ? 88 + 8 : 0) + 24 + 52;
    const int destinationWidth = juce::jlimit (juce::jmin (88, area.getWidth()), juce::jmin (148, area.getWidth()), area.getWidth() - 8 - right);
    destinationChoice->setBounds (area.removeFromLeft (destinationWidth).withHeight (h));
    gap();

    auto band = area.withY (area.getY() + (h - 44) / 2).withHeight (44);
    clearButton.setBounds (band.removeFromRight (juce::jmin (44, band.getWidth())));
    band.removeFromRight (juce::jmin (8, band.getWidth()));
    if (curveControl != nullptr)
    {
        curveControl->setBounds (band.removeFromRight (juce::jmin (88, band.getWidth())));
        band.removeFromRight (juce::jmin (8, band.getWidth()));
    }
    const int b = juce::jmax (band.getWidth(), 0);
    // The signed percentage keeps its 52 and the bar takes the rest.
    amountBar.setValueTextVisible (true);
    amountBar.setBarWidth (juce::jmax (b - 52, juce::jmin (b, 24)));
    amountBar.setBounds (band.withWidth (b));
}
}
