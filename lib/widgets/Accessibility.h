#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <optional>

namespace ostrel::widgets
{

// Value interface for self-painting controls that are no juce::Slider: screen readers see
// the same number and text that the control paints.
struct AccessibleValue
{
    std::function<double()> get;
    std::function<void(double)> set; // empty: read only
    std::function<juce::String()> text;
    // Reads text the way the control reads typed text; empty: a plain number.
    std::function<std::optional<double>(const juce::String&)> parse;
    double minimum = 0.0, maximum = 1.0, step = 0.01;
    // When set, read at each query instead of minimum and maximum (a slider's range can change).
    std::function<juce::Range<double>()> range;
};

std::unique_ptr<juce::AccessibilityHandler> makeValueAccessibility(juce::Component& component,
                                                                   juce::AccessibilityRole role,
                                                                   AccessibleValue value,
                                                                   juce::AccessibilityActions actions = {});

// A juce::Slider whose painted text is its own: the slider's handler is private to it, so the
// library's sliders hand screen readers the same formatted text through this one.
// Values set through it are whole gestures, as a drag is; parse reads text as a typed value.
std::unique_ptr<juce::AccessibilityHandler> makeSliderAccessibility(
    juce::Slider& slider, std::function<juce::String()> text,
    std::function<std::optional<double>(const juce::String&)> parse = {});

} // namespace ostrel::widgets
