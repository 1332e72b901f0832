#pragma once

#include "WidgetStyle.h"

#include <array>

namespace ostrel::widgets
{

// The on-screen keyboard of the play overlay: reports notes, plays nothing itself.
class PianoKeyboard : public juce::Component, private juce::Timer
{
public:
    PianoKeyboard();
    ~PianoKeyboard() override;

    std::function<void(int note, float velocity)> onNoteOn;
    std::function<void(int note)> onNoteOff;

    void setKeyRange(int first, int count);
    void setScale(int root, int mask);
    void setVelocityFromY(bool on) { velocityFromY = on; }
    // Lights or darkens a key from outside, without calling back.
    void setNoteDisplayed(int note, bool on);
    void setKeyMarked(int note, bool on);
    void clearNotes();

    int getFirstNote() const noexcept { return firstNote; }
    int getNoteCount() const noexcept { return noteCount; }
    int getHeldNote() const noexcept { return heldNote; }
    int getHoverNote() const noexcept { return hoverNote; }
    bool isNotePressed(int note) const { return note >= 0 && note < 128 && pressed[(size_t) note]; }
    bool isKeyMarked(int note) const { return note >= 0 && note < 128 && marked[(size_t) note]; }
    float getGlow(int note) const { return note >= 0 && note < 128 ? glow[(size_t) note] : 0.0f; }
    bool isGlowing() const { return isTimerRunning(); }

    int noteAt(float x, float y) const;
    juce::Rectangle<float> keyBounds(int note) const;
    float velocityAt(float y) const;

    void mouseMove(const juce::MouseEvent&) override;
    void mouseExit(const juce::MouseEvent&) override;
    void mouseDown(const juce::MouseEvent&) override;
    void mouseDrag(const juce::MouseEvent&) override;
    void mouseUp(const juce::MouseEvent&) override;
    void paint(juce::Graphics&) override;
    void resized() override { repaint(); }
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

private:
    void timerCallback() override;
    void pressNote(int note, float velocity);
    void releaseNote(int note);
    int whiteCount() const;
    int whiteIndex(int note) const;
    bool outOfScale(int note) const { return isOutOfScale(note, scaleRoot, scaleMask); }
    void paintWhiteKey(juce::Graphics&, int note, juce::Colour white);
    void paintBlackKey(juce::Graphics&, int note, juce::Colour black, juce::Colour white);

    int firstNote = 36, noteCount = 24;
    int heldNote = -1, hoverNote = -1;
    int scaleRoot = 0, scaleMask = 0xFFF;
    bool velocityFromY = true;
    std::array<bool, 128> pressed {}, marked {};
    std::array<float, 128> glow {};

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(PianoKeyboard)
};

} // namespace ostrel::widgets
