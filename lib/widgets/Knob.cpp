#include "Knob.h"
#include "Accessibility.h"
#include "ValueParse.h"

#include <cmath>

namespace ostrel::widgets
{
namespace
{
constexpr float twoPi = juce::MathConstants<float>::twoPi;
constexpr float halfPi = juce::MathConstants<float>::halfPi;
constexpr float ringGrabTolerance = 5.0f;

juce::Point<float> onCircle(float cx, float cy, float radius, float angle)
{
    return { cx + std::cos(angle - halfPi) * radius, cy + std::sin(angle - halfPi) * radius };
}

void strokeArc(juce::Graphics& g, float cx, float cy, float radius, float from, float to, float width)
{
    if (to <= from || radius <= 0.0f)
        return; // a zero-length arc would otherwise close into a full circle
    juce::Path arc;
    arc.addCentredArc(cx, cy, radius, radius, 0.0f, from, to, true);
    g.strokePath(arc, juce::PathStrokeType(width));
}

juce::String defaultFormat(double value) { return juce::String(value, 2); }
} // namespace

Knob::Knob(KnobSize size, bool bipolar, bool isModulated)
    : sizeClass(size), bipolarArc(bipolar), modulated(isModulated)
{
    setSliderStyle(juce::Slider::RotaryHorizontalVerticalDrag);
    setTextBoxStyle(juce::Slider::NoTextBox, false, 0, 0);
    setRotaryParameters(knobAngles::start, knobAngles::end, true);
    setRange(0.0, 1.0, 0.0);
    setWantsKeyboardFocus(true);
    setMouseCursor(juce::MouseCursor::UpDownResizeCursor);
    const auto geo = knobGeometry(size);
    setSize(geo.width, geo.height);

    addChildComponent(valueEditor);
    valueEditor.onCommit = [this](const juce::String& text) { applyTypedValue(text); };
}

Knob::~Knob()
{
    stopTimer();
    dragNotification.reset();
}

// --- setters -------------------------------------------------------------------------------

void Knob::setLabel(const juce::String& text)
{
    if (text == label)
        return;
    label = text;
    setTitle(text);
    repaint();
}

void Knob::setMidiLearnPending(bool pending)
{
    if (pending == midiLearnPending)
        return;
    midiLearnPending = pending;
    if (pending)
    {
        startTimerHz(30);
    }
    else if (! flashActive)
    {
        stopTimer();
        pulsePhase = 0.0f;
    }
    repaint();
}

void Knob::setModulationEnabled(bool enabled)
{
    if (enabled == modulationEnabled && (enabled || ! sourceDragOver))
        return;
    modulationEnabled = enabled;
    if (! enabled)
        sourceDragOver = false;
    repaint();
}

void Knob::setModulated(bool isModulated)
{
    if (isModulated == modulated)
        return;
    modulated = isModulated;
    repaint();
}

void Knob::setLivePosition(double position)
{
    const auto clamped = juce::jlimit(0.0, 1.0, position);
    if (clamped == livePosition)
        return;
    livePosition = clamped;
    repaint();
}

void Knob::setDepthCallbacks(std::function<float()> getter, std::function<void()> onStart,
                             std::function<void(float)> onChanged, std::function<void()> onEnd)
{
    depthGetter = std::move(getter);
    onDepthDragStart = std::move(onStart);
    onDepthChanged = std::move(onChanged);
    onDepthDragEnd = std::move(onEnd);
    repaint();
}

void Knob::setModulationSources(juce::StringArray names, std::function<void(int)> onChosen)
{
    sourceNames = std::move(names);
    onSourceChosen = std::move(onChosen);
}

void Knob::setModulationStatus(std::function<juce::String()> statusProvider, std::function<void()> onRemove)
{
    modulationStatus = std::move(statusProvider);
    onRemoveModulation = std::move(onRemove);
}

void Knob::setSourceDropHandler(std::function<bool(int)> handler) { onSourceDropped = std::move(handler); }
void Knob::setMidiLearnHandler(std::function<void()> handler) { onMidiLearn = std::move(handler); }
void Knob::setRevealHandler(std::function<void()> handler) { onRevealInMatrix = std::move(handler); }
void Knob::setExtraMenuBuilder(std::function<void(juce::PopupMenu&)> builder) { extraMenuBuilder = std::move(builder); }

void Knob::setValueVisible(bool visible)
{
    if (visible == valueVisible)
        return;
    valueVisible = visible;
    resized();
    repaint();
}

void Knob::setValueFormatter(Formatter formatter)
{
    valueFormatter = std::move(formatter);
    repaint();
}

void Knob::setValueParser(Parser parser) { valueParser = std::move(parser); }

void Knob::setCentreDetent(bool on, double width)
{
    detentEnabled = on;
    detentWidth = std::max(width, 0.0);
}

void Knob::attachToParameter(juce::AudioProcessorValueTreeState& state, const juce::String& parameterId)
{
    attachment.reset();
    if (state.getParameter(parameterId) != nullptr)
        attachment = std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment>(state, parameterId, *this);
}

void Knob::flashHalo()
{
    flashActive = true;
    flashEndMs = juce::Time::getMillisecondCounter() + 1000;
    startTimerHz(30);
    repaint();
}

juce::String Knob::formattedValue() const
{
    return valueFormatter ? valueFormatter(getValue()) : defaultFormat(getValue());
}

juce::String Knob::getTextFromValue(double value)
{
    return valueFormatter ? valueFormatter(value) : defaultFormat(value);
}

// --- geometry and paint --------------------------------------------------------------------

Knob::Geometry Knob::geometry() const
{
    const auto geo = knobGeometry(sizeClass);
    const auto w = (float) getWidth(), h = (float) getHeight();
    const float size = std::max(0.0f, std::min({ h, w, geo.outer }));
    const float scale = size / geo.outer;
    return { size, (w - size) * 0.5f + size * 0.5f, size * 0.5f, geo.body * scale, geo.arc * scale, geo.halo * scale };
}

juce::Rectangle<int> Knob::valueRowBounds() const
{
    auto rest = getLocalBounds().withTrimmedTop((int) geometry().size);
    rest.removeFromTop(std::min(rest.getHeight(), 22));
    return rest.removeFromTop(std::min(rest.getHeight(), 22));
}

void Knob::resized()
{
    juce::Slider::resized();
    auto row = valueRowBounds();
    if (row.getHeight() < 16)
    {
        const auto geo = geometry();
        row = juce::Rectangle<float>(geo.cx - geo.size * 0.5f, geo.cy - 9.0f, geo.size, 18.0f).toNearestInt();
    }
    valueEditor.setBounds(row.reduced(2, 0));
}

void Knob::paint(juce::Graphics& g)
{
    if (flashActive && juce::Time::getMillisecondCounter() >= flashEndMs)
        flashActive = false;

    // The focus ring and the live dot reach a pixel past the top; keep them in our bounds.
    g.reduceClipRegion(getLocalBounds());
    const auto geo = geometry();
    const float haloR = geo.haloD * 0.5f, bodyR = geo.bodyD * 0.5f, arcR = geo.arcD * 0.5f;
    const float cx = geo.cx, cy = geo.cy;
    const bool buttonDown = isMouseButtonDown(true);

    if (sourceDragOver || modulated || flashActive)
    {
        const bool strong = sourceDragOver || flashActive;
        g.setColour(paletteColour(accentModRing).withMultipliedAlpha(strong ? 1.0f : 0.72f));
        g.drawEllipse(cx - haloR, cy - haloR, geo.haloD, geo.haloD, sourceDragOver ? 1.5f : 1.25f);
    }

    const bool lit = isMouseOverOrDragging() || draggingDepth;
    const auto body = paletteColour(surfaceOverlay).brighter(lit ? 0.08f : 0.02f);
    const auto edge = body.darker(buttonDown ? 0.62f : 0.48f);

    if (! buttonDown)
    {
        g.setColour(juce::Colours::black.withAlpha(0.24f));
        g.fillEllipse(cx - bodyR - 1.0f, cy - bodyR, geo.bodyD + 2.0f, geo.bodyD + 2.0f);
    }

    g.setColour(body);
    g.fillEllipse(cx - bodyR, cy - bodyR, geo.bodyD, geo.bodyD);
    g.setColour(edge.withMultipliedAlpha(0.72f));
    const float edgeD = std::max(geo.bodyD - 1.0f, 0.0f);
    g.drawEllipse(cx - bodyR + 0.5f, cy - bodyR + 0.5f, edgeD, edgeD, 1.0f);

    if (hasKeyboardFocus(false))
    {
        // In the gap between the body and the value arc: out there it would hide the depth arc.
        const float gapInner = bodyR, gapOuter = arcR - 1.5f;
        const float width = juce::jlimit(0.75f, 2.0f, gapOuter - gapInner - 0.5f);
        const float r = 0.5f * (gapInner + gapOuter);
        g.setColour(paletteColour(borderFocus));
        g.drawEllipse(cx - r, cy - r, 2.0f * r, 2.0f * r, width);
    }

    const float angle = (float) valueToProportionOfLength(getValue()) * knobAngles::sweep + knobAngles::start;

    g.setColour(paletteColour(borderSubtle));
    strokeArc(g, cx, cy, arcR, knobAngles::start, knobAngles::end, 2.0f);

    auto valueColour = paletteColour(accentPrimary);
    if (midiLearnPending)
        valueColour = valueColour.withMultipliedAlpha((std::sin(pulsePhase * twoPi) * 0.5f + 0.5f) * 0.5f + 0.5f);
    g.setColour(valueColour);
    if (bipolarArc)
        strokeArc(g, cx, cy, arcR, std::min(angle, knobAngles::top), std::max(angle, knobAngles::top), 3.0f);
    else
        strokeArc(g, cx, cy, arcR, knobAngles::start, angle, 3.0f);

    if (modulated)
        paintModulation(g, geo, haloR);

    g.setColour(paletteColour(textPrimary));
    const auto pointer = onCircle(cx, cy, 0.31f * geo.arcD, angle);
    g.fillEllipse(pointer.x - 2.0f, pointer.y - 2.0f, 4.0f, 4.0f);

    auto rest = getLocalBounds().withTrimmedTop((int) geo.size);
    drawRoleText(g, 6, label, rest.removeFromTop(std::min(rest.getHeight(), 22)), paletteColour(textMuted), 36);
    if (valueVisible && ! valueEditor.isEditing())
        drawRoleText(g, 4, formattedValue(), rest.removeFromTop(std::min(rest.getHeight(), 22)),
                     paletteColour(textPrimary), 36);
}

void Knob::paintModulation(juce::Graphics& g, const Geometry& geo, float haloR)
{
    const auto ring = paletteColour(accentModRing);
    if (depthGetter)
    {
        const float depth = juce::jlimit(-1.0f, 1.0f, depthGetter());
        const float depthAngle = ((depth + 1.0f) * 0.5f) * knobAngles::sweep + knobAngles::start;
        g.setColour(ring.withMultipliedAlpha(draggingDepth ? 1.0f : 0.72f));
        strokeArc(g, geo.cx, geo.cy, haloR, std::min(depthAngle, knobAngles::top),
                  std::max(depthAngle, knobAngles::top), draggingDepth ? 2.25f : 1.75f);
    }
    const float liveAngle = (float) livePosition * knobAngles::sweep + knobAngles::start;
    const auto dot = onCircle(geo.cx, geo.cy, haloR, liveAngle);
    g.setColour(ring);
    g.fillEllipse(dot.x - 2.0f, dot.y - 2.0f, 4.0f, 4.0f);
}

// --- mouse and keys ------------------------------------------------------------------------

void Knob::setValueFromUser(double newValue)
{
    // A reset, a key step or a typed value is an edit of its own, as a drag is.
    const ScopedDragNotification gesture(*this);
    setValue(juce::jlimit(getMinimum(), getMaximum(), newValue), juce::sendNotificationSync);
}

void Knob::resetToDefault() { setValueFromUser(getDoubleClickReturnValue()); }

void Knob::mouseDown(const juce::MouseEvent& e)
{
    valueEditor.end();

    if (e.mods.isPopupMenu())
    {
        showContextMenu();
        return;
    }
    if (e.mods.isAltDown())
    {
        resetToDefault();
        return;
    }

    const auto geo = geometry();
    const float distance = std::hypot(e.position.x - geo.cx, e.position.y - geo.cy);
    if (modulated && depthGetter && onDepthChanged && std::abs(distance - geo.haloD * 0.5f) <= ringGrabTolerance)
    {
        draggingDepth = true;
        depthAtDragStart = juce::jlimit(-1.0f, 1.0f, depthGetter());
        dragStartY = e.getMouseDownY();
        if (onDepthDragStart)
            onDepthDragStart();
        repaint();
        return;
    }

    fineDrag = e.mods.isShiftDown();
    if (! isEnabled())
        return;
    valueDragging = true;
    lastDragPosition = e.position;
    dragProportion = valueToProportionOfLength(getValue());
    dragNotification.emplace(*this);
    repaint();
}

void Knob::mouseDrag(const juce::MouseEvent& e)
{
    if (draggingDepth)
    {
        const float rate = e.mods.isShiftDown() ? 0.0025f : 0.01f;
        const float depth = juce::jlimit(-1.0f, 1.0f, depthAtDragStart + (float) (dragStartY - e.y) * rate);
        if (onDepthChanged)
            onDepthChanged(depth);
        repaint();
        return;
    }
    if (! valueDragging)
        return;

    fineDrag = e.mods.isShiftDown();
    // Right and up both raise the value; each step counts at the rate of its own moment.
    const auto delta = e.position - lastDragPosition;
    lastDragPosition = e.position;
    const double pixels = std::max(1, getMouseDragSensitivity());
    dragProportion = juce::jlimit(0.0, 1.0, dragProportion + (delta.x - delta.y) / pixels * (fineDrag ? 0.1 : 1.0));
    const auto target = proportionOfLengthToValue(dragProportion);
    setValue(snapValue(target, juce::Slider::absoluteDrag), juce::sendNotificationSync);
}

void Knob::mouseUp(const juce::MouseEvent&)
{
    if (draggingDepth)
    {
        draggingDepth = false;
        if (onDepthDragEnd)
            onDepthDragEnd();
        repaint();
        return;
    }
    if (valueDragging)
    {
        valueDragging = false;
        dragNotification.reset();
        repaint();
    }
}

void Knob::mouseDoubleClick(const juce::MouseEvent& e)
{
    // The value text takes a typed value; the rest of the knob resets.
    if (valueVisible && valueRowBounds().contains(e.getPosition()))
        showValueEntry();
    else
        resetToDefault();
}

void Knob::mouseWheelMove(const juce::MouseEvent& e, const juce::MouseWheelDetails& wheel)
{
    if (! e.mods.isShiftDown())
    {
        juce::Slider::mouseWheelMove(e, wheel);
        return;
    }
    auto fine = wheel;
    fine.deltaX *= 0.1f;
    fine.deltaY *= 0.1f;
    juce::Slider::mouseWheelMove(e, fine);
}

bool Knob::keyPressed(const juce::KeyPress& key)
{
    const int code = key.getKeyCode();
    if (code == juce::KeyPress::returnKey)
    {
        showValueEntry();
        return true;
    }
    if (code == juce::KeyPress::deleteKey || code == juce::KeyPress::backspaceKey)
    {
        resetToDefault();
        return true;
    }

    int direction = 0;
    if (code == juce::KeyPress::upKey || code == juce::KeyPress::rightKey)
        direction = 1;
    else if (code == juce::KeyPress::downKey || code == juce::KeyPress::leftKey)
        direction = -1;
    if (direction == 0 || key.getModifiers().isCtrlDown() || key.getModifiers().isAltDown())
        return false;

    const bool fine = key.getModifiers().isShiftDown();
    const double step = getInterval() > 0.0 ? getInterval() : (getMaximum() - getMinimum()) * (fine ? 0.001 : 0.01);
    setValueFromUser(getValue() + direction * step);
    return true;
}

double Knob::snapValue(double attempted, DragMode dragMode)
{
    if (detentEnabled && dragMode != juce::Slider::notDragging && getMinimum() < 0.0 && getMaximum() > 0.0)
    {
        const double threshold = detentWidth * (fineDrag ? 0.2 : 1.0);
        if (std::abs(attempted) <= threshold)
            return 0.0;
    }
    return juce::Slider::snapValue(attempted, dragMode);
}

void Knob::timerCallback()
{
    pulsePhase += 1.0f / 30.0f;
    if (pulsePhase > 1.0f)
        pulsePhase -= 1.0f;
    if (flashActive && juce::Time::getMillisecondCounter() >= flashEndMs)
        flashActive = false;
    if (! flashActive && ! midiLearnPending)
    {
        stopTimer();
        pulsePhase = 0.0f;
    }
    repaint();
}

std::unique_ptr<juce::AccessibilityHandler> Knob::createAccessibilityHandler()
{
    return makeSliderAccessibility(*this, [this] { return formattedValue(); },
                                   [this](const juce::String& text) { return parseValue(text); });
}

} // namespace ostrel::widgets
