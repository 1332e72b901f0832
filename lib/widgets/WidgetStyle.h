#pragma once

#include "WidgetTheme.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace ostrel::widgets
{

// Picks height, weight and case of the library's text; see roleFont.
using TextRole = int;

juce::Font roleFont(TextRole role);
juce::String roleText(TextRole role, const juce::String& text);

// One fitted line in area; roles 2 and 6 draw upper case.
void drawRoleText(juce::Graphics& g, TextRole role, const juce::String& text,
                  juce::Rectangle<int> area, juce::Colour colour, int justification);

// Width that drawRoleText needs for text, rounded up.
int roleTextWidth(TextRole role, const juce::String& text);

// Steps 0..7 give 0, 4, 8, 12, 16, 24, 8, 12 pixels; anything else 0.
int spacingStep(int step);

enum class KnobSize : int
{
    Mini = 0,
    Small = 1,
    Medium = 2,
    Large = 3
};

struct KnobGeometry
{
    float outer, arc, body, halo;
    int width, height;
};

KnobGeometry knobGeometry(KnobSize size);

namespace knobAngles
{
constexpr float start = 3.926991f;
constexpr float sweep = 4.7123895f;
constexpr float end = 8.63938f;
constexpr float top = 6.283186f;
} // namespace knobAngles

// Pitch-class names shared by the keyboard and the phrase grid.
juce::String pitchClassName(int note);
juce::String noteNameWithOctave(int note);
bool isBlackKey(int note);
bool isOutOfScale(int note, int scaleRoot, int scaleMask);

} // namespace ostrel::widgets
