#include "ui/widgets/ValueFormat.h"

namespace morvane::ui::widgets
{
namespace
{
juce::String minusSign (bool unicodeMinus)
{
    return unicodeMinus ? juce::String (juce::CharPointer_UTF8 ("\xe2\x88\x92")) : juce::String ("-");
}
}

juce::String formatPercent (double value, bool spaced)
{
    return juce::String (juce::roundToInt (value * 100.0)) + (spaced ? " %" : "%");
}

juce::String formatSigned (double value, int decimals, bool showPlus, bool unicodeMinus, bool plusAtZero)
{
    if (value < 0.0)
        return minusSign (unicodeMinus) + juce::String (-value, decimals);
    const bool plus = (showPlus && value > 0.0) || plusAtZero;
    return (plus ? "+" : "") + juce::String (value, decimals);
}

juce::String formatSignedInt (int value, bool showPlus, bool unicodeMinus)
{
    if (value < 0)
        return minusSign (unicodeMinus) + juce::String (-(juce::int64) value);
    return (showPlus && value >= 1 ? "+" : "") + juce::String (value);
}

juce::String formatSeconds (double seconds)
{
    if (seconds < 1.0)
        return juce::String (juce::roundToInt (seconds * 1000.0)) + "ms";
    return juce::String (seconds, 1) + "s";
}

juce::Rectangle<int> insetAtEdges (juce::Rectangle<int> r, juce::Rectangle<int> bounds, int amount)
{
    if (r.getX() <= bounds.getX())
        r.setLeft (r.getX() + amount);
    if (r.getY() <= bounds.getY())
        r.setTop (r.getY() + amount);
    if (r.getRight() >= bounds.getRight())
        r.setRight (r.getRight() - amount);
    if (r.getBottom() >= bounds.getBottom())
        r.setBottom (r.getBottom() - amount);
    return r;
}
}
