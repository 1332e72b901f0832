#include "PianoKeyboard.h"

namespace ostrel::widgets
{

PianoKeyboard::PianoKeyboard()
{
    setSize(616, 96);
    setWantsKeyboardFocus(true);
    setMouseCursor(juce::MouseCursor::PointingHandCursor);
    setTitle("Piano keyboard");
    setHelpText("Play audition notes.");
}

PianoKeyboard::~PianoKeyboard() { stopTimer(); }

void PianoKeyboard::setKeyRange(int first, int count)
{
    firstNote = juce::jlimit(0, 127, first);
    noteCount = count < 1 ? 1 : std::min(128 - firstNote, count);
    if (heldNote >= 0 && (heldNote < firstNote || heldNote >= firstNote + noteCount))
        heldNote = -1;
    repaint();
}

void PianoKeyboard::setScale(int root, int mask)
{
    scaleRoot = ((root % 12) + 12) % 12;
    scaleMask = mask & 0xFFF;
    repaint();
}

void PianoKeyboard::setNoteDisplayed(int note, bool on)
{
    if (note < 0 || note > 127)
        return;
    pressed[(size_t) note] = on;
    if (on)
    {
        glow[(size_t) note] = 1.0f;
        if (! isTimerRunning())
            startTimerHz(30);
    }
    repaint();
}

void PianoKeyboard::setKeyMarked(int note, bool on)
{
    if (note < 0 || note > 127 || marked[(size_t) note] == on)
        return;
    marked[(size_t) note] = on;
    repaint();
}

void PianoKeyboard::clearNotes()
{
    pressed.fill(false);
    marked.fill(false);
    glow.fill(0.0f);
    heldNote = -1;
    stopTimer();
    repaint();
}

// --- geometry ------------------------------------------------------------------------------

int PianoKeyboard::whiteCount() const
{
    int n = 0;
    for (int note = firstNote; note < firstNote + noteCount; ++note)
        n += isBlackKey(note) ? 0 : 1;
    return std::max(n, 1);
}

int PianoKeyboard::whiteIndex(int note) const
{
    int n = 0;
    for (int k = firstNote; k < note; ++k)
        n += isBlackKey(k) ? 0 : 1;
    return n;
}

juce::Rectangle<float> PianoKeyboard::keyBounds(int note) const
{
    const float whiteW = (float) getWidth() / (float) whiteCount();
    const float x = (float) whiteIndex(note) * whiteW;
    if (! isBlackKey(note))
        return { x, 0.0f, whiteW, (float) getHeight() };
    const float blackW = 0.58f * whiteW;
    return { x - blackW * 0.5f, 0.0f, blackW, 0.62f * (float) getHeight() };
}

int PianoKeyboard::noteAt(float x, float y) const
{
    if (y < 0.0f || x < 0.0f || x >= (float) getWidth() || y >= (float) getHeight())
        return -1;
    const int last = firstNote + noteCount;
    for (int note = firstNote; note < last; ++note)
        if (isBlackKey(note) && keyBounds(note).contains(x, y))
            return note;
    for (int note = firstNote; note < last; ++note)
        if (! isBlackKey(note) && keyBounds(note).contains(x, y))
            return note;
    return -1;
}

float PianoKeyboard::velocityAt(float y) const
{
    const float h = (float) getHeight();
    if (! velocityFromY || h <= 1.0f)
        return 0.8f;
    return juce::jlimit(0.12f, 1.0f, (1.0f - y / (h - 1.0f)) * 0.8f + 0.2f);
}

// --- notes and mouse -----------------------------------------------------------------------

void PianoKeyboard::pressNote(int note, float velocity)
{
    if (note < 0 || note > 127)
        return;
    heldNote = note;
    if (! pressed[(size_t) note])
    {
        pressed[(size_t) note] = true;
        glow[(size_t) note] = 1.0f;
        if (! isTimerRunning())
            startTimerHz(30);
        repaint();
    }
    if (onNoteOn)
        onNoteOn(note, velocity);
}

void PianoKeyboard::releaseNote(int note)
{
    if (note < 0 || note > 127)
        return;
    if (note == heldNote)
        heldNote = -1;
    if (pressed[(size_t) note])
    {
        pressed[(size_t) note] = false;
        repaint();
    }
    if (onNoteOff)
        onNoteOff(note);
}

void PianoKeyboard::mouseDown(const juce::MouseEvent& e)
{
    if (isShowing())
        grabKeyboardFocus();
    pressNote(noteAt(e.position.x, e.position.y), velocityAt(e.position.y));
}

void PianoKeyboard::mouseDrag(const juce::MouseEvent& e)
{
    const int note = noteAt(e.position.x, e.position.y);
    if (note == heldNote)
        return;
    releaseNote(heldNote);
    pressNote(note, velocityAt(e.position.y));
}

void PianoKeyboard::mouseUp(const juce::MouseEvent&) { releaseNote(heldNote); }

void PianoKeyboard::mouseMove(const juce::MouseEvent& e)
{
    const int note = noteAt(e.position.x, e.position.y);
    if (note == hoverNote)
        return;
    hoverNote = note;
    repaint();
}

void PianoKeyboard::mouseExit(const juce::MouseEvent& e)
{
    if (! e.mods.isAnyMouseButtonDown())
        releaseNote(heldNote);
    hoverNote = -1;
    repaint();
}

void PianoKeyboard::timerCallback()
{
    bool any = false;
    for (auto& g : glow)
    {
        if (g > 0.0f)
        {
            g = std::max(0.0f, g - 0.12f);
            any = any || g > 0.0f;
        }
    }
    repaint();
    if (! any)
        stopTimer();
}

// --- paint ---------------------------------------------------------------------------------

void PianoKeyboard::paint(juce::Graphics& g)
{
    g.setColour(paletteColour(surfacePanel));
    g.fillRect(getLocalBounds()); // not fillAll: that fills the whole clip, which may be wider
    // Ivory and ebony whatever the theme: in a light palette the text colour is dark, so the keys
    // take the lightest surface and the text colour instead.
    const bool dark = WidgetTheme::current().dark;
    const auto white = dark ? paletteColour(textPrimary).withAlpha(0.92f).overlaidWith(paletteColour(surfaceRaised).withAlpha(0.06f))
                            : paletteColour(surfacePanel);
    const auto black = dark ? paletteColour(surfaceBase).darker(0.6f) : paletteColour(textPrimary).brighter(0.15f);

    const int last = firstNote + noteCount;
    for (int note = firstNote; note < last; ++note)
        if (! isBlackKey(note))
            paintWhiteKey(g, note, white);
    for (int note = firstNote; note < last; ++note)
        if (isBlackKey(note))
            paintBlackKey(g, note, black, white);
}

void PianoKeyboard::paintWhiteKey(juce::Graphics& g, int note, juce::Colour white)
{
    const float whiteW = (float) getWidth() / (float) whiteCount();
    const auto box = juce::Rectangle<float>((float) whiteIndex(note) * whiteW + 1.0f, 1.0f, std::max(whiteW - 2.0f, 0.0f),
                                            std::max((float) getHeight() - 2.0f, 0.0f));
    const bool isPressed = pressed[(size_t) note];
    const bool out = outOfScale(note);

    auto fill = out ? white.withMultipliedAlpha(0.28f) : white;
    if (note == hoverNote)
        fill = isPressed ? paletteColour(accentPrimary) : fill.brighter(0.06f);
    if (isPressed)
        fill = paletteColour(accentPrimary);
    g.setColour(fill);
    g.fillRoundedRectangle(box, 2.0f);

    if (! isPressed && glow[(size_t) note] > 0.0f)
    {
        g.setColour(paletteColour(accentPrimary).withAlpha(glow[(size_t) note] * 0.55f));
        g.fillRoundedRectangle(box, 2.0f);
    }

    g.setColour(paletteColour(surfaceBase).withAlpha(isPressed ? 0.12f : 0.22f));
    g.fillRect(box.withTop(box.getBottom() - 4.0f));

    if (marked[(size_t) note] && ! isPressed)
    {
        g.setColour(paletteColour(accentPrimary).withAlpha(0.9f));
        g.drawRoundedRectangle(box.reduced(1.5f), 2.0f, 2.5f);
    }

    g.setColour(paletteColour(borderSubtle).withAlpha(0.4f));
    g.drawRoundedRectangle(box, 2.0f, 1.0f);

    if (note % 12 == 0)
    {
        const auto boxInt = box.toNearestInt();
        const int textH = std::min(std::max((int) (boxInt.getHeight() * 0.32f), 20), boxInt.getHeight());
        const auto area = boxInt.withTop(boxInt.getBottom() - textH).withTrimmedBottom(4);
        auto colour = isPressed ? paletteColour(accentPrimaryText) : paletteColour(accentPrimary).withAlpha(out ? 0.5f : 1.0f);
        drawRoleText(g, 4, noteNameWithOctave(note), area, colour, 36);
    }
}

void PianoKeyboard::paintBlackKey(juce::Graphics& g, int note, juce::Colour black, juce::Colour white)
{
    const auto key = keyBounds(note);
    const auto box = juce::Rectangle<float>(key.getX() + 1.0f, 1.0f, std::max(key.getWidth() - 2.0f, 0.0f),
                                            std::max((float) getHeight() * 0.62f - 2.0f, 0.0f));
    const bool isPressed = pressed[(size_t) note];

    // Faded keys are mixed with the ivory, not see-through: the gap between two white keys must
    // not show through and split the key in two.
    auto fill = outOfScale(note) ? white.interpolatedWith(black, 0.55f).withAlpha(1.0f) : black;
    if (note == hoverNote && ! isPressed)
        fill = fill.brighter(0.18f);
    if (isPressed)
        fill = paletteColour(accentPrimary);
    g.setColour(fill);
    g.fillRoundedRectangle(box, 2.0f);

    if (! isPressed && glow[(size_t) note] > 0.0f)
    {
        g.setColour(paletteColour(accentPrimary).withAlpha(glow[(size_t) note] * 0.6f));
        g.fillRoundedRectangle(box, 2.0f);
    }

    g.setColour(isPressed ? paletteColour(accentPrimaryText).withAlpha(0.25f) : juce::Colours::white.withAlpha((juce::uint8) 18));
    g.fillRect(box.withHeight(2.0f));

    if (marked[(size_t) note] && ! isPressed)
    {
        g.setColour(paletteColour(accentPrimary));
        g.drawRoundedRectangle(box.reduced(1.5f), 2.0f, 2.5f);
    }

    g.setColour(isPressed ? paletteColour(accentPrimaryText) : paletteColour(borderSubtle).withAlpha(0.6f));
    g.drawRoundedRectangle(box, 2.0f, 1.0f);
}

std::unique_ptr<juce::AccessibilityHandler> PianoKeyboard::createAccessibilityHandler()
{
    return std::make_unique<juce::AccessibilityHandler>(*this, juce::AccessibilityRole::group);
}

} // namespace ostrel::widgets
