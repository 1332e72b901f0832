#include "ui/EditorScale.h"

#include <cmath>

namespace morvane::ui
{
float snapScale (float scale) noexcept
{
    float best = scaleSteps[0];
    float distance = std::abs (scale - best);
    for (auto step : scaleSteps)
        if (std::abs (scale - step) < distance)
        {
            best = step;
            distance = std::abs (scale - step);
        }
    return best;
}

float nextScaleStep (float scale, int direction) noexcept
{
    constexpr int count = (int) std::size (scaleSteps);
    for (int i = 0; i < count; ++i)
        if (juce::approximatelyEqual (scale, scaleSteps[i]))
            return scaleSteps[juce::jlimit (0, count - 1, i + (direction > 0 ? 1 : -1))];
    return scale;
}

juce::Point<int> scaledCanvasSize (float scale) noexcept
{
    return { juce::roundToInt ((float) canvasWidth * scale), juce::roundToInt ((float) canvasHeight * scale) };
}

SnapScaleConstrainer::SnapScaleConstrainer()
{
    setSizeLimits (999, 621, 1998, 1242);
    setFixedAspectRatio (1.608695652173913);
}

SnapScaleConstrainer::~SnapScaleConstrainer() = default;

void SnapScaleConstrainer::checkBounds (juce::Rectangle<int>& bounds, const juce::Rectangle<int>& previous,
                                        const juce::Rectangle<int>& limits, bool isStretchingTop, bool isStretchingLeft,
                                        bool isStretchingBottom, bool isStretchingRight)
{
    juce::ComponentBoundsConstrainer::checkBounds (bounds, previous, limits, isStretchingTop, isStretchingLeft,
                                                   isStretchingBottom, isStretchingRight);
    const auto fit = ((float) bounds.getWidth() / (float) canvasWidth + (float) bounds.getHeight() / (float) canvasHeight) * 0.5f;
    const auto size = scaledCanvasSize (snapScale (fit));
    bounds.setSize (size.x, size.y);
    if (isStretchingLeft && ! isStretchingRight)
        bounds.setX (previous.getRight() - bounds.getWidth());
    if (isStretchingTop && ! isStretchingBottom)
        bounds.setY (previous.getBottom() - bounds.getHeight());
}
}
