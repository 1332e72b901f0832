#pragma once

#include "ui/widgets/PanelEnableButton.h"

#include "widgets/ChoiceDropdown.h"
#include "widgets/FieldBox.h"
#include "widgets/Knob.h"
#include "widgets/SectionFrame.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <initializer_list>

namespace morvane::ui::widgets::fxcard
{
// Value texts of the effect knobs.
juce::String percentText (double v);   // "42 %"
juce::String decibelText (double v);   // "-3.5 dB", no plus sign
juce::String frequencyText (double v); // "950 Hz", "1.2 kHz"
juce::String timeText (double v);      // "99 ms", "0.10 s"

// The on switch in the card header; the card follows it.
void addEnable (ostrel::widgets::BypassablePanel& card, PanelEnableButton& button);
// A knob with its label and value text, shown and dimmed with the card.
void addKnob (ostrel::widgets::BypassablePanel& card, ostrel::widgets::Knob& knob, const juce::String& label,
              ostrel::widgets::Knob::Formatter text);
// A compact dropdown in its compact field box, shown and dimmed with the card.
void addField (ostrel::widgets::BypassablePanel& card, ostrel::widgets::FieldBox& field,
               ostrel::widgets::ChoiceDropdown& choice);

// The area under the title row: the bounds less 16 on each side, less the 38 of the title row.
juce::Rectangle<int> bodyArea (juce::Rectangle<int> local);
// Takes the next rows of up to the given height off the top of the area, and the gap of up to 16.
juce::Rectangle<int> takeFullRow (juce::Rectangle<int>& area, int height);
// Takes a row of the given height off the top of the area, centred upward when short, and the
// gap of up to 16 under it; returns the row.
juce::Rectangle<int> takeRow (juce::Rectangle<int>& area, int height);
// Lays components out left to right in a strip of 44-wide cells with gaps of 8, centred in
// the row; cells that don't fit shrink to 0 rather than wrap.
void layoutStrip (juce::Rectangle<int> row, std::initializer_list<juce::Component*> cells);
}
