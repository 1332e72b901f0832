#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvane::ui
{
// What drawSurface paints, after a level and a state have set it.
struct PlateRecord
{
    juce::Colour fill, topEdge, bottomEdge, outline, shadow;
    int radius = 0, shadowOffset = 0, shadowSpread = 0;
    bool inset = false;
};

enum SurfaceState : int { rest, hover, pressed, selected, focused, disabled, modulated, live };

PlateRecord plateRecord (int level, int state);
// Levels 0 to 4: card, control, well, raised card, modulation plate; any other paints nothing.
void drawSurface (juce::Graphics& g, juce::Rectangle<float> bounds, int level, int state);
void drawControlSurface (juce::Graphics& g, juce::Rectangle<float> bounds, bool over, bool down, bool toggled,
                         bool focused, bool enabled, int variant);

struct SurfaceVariant
{
    const char* word;
    int outlineToken;
    int barToken;
    float radius;
    bool barInset;
};

const juce::Identifier surfaceVariantProperty { "morvane.surfaceVariant" };
const SurfaceVariant& surfaceVariant (int variant) noexcept; // outside the table: variant 4
int surfaceVariantOf (const juce::Component& component, int fallback);
}
