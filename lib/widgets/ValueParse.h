#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <optional>

namespace ostrel::widgets
{

// A typed quantity: a number with an optional unit, brought to the unit's base (ms to s, kHz to
// Hz, % to a fraction). family names the kind ("s", "hz", "db", "%", "st", "ct", "deg", "bits",
// "x"), empty when no unit was given. An unknown unit is no quantity.
struct TypedQuantity
{
    double value = 0.0;
    juce::String family;
    double factor = 1.0; // what one typed unit is in the base
};
std::optional<TypedQuantity> readQuantity(const juce::String& text);

// Reads text as the value a control's formatter would print for it, on the slider's range:
// the control's own unit or any unit of the same kind, a choice or division name, the shown
// text unchanged (which keeps the value). Out of range clamps; anything else is refused.
std::optional<double> parseDisplayedValue(const juce::String& text, juce::Slider& slider,
                                          const std::function<juce::String(double)>& format);

// The same, kept to a finite value inside the slider's range.
std::optional<double> parseValueFor(const juce::String& text, juce::Slider& slider,
                                    const std::function<juce::String(double)>& format);

// Sets a value read from typed text as one gesture of the slider; the text as shown, accepted
// unchanged, is no edit. False, with nothing changed, when the text was refused.
bool applyTypedValue(juce::Slider& slider, std::optional<double> value);

} // namespace ostrel::widgets
