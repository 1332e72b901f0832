#include "Accessibility.h"

namespace ostrel::widgets
{
namespace
{
class ValueInterface : public juce::AccessibilityValueInterface
{
public:
    explicit ValueInterface(AccessibleValue v) : value(std::move(v)) {}

    bool isReadOnly() const override { return ! value.set; }
    double getCurrentValue() const override { return value.get ? value.get() : 0.0; }
    juce::String getCurrentValueAsString() const override
    {
        return value.text ? value.text() : juce::String(getCurrentValue());
    }
    void setValue(double newValue) override
    {
        if (value.set)
            value.set(bounds().clipValue(newValue));
    }
    void setValueAsString(const juce::String& newValue) override
    {
        if (value.parse)
        {
            if (const auto parsed = value.parse(newValue))
                setValue(*parsed);
            return;
        }
        if (newValue.trim().containsAnyOf("0123456789"))
            setValue(newValue.getDoubleValue());
    }
    AccessibleValueRange getRange() const override
    {
        const auto r = bounds();
        if (r.getLength() <= 0.0)
            return {};
        return { { r.getStart(), r.getEnd() }, value.step };
    }

private:
    juce::Range<double> bounds() const
    {
        return value.range ? value.range() : juce::Range<double>(value.minimum, value.maximum);
    }
    AccessibleValue value;
};
} // namespace

std::unique_ptr<juce::AccessibilityHandler> makeValueAccessibility(juce::Component& component,
                                                                   juce::AccessibilityRole role,
                                                                   AccessibleValue value,
                                                                   juce::AccessibilityActions actions)
{
    return std::make_unique<juce::AccessibilityHandler>(
        component, role, std::move(actions),
        juce::AccessibilityHandler::Interfaces { std::make_unique<ValueInterface>(std::move(value)) });
}

std::unique_ptr<juce::AccessibilityHandler> makeSliderAccessibility(
    juce::Slider& slider, std::function<juce::String()> text,
    std::function<std::optional<double>(const juce::String&)> parse)
{
    AccessibleValue access;
    access.get = [&slider] { return slider.getValue(); };
    access.set = [&slider](double v) {
        const juce::Slider::ScopedDragNotification gesture(slider);
        slider.setValue(v, juce::sendNotificationSync);
    };
    access.parse = std::move(parse);
    access.text = std::move(text);
    access.range = [&slider] { return slider.getRange(); };
    access.step = slider.getInterval() > 0.0 ? slider.getInterval() : (slider.getMaximum() - slider.getMinimum()) * 0.01;
    return makeValueAccessibility(slider, juce::AccessibilityRole::slider, std::move(access));
}

} // namespace ostrel::widgets
