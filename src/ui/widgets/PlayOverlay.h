#pragma once

#include "widgets/PerformanceControls.h"
#include "widgets/PianoKeyboard.h"
#include "widgets/SectionFrame.h"
#include "widgets/StepPhraseGrid.h"
#include "widgets/Tab.h"
#include "widgets/ValueChip.h"

#include <array>
#include <functional>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::widgets
{
// A performance surface over the canvas: keyboard, wheel, sliders and pressure pad through the
// processor's command ring, and the editor of the 16-step phrase that the processor plays in time.
// Whatever the overlay started ends with it.
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
    // Follows the processor: its transport (a host may stop it), its playhead, a restored phrase.
    void syncWithProcessor();

    ostrel::widgets::StepPhraseGrid phraseGrid;
    ostrel::widgets::PianoKeyboard keyboard;
    ostrel::widgets::PerformanceWheel pitchWheel;
    ostrel::widgets::PerformanceSlider modSlider, velocitySlider;
    ostrel::widgets::PressurePad pressurePad;
    ostrel::widgets::Tab playButton { "PLAY" }, holdButton { "HOLD" };
    ostrel::widgets::Tab noteButton { "NOTE" }, tieButton { "TIE" }, accentButton { "ACC" }, eraseButton { "ERASE" };
    ostrel::widgets::Tab clearButton { "CLEAR", 1 }, panicButton { "PANIC", 1 };
    ostrel::widgets::ValueChip swingChip { "SWING" };
    juce::TextButton closeButton;

private:
    void timerCallback() override;
    void keyDown (int note, float velocity);
    void keyUp (int note);
    void releaseHeldKeys();
    void setHold (bool on);
    void setEditMode (int mode);
    void loadPhrase();
    void publishPhrase();
    void showPhraseNote (int note);

    MorvaneAudioProcessor& processor;
    juce::Rectangle<int> transportLabelArea, editLabelArea, dangerLabelArea;
    std::array<bool, 128> heldKeys {};
    bool holdOn = false, playing = false;
    int shownPhraseNote = -1, phraseRevision = -1;
};
}
