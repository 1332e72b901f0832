#include "BipolarBar.h"
#include "Accessibility.h"

namespace ostrel::widgets
{

BipolarBar::BipolarBar()
{
    setSize(304, 44);
    setTitle("Bipolar amount");
    setTooltip("Adjust signed amount.");
}

BipolarBar::~BipolarBar() = default;

void BipolarBar::setBarWidth(int width)
{
    width = std::max(width, 1);
    if (width == barWidth)
        return;
    barWidth = width;
    repaint();
}

void BipolarBar::setInteractive(bool shouldBeInteractive)
{
    interactive = shouldBeInteractive;
    setMouseCursor(interactive ? juce::MouseCursor::LeftRightResizeCursor : juce::MouseCursor::NormalCursor);
    setWantsKeyboardFocus(interactive);
    repaint();
}

void BipolarBar::setValueTextVisible(bool visible)
{
    if (visible == valueTextVisible)
        return;
    valueTextVisible = visible;
    repaint();
}

void BipolarBar::setDisplayValue(float newValue)
{
    value = juce::jlimit(-1.0f, 1.0f, newValue);
    repaint();
}

juce::String BipolarBar::valueText(float v)
{
    const int percent = juce::roundToInt(v * 100.0f);
    return percent == 0 ? juce::String("0 %") : juce::String::formatted("%+d %%", percent);
}

void BipolarBar::setValueByGesture(float newValue)
{
    newValue = juce::jlimit(-1.0f, 1.0f, newValue);
    if (juce::approximatelyEqual(newValue, value))
        return;
    value = newValue;
    repaint();
    if (onValueChanged)
        onValueChanged(value);
}

void BipolarBar::setFromX(float x)
{
    const float half = (float) barWidth * 0.5f;
    setValueByGesture(half > 0.0f ? juce::jlimit(-1.0f, 1.0f, (x - half) / half) : 0.0f);
}

void BipolarBar::gesture(float newValue)
{
    if (onGestureStart)
        onGestureStart();
    setValueByGesture(newValue);
    if (onGestureEnd)
        onGestureEnd();
}

void BipolarBar::mouseEnter(const juce::MouseEvent&)
{
    hovered = true;
    repaint();
}

void BipolarBar::mouseExit(const juce::MouseEvent&)
{
    hovered = false;
    dragging = false;
    repaint();
}

void BipolarBar::mouseDown(const juce::MouseEvent& e)
{
    if (! interactive)
        return;
    dragging = true;
    if (onGestureStart)
        onGestureStart();
    setFromX(e.position.x);
}

void BipolarBar::mouseDrag(const juce::MouseEvent& e)
{
    if (interactive && dragging)
        setFromX(e.position.x);
}

void BipolarBar::mouseUp(const juce::MouseEvent&)
{
    if (! interactive || ! dragging)
        return;
    dragging = false;
    if (onGestureEnd)
        onGestureEnd();
    repaint();
}

void BipolarBar::mouseDoubleClick(const juce::MouseEvent&)
{
    if (interactive)
        gesture(0.0f);
}

bool BipolarBar::keyPressed(const juce::KeyPress& key)
{
    if (! interactive)
        return false;
    const int code = key.getKeyCode();
    if (code == juce::KeyPress::leftKey || code == juce::KeyPress::downKey)
        gesture(value - 0.02f);
    else if (code == juce::KeyPress::rightKey || code == juce::KeyPress::upKey)
        gesture(value + 0.02f);
    else if (code == juce::KeyPress::returnKey || code == juce::KeyPress::spaceKey)
        gesture(0.0f);
    else
        return false;
    return true;
}

void BipolarBar::paint(juce::Graphics& g)
{
    const float bw = (float) std::min(getWidth(), barWidth);
    const auto bar = juce::Rectangle<float>(0.0f, (float) getHeight() * 0.5f - 4.0f, bw, 8.0f);

    g.setColour(paletteColour(borderSubtle));
    g.fillRoundedRectangle(bar, 2.0f);

    const bool focused = hasKeyboardFocus(false);
    if (interactive && (hovered || dragging || focused))
    {
        g.setColour(paletteColour(focused ? borderFocus : textMuted));
        g.drawRoundedRectangle(bar.expanded(2.0f), 2.0f, focused ? 2.0f : 1.0f);
    }

    const float centre = bar.getCentreX();
    const float length = std::abs(value) * bw * 0.5f;
    if (length > 0.0f)
    {
        g.setColour(paletteColour(accentPrimary));
        g.fillRoundedRectangle(value >= 0.0f ? bar.withX(centre).withWidth(length)
                                             : bar.withX(centre - length).withWidth(length),
                               2.0f);
    }

    g.setColour(paletteColour(textMuted));
    g.fillRect(juce::Rectangle<float>(centre - 0.5f, (float) getHeight() * 0.5f - 11.0f, 1.0f, 22.0f));

    if (valueTextVisible)
    {
        const int barRight = (int) std::ceil(bw);
        const int free = std::max(0, getWidth() - barRight);
        const int x = barRight + std::min(free, 8);
        const int width = std::min(std::max(0, getWidth() - x), 44);
        drawRoleText(g, 5, valueText(value), { x, 0, width, getHeight() }, paletteColour(textPrimary), 33);
    }
}

std::unique_ptr<juce::AccessibilityHandler> BipolarBar::createAccessibilityHandler()
{
    AccessibleValue access;
    access.get = [this] { return (double) value; };
    access.set = [this](double v) {
        if (interactive)
            gesture((float) v);
    };
    access.text = [this] { return valueText(value); };
    access.minimum = -1.0;
    access.maximum = 1.0;
    access.step = 0.02;
    return makeValueAccessibility(*this, juce::AccessibilityRole::slider, std::move(access));
}

} // namespace ostrel::widgets
