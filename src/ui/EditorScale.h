#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvane::ui
{
constexpr int canvasWidth = 1332;
constexpr int canvasHeight = 828;
constexpr float scaleSteps[] = { 0.75f, 1.0f, 1.25f, 1.5f };

// The nearest of the four steps; a tie stays on the lower step.
float snapScale (float scale) noexcept;
// The step above or below one that is approximately a step; the ends stay.
float nextScaleStep (float scale, int direction) noexcept;
juce::Point<int> scaledCanvasSize (float scale) noexcept;

// Lets a window edge jump between the four sizes only.
class SnapScaleConstrainer : public juce::ComponentBoundsConstrainer
{
public:
    SnapScaleConstrainer();
    ~SnapScaleConstrainer() override;

    void checkBounds (juce::Rectangle<int>& bounds, const juce::Rectangle<int>& previous, const juce::Rectangle<int>& limits,
                      bool isStretchingTop, bool isStretchingLeft, bool isStretchingBottom, bool isStretchingRight) override;
};
}
