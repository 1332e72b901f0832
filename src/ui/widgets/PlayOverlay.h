#pragma once

#include "widgets/PerformanceControls.h"
#include "widgets/PianoKeyboard.h"
#include "widgets/SectionFrame.h"
#include "widgets/StepPhraseGrid.h"
#include "widgets/Tab.h"

#include <array>
#include <functional>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::widgets
{
// A performance surface over the canvas: keyboard, wheel, sliders, pressure pad and a 16-step
// phrase with its own transport, all through the processor's command ring. Nothing is stored.
class PlayOverlay : public ostrel::widgets::SectionFrame,
                    private juce::Timer
{
public:
    explicit PlayOverlay (MorvaneAudioProcessor& processor);
    ~PlayOverlay() override;

    std::function<void()> onClose;

    void visibilityChanged() override;
    void paint (juce::Graphics&) override;
    bool keyPressed (const juce::KeyPress&) override;
    void resized() override;

    void setPlaying (bool on);
    bool isPlaying() const noexcept { return playing; }
    void panic();
    // One pass of the transport's clock, as the timer runs it; now in milliseconds.
    void tick (double now);

    ostrel::widgets::StepPhraseGrid phraseGrid;
    ostrel::widgets::PianoKeyboard keyboard;
    ostrel::widgets::PerformanceWheel pitchWheel;
    ostrel::widgets::PerformanceSlider modSlider, velocitySlider;
    ostrel::widgets::PressurePad pressurePad;
    ostrel::widgets::Tab playButton { "PLAY" }, holdButton { "HOLD" };
    ostrel::widgets::Tab noteButton { "NOTE" }, tieButton { "TIE" }, accentButton { "ACC" }, eraseButton { "ERASE" };
    ostrel::widgets::Tab clearButton { "CLEAR", 1 }, panicButton { "PANIC", 1 };
    juce::TextButton closeButton;

    int getSoundingNote() const noexcept { return soundingNote; }
    int getCurrentStep() const noexcept { return currentStep; }

private:
    void timerCallback() override;
    void keyDown (int note, float velocity);
    void keyUp (int note);
    void releaseHeldKeys();
    void setHold (bool on);
    void setEditMode (int mode);
    void stopPhraseNote();

    MorvaneAudioProcessor& processor;
    juce::Rectangle<int> transportLabelArea, editLabelArea, dangerLabelArea;
    std::array<bool, 128> heldKeys {};
    bool holdOn = false, playing = false;
    int currentStep = -1, soundingNote = -1;
    double nextStepTime = 0.0;
};
}
