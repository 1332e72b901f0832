#pragma once

#include "WidgetStyle.h"

namespace ostrel::widgets
{

// A signed amount from -1 to 1, filled from the centre; shows a percentage at its right.
class BipolarBar : public juce::Component, public juce::SettableTooltipClient
{
public:
    BipolarBar();
    ~BipolarBar() override;

    std::function<void()> onGestureStart;
    std::function<void(float)> onValueChanged;
    std::function<void()> onGestureEnd;

    void setBarWidth(int width);
    void setInteractive(bool shouldBeInteractive);
    void setValueTextVisible(bool visible);
    // Shows a value from outside; calls nothing.
    void setDisplayValue(float newValue);

    float getValue() const noexcept { return value; }
    int getBarWidth() const noexcept { return barWidth; }
    bool isValueTextVisible() const noexcept { return valueTextVisible; }
    bool isInteractive() const noexcept { return interactive; }
    static juce::String valueText(float value);

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

private:
    void setValueByGesture(float newValue);
    void setFromX(float x);
    void gesture(float newValue);

    float value = 0.0f;
    int barWidth = 252;
    bool valueTextVisible = true;
    bool interactive = false;
    bool dragging = false;
    bool hovered = false;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(BipolarBar)
};

} // namespace ostrel::widgets
