#include "PerformanceControls.h"
#include "Accessibility.h"
#include "GrabCursor.h"

namespace ostrel::widgets
{

PerformanceControl::PerformanceControl(Kind k, const juce::String& labelText, const juce::String& title)
    : kind(k), label(labelText), minimum(k == Kind::wheel ? -1.0f : 0.0f), returnOnRelease(k != Kind::slider)
{
    setTitle(title);
    setWantsKeyboardFocus(true);
    setSize(k == Kind::pad ? 96 : 44, 96);
    setMouseCursor(k == Kind::pad ? grabCursor() : juce::MouseCursor(juce::MouseCursor::UpDownResizeCursor));
}

PerformanceControl::~PerformanceControl() = default;

PerformanceSlider::PerformanceSlider() : PerformanceControl(Kind::slider, "MOD", "Performance slider") {}
PerformanceWheel::PerformanceWheel() : PerformanceControl(Kind::wheel, "PITCH", "Performance wheel") {}
PressurePad::PressurePad() : PerformanceControl(Kind::pad, "PRESS", "Pressure pad") {}

void PerformanceControl::setLabel(const juce::String& text)
{
    label = text;
    setTitle(text);
    setHelpText(text);
    repaint();
}

void PerformanceControl::setValue(float newValue, bool sendNotification)
{
    newValue = juce::jlimit(minimum, 1.0f, newValue);
    if (juce::approximatelyEqual(newValue, value))
        return;
    value = newValue;
    repaint();
    if (sendNotification && onValueChanged)
        onValueChanged(value);
}

void PerformanceControl::setValueFormatter(std::function<juce::String(float)> formatter)
{
    valueFormatter = std::move(formatter);
    repaint();
}

juce::String PerformanceControl::valueText() const
{
    if (valueFormatter)
        return valueFormatter(value);
    const int number = juce::roundToInt(value * 100.0f);
    return kind == Kind::wheel && number >= 1 ? "+" + juce::String(number) : juce::String(number);
}

float PerformanceControl::valueAt(float y) const
{
    const float h = (float) getHeight();
    if (h <= 1.0f)
        return kind == Kind::wheel ? 0.0f : value;
    if (kind == Kind::wheel)
        return juce::jlimit(-1.0f, 1.0f, 1.0f - 2.0f * y / (h - 1.0f));
    return juce::jlimit(0.0f, 1.0f, 1.0f - y / (h - 1.0f));
}

void PerformanceControl::mouseEnter(const juce::MouseEvent&)
{
    hovered = true;
    repaint();
}

void PerformanceControl::mouseExit(const juce::MouseEvent&)
{
    hovered = false;
    repaint();
}

void PerformanceControl::mouseDown(const juce::MouseEvent& e)
{
    if (isShowing())
        grabKeyboardFocus();
    active = true;
    if (onGestureStart)
        onGestureStart();
    setValue(valueAt(e.position.y), true);
    repaint();
}

void PerformanceControl::mouseDrag(const juce::MouseEvent& e)
{
    if (active)
        setValue(valueAt(e.position.y), true);
}

void PerformanceControl::mouseUp(const juce::MouseEvent&)
{
    if (! active)
        return;
    if (kind != Kind::slider && returnOnRelease)
        setValue(0.0f, true);
    active = false;
    if (onGestureEnd)
        onGestureEnd();
    repaint();
}

void PerformanceControl::mouseDoubleClick(const juce::MouseEvent&) { setValue(0.0f, true); }

bool PerformanceControl::keyPressed(const juce::KeyPress& key)
{
    const int code = key.getKeyCode();
    if (code == juce::KeyPress::upKey)
        setValue(value + 0.05f, true);
    else if (code == juce::KeyPress::downKey)
        setValue(value - 0.05f, true);
    else if (code == juce::KeyPress::spaceKey || code == juce::KeyPress::returnKey)
        setValue(0.0f, true);
    else
        return false;
    return true;
}

// --- paint ---------------------------------------------------------------------------------

juce::Rectangle<float> PerformanceControl::trackBounds() const
{
    const float w = (float) getWidth(), h = (float) getHeight();
    const float text = std::min(h, 22.0f);
    return { 11.0f, text + 4.0f, std::max(0.0f, w - 22.0f), std::max(0.0f, h - text - 8.0f - 22.0f) };
}

void PerformanceControl::paint(juce::Graphics& g)
{
    const auto bounds = getLocalBounds().toFloat();
    const bool focused = hasKeyboardFocus(false);
    g.setColour(paletteColour(surfacePanel));
    g.fillRoundedRectangle(bounds, 2.0f);
    g.setColour(paletteColour(focused ? borderFocus : borderSubtle));
    g.drawRoundedRectangle(bounds.reduced(0.5f), 2.0f, focused ? 2.0f : 1.0f);

    const int h = getHeight();
    drawRoleText(g, 4, valueText(), getLocalBounds().removeFromTop(std::min(h, 22)),
                 paletteColour(active ? textPrimary : textMuted), 36);
    drawRoleText(g, 6, label, getLocalBounds().removeFromBottom(std::min(h, 22)),
                 paletteColour(hovered ? textPrimary : textMuted), 36);

    if (kind == Kind::pad)
        paintPad(g);
    else
        paintTrack(g);
}

void PerformanceControl::paintTrack(juce::Graphics& g) const
{
    const auto track = trackBounds();
    if (track.isEmpty())
        return;
    g.setColour(paletteColour(borderSubtle).withAlpha(0.45f));
    g.fillRoundedRectangle(track, 2.0f);

    if (kind == Kind::slider)
    {
        const float fill = value * track.getHeight();
        if (fill > 0.0f)
        {
            g.setColour(active ? paletteColour(accentLive) : paletteColour(accentPrimary).withAlpha(0.85f));
            g.fillRoundedRectangle(track.withTop(track.getBottom() - fill), 2.0f);
        }
        return;
    }

    const float centreY = track.getCentreY();
    g.setColour(paletteColour(textMuted).withAlpha(0.65f));
    g.fillRect(juce::Rectangle<float>(track.getX() - 4.0f, centreY - 0.5f, track.getWidth() + 8.0f, 1.0f));

    const float end = centreY - value * track.getHeight() * 0.5f;
    const auto bar = juce::Rectangle<float>(track.getX(), std::min(centreY, end), track.getWidth(), std::abs(end - centreY));
    if (bar.getHeight() > 0.0f)
    {
        g.setColour(paletteColour(accentPrimary).withAlpha(active ? 0.55f : 0.32f));
        g.fillRoundedRectangle(bar, 2.0f);
    }
    g.setColour(paletteColour(active ? accentLive : accentPrimary));
    g.fillRoundedRectangle(juce::Rectangle<float>(track.getX() - 6.0f, end - 4.0f, track.getWidth() + 12.0f, 8.0f), 2.0f);
}

void PerformanceControl::paintPad(juce::Graphics& g) const
{
    g.setColour(paletteColour(accentSecondary).withAlpha(0.35f));
    g.drawRoundedRectangle(getLocalBounds().toFloat().reduced(3.5f), 2.0f, 1.0f);

    const float w = (float) getWidth(), h = (float) getHeight();
    const float text = std::min(h, 22.0f);
    const auto area = juce::Rectangle<float>(8.0f, text + 2.0f, std::max(0.0f, w - 16.0f), std::max(0.0f, h - text - 4.0f - 22.0f));
    if (area.isEmpty())
        return;

    g.setColour(paletteColour(borderSubtle).withAlpha(0.35f));
    g.fillRect(juce::Rectangle<float>(area.getX(), area.getCentreY() - 0.5f, area.getWidth(), 1.0f));
    g.fillRect(juce::Rectangle<float>(area.getCentreX() - 0.5f, area.getY(), 1.0f, area.getHeight()));

    if (value > 0.0f)
    {
        const auto inner = area.reduced(3.0f);
        const float fill = value * (area.getHeight() - 6.0f);
        g.setColour(paletteColour(accentSecondary).withAlpha(active ? 0.34f : 0.22f));
        g.fillRoundedRectangle(inner.withTop(inner.getBottom() - fill), 2.0f);

        const float radius = value * 16.0f + 6.0f;
        const float cy = area.getBottom() - value * area.getHeight();
        g.setColour(paletteColour(active ? accentLive : accentSecondary));
        g.fillEllipse(area.getCentreX() - radius, cy - radius, radius * 2.0f, radius * 2.0f);
    }
}

std::unique_ptr<juce::AccessibilityHandler> PerformanceControl::createAccessibilityHandler()
{
    AccessibleValue access;
    access.get = [this] { return (double) value; };
    access.set = [this](double v) { setValue((float) v, true); };
    access.text = [this] { return valueText(); };
    access.minimum = minimum;
    access.maximum = 1.0;
    access.step = 0.05;
    return makeValueAccessibility(*this, juce::AccessibilityRole::slider, std::move(access));
}

} // namespace ostrel::widgets
