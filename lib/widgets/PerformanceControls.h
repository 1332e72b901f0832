#pragma once

#include "WidgetStyle.h"

namespace ostrel::widgets
{

// Shared behaviour of the slider, the wheel and the pad: a value set by a vertical press or
// drag, keys, and a spring back to 0 on release for the wheel and the pad.
class PerformanceControl : public juce::Component
{
public:
    ~PerformanceControl() override;

    std::function<void()> onGestureStart;
    std::function<void(float)> onValueChanged;
    std::function<void()> onGestureEnd;

    void setLabel(const juce::String& text);
    void setValue(float newValue, bool sendNotification);
    void setValueFormatter(std::function<juce::String(float)> formatter);
    void setReturnOnRelease(bool shouldReturn) { returnOnRelease = shouldReturn; }

    float getValue() const noexcept { return value; }
    float getMinimum() const noexcept { return minimum; }
    const juce::String& getLabel() const noexcept { return label; }
    bool isActive() const noexcept { return active; }
    bool isHovered() const noexcept { return hovered; }
    juce::String valueText() const;

    void mouseEnter(const juce::MouseEvent&) override;
    void mouseExit(const juce::MouseEvent&) override;
    void mouseDown(const juce::MouseEvent&) override;
    void mouseDrag(const juce::MouseEvent&) override;
    void mouseUp(const juce::MouseEvent&) override;
    void mouseDoubleClick(const juce::MouseEvent&) override;
    void paint(juce::Graphics&) override;
    bool keyPressed(const juce::KeyPress&) override;
    void focusGained(FocusChangeType) override { repaint(); }
    void focusLost(FocusChangeType) override { repaint(); }
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

protected:
    enum class Kind { slider, wheel, pad };
    PerformanceControl(Kind kind, const juce::String& label, const juce::String& title);

    juce::Rectangle<float> trackBounds() const;
    void paintTrack(juce::Graphics&) const;
    void paintPad(juce::Graphics&) const;

private:
    float valueAt(float y) const;

    Kind kind;
    juce::String label;
    std::function<juce::String(float)> valueFormatter;
    float value = 0.0f;
    float minimum = 0.0f;
    bool returnOnRelease = false;
    bool hovered = false;
    bool active = false;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(PerformanceControl)
};

// Mod wheel and the like: 0 to 1, stays where it is left.
class PerformanceSlider : public PerformanceControl
{
public:
    PerformanceSlider();
};

// Spring-loaded pitch wheel: -1 to 1, back to 0 on release.
class PerformanceWheel : public PerformanceControl
{
public:
    PerformanceWheel();
};

// Pressure, 0 to 1, back to 0 on release; it has no double click.
class PressurePad : public PerformanceControl
{
public:
    PressurePad();
    void mouseDoubleClick(const juce::MouseEvent&) override {}
};

} // namespace ostrel::widgets
