#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <array>

namespace morvane::ui::widgets
{
// The chosen wave at DCW 0 and at the current amount, computed by the engine's own wave function.
// The whole picture is a vertical fader for the DCW amount.
class DcwVisualiser : public juce::Component, private juce::Timer
{
public:
    DcwVisualiser (juce::AudioProcessorValueTreeState& state, int oscIndex);
    ~DcwVisualiser() override;

    // Recomputes the curves if wave or depth moved; true when it did.
    bool refresh();
    const std::array<float, 128>& getShapedCurve() const noexcept { return shapedCurve; }
    const std::array<float, 128>& getNeutralCurve() const noexcept { return neutralCurve; }

    void mouseDown (const juce::MouseEvent&) override;
    void mouseDrag (const juce::MouseEvent&) override;
    void mouseUp (const juce::MouseEvent&) override;
    void paint (juce::Graphics&) override;

private:
    void timerCallback() override { refresh(); }

    juce::AudioProcessorValueTreeState& state;
    int oscIndex;
    juce::RangedAudioParameter* depthParameter = nullptr;
    juce::RangedAudioParameter* waveParameter = nullptr;
    bool dragging = false;
    float pressY = 0.0f, pressValue = 0.0f;
    int lastWave = -1;
    float lastDepth = -1.0f;
    std::array<float, 128> neutralCurve {}, shapedCurve {};

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (DcwVisualiser)
};
}
