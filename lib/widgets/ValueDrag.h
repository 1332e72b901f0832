#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <optional>

namespace ostrel::widgets
{

// The drag of the value chips: upward raises, the whole range takes about 250 pixels, a tenth as
// fast while Shift is held. Each movement counts at the rate of its own moment, so pressing or
// releasing Shift mid-drag makes no jump. A stepped range steps as the proportion passes each step.
class VerticalValueDrag
{
public:
    static constexpr double pixelsForFullRange = 250.0;

    bool isActive() const noexcept { return notification.has_value(); }

    void begin(juce::Slider& slider, const juce::MouseEvent& e)
    {
        lastY = e.position.y;
        proportion = slider.valueToProportionOfLength(slider.getValue());
        notification.emplace(slider);
    }

    void drag(juce::Slider& slider, const juce::MouseEvent& e)
    {
        if (! isActive())
            return;
        const double rate = e.mods.isShiftDown() ? 0.1 : 1.0;
        proportion = juce::jlimit(0.0, 1.0, proportion + (lastY - e.position.y) / pixelsForFullRange * rate);
        lastY = e.position.y;
        slider.setValue(slider.proportionOfLengthToValue(proportion), juce::sendNotificationSync);
    }

    void end() { notification.reset(); }

private:
    float lastY = 0.0f;
    double proportion = 0.0;
    std::optional<juce::Slider::ScopedDragNotification> notification;
};

} // namespace ostrel::widgets
