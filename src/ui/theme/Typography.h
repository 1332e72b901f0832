#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvane::ui
{
// Ten roles name every size of text; any other value reads as role 3.
using TypeRole = int;

struct TypeRoleRecord
{
    int typeface;       // embedded face index
    const char* family; // used only when the embedded face is missing
    const char* style;
    float height;
    float tracking;
    bool upperCase;
};

const TypeRoleRecord& typeRoleRecord (TypeRole role) noexcept;

// The six embedded faces (0 to 5), made on first use and kept; none for another index.
juce::Typeface::Ptr embeddedTypeface (int index);
juce::Font fontForTypeRole (TypeRole role);
void drawTypeText (juce::Graphics& g, TypeRole role, const juce::String& text, juce::Rectangle<int> bounds,
                   juce::Colour colour, juce::Justification justification);
void drawTypeText (juce::Graphics& g, TypeRole role, const juce::String& text, juce::Rectangle<float> bounds,
                   juce::Colour colour, juce::Justification justification);
}
