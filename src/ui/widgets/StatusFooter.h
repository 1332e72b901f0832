#pragma once

#include "ui/primitives/canonical/LabeledChipButton.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <functional>

namespace morvane::ui::widgets
{
// The strip along the bottom: the three overlay toggles, four macro dials, and the voice, audio
// and dirty read-outs. Repaints only what changed.
class StatusFooter : public juce::Component
{
public:
    enum class MacroGesture { begin = 0, drag = 1, end = 2 };

    class FooterButton : public primitives::canonical::LabeledChipButton
    {
    public:
        explicit FooterButton (const juce::String& text);
    };

    StatusFooter();
    ~StatusFooter() override;

    std::function<void()> onMatrix, onPlay, onFx;
    std::function<void (int, float, MacroGesture)> onMacro;

    void setSampleRate (double rate);
    void setCpuPercent (float percent);
    void setVoiceText (const juce::String& text);
    void setDirty (bool dirty);
    void setMatrixOpen (bool open);
    void setPlayOpen (bool open);
    void setFxOpen (bool open);

    float getMacro (int index) const { return macros[(size_t) juce::jlimit (0, 3, index)]; }
    juce::String audioText() const;
    bool isDirtyShown() const noexcept { return dirty; }
    const juce::String& getVoiceText() const noexcept { return voiceText; }

    juce::Rectangle<int> macroBox (int index) const;

    void mouseDown (const juce::MouseEvent&) override;
    void mouseDrag (const juce::MouseEvent&) override;
    void mouseUp (const juce::MouseEvent&) override;
    void paint (juce::Graphics&) override;
    void resized() override;

private:
    void press (FooterButton& button, bool& flag, const std::function<void()>& callback);
    void moveMacro (const juce::MouseEvent&, MacroGesture gesture);
    juce::Rectangle<int> block (int x, int width) const;

    double sampleRate = 48000.0;
    float cpuPercent = 0.0f;
    bool matrixOpen = false, playOpen = false, fxOpen = false, dirty = false;
    juce::String voiceText { "MONO" };
    std::array<float, 4> macros {};
    int activeMacro = -1;
    FooterButton matrixButton { "MATRIX" }, playButton { "PLAY" }, fxButton { "FX" };
};
}
