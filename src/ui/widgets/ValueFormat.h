#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvane::ui::widgets
{
// Value texts shared by the cards.
juce::String formatPercent (double value, bool spaced);
juce::String formatSigned (double value, int decimals, bool showPlus, bool unicodeMinus, bool plusAtZero);
juce::String formatSignedInt (int value, bool showPlus, bool unicodeMinus);
// Below one second in whole milliseconds, else seconds with one decimal; decided on the value.
juce::String formatSeconds (double seconds);

// A rectangle that touches or overruns an edge of bounds is pulled in by amount on that edge.
juce::Rectangle<int> insetAtEdges (juce::Rectangle<int> rect, juce::Rectangle<int> bounds, int amount);
}
