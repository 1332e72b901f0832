#include "ui/widgets/EffectCardSupport.h"

#include <cmath>

namespace morvane::ui::widgets::fxcard
{
namespace
{
constexpr int cellWidth = 44, cellGap = 8, rowGap = 16, titleRow = 38, inset = 16;
}

juce::String percentText (double v) { return juce::String ((int) std::round (v * 100.0)) + " %"; }

juce::String decibelText (double v)
{
    const auto magnitude = juce::String (std::abs (v), 1);
    return (v < 0.0 ? "-" + magnitude : juce::String (v, 1)) + " dB";
}

juce::String frequencyText (double v)
{
    return v < 1000.0 ? juce::String::formatted ("%.0f Hz", v) : juce::String::formatted ("%.1f kHz", v * 0.001);
}

juce::String timeText (double v)
{
    return v < 100.0 ? juce::String::formatted ("%.0f ms", v) : juce::String::formatted ("%.2f s", v * 0.001);
}

juce::Rectangle<int> bodyArea (juce::Rectangle<int> local)
{
    auto area = local.reduced (std::min (inset, local.getWidth() / 2), std::min (inset, local.getHeight() / 2));
    area.removeFromTop (std::min (titleRow, area.getHeight()));
    return area;
}

void addEnable (ostrel::widgets::BypassablePanel& card, PanelEnableButton& button)
{
    card.addAndMakeVisible (button);
    card.setHeaderControl (&button, 36);
    button.onToggled = [&card] (bool on) { card.setActive (on); };
    card.setActive (button.getToggleState());
}

void addKnob (ostrel::widgets::BypassablePanel& card, ostrel::widgets::Knob& knob, const juce::String& label,
              ostrel::widgets::Knob::Formatter text)
{
    knob.setLabel (label);
    knob.setValueFormatter (std::move (text));
    card.addAndMakeVisible (knob);
    card.addDimmedChild (&knob);
}

void addField (ostrel::widgets::BypassablePanel& card, ostrel::widgets::FieldBox& field,
               ostrel::widgets::ChoiceDropdown& choice)
{
    choice.setJustification (33);
    choice.setCompact (true);
    field.setCompact (true);
    field.setContent (&choice);
    card.addAndMakeVisible (field);
    card.addDimmedChild (&field);
}

juce::Rectangle<int> takeFullRow (juce::Rectangle<int>& area, int height)
{
    const auto row = area.removeFromTop (std::min (height, area.getHeight()));
    area.removeFromTop (std::min (rowGap, area.getHeight()));
    return row;
}

juce::Rectangle<int> takeRow (juce::Rectangle<int>& area, int height)
{
    const int present = std::min (height, area.getHeight());
    const juce::Rectangle<int> row (area.getX(), area.getY() + (present - height) / 2, area.getWidth(), height);
    area.removeFromTop (present);
    area.removeFromTop (std::min (rowGap, area.getHeight()));
    return row;
}

void layoutStrip (juce::Rectangle<int> row, std::initializer_list<juce::Component*> cells)
{
    const int n = (int) cells.size();
    const int width = std::min (n * cellWidth + (n - 1) * cellGap, row.getWidth());
    int x = row.getX() + (row.getWidth() - width) / 2;
    int rest = width;
    bool first = true;
    for (auto* cell : cells)
    {
        if (! first)
        {
            const int gap = std::min (cellGap, rest);
            x += gap;
            rest -= gap;
        }
        first = false;
        const int w = std::min (cellWidth, rest);
        if (cell != nullptr)
            cell->setBounds (x, row.getY(), w, row.getHeight());
        x += w;
        rest -= w;
    }
}
}
