#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <array>

namespace morvane::ui::widgets
{
// Magnitude of the drawing model of a filter model at q = frequency / cutoff, resonance r in 0..1.
float filterDrawingMagnitude (int model, float q, float r);

// The filter's shape as a drawing model, with a handle that drags cutoff (x) and resonance (y).
class FilterResponseStrip : public juce::Component, private juce::Timer, private juce::AsyncUpdater
{
public:
    explicit FilterResponseStrip (juce::AudioProcessorValueTreeState& state);
    ~FilterResponseStrip() override;

    void setEnvelopeOverlay (bool on);
    // Rebuilds the curves if a value moved; true when it repainted.
    bool refresh();

    juce::Rectangle<int> getPlot() const noexcept { return plot; }
    const juce::Path& getCurve() const noexcept { return curve; }
    juce::Point<float> cutoffHandle() const;
    float xOfFrequency (float hz) const;
    int getDragMode() const noexcept { return dragMode; }

    void mouseDown (const juce::MouseEvent&) override;
    void mouseDrag (const juce::MouseEvent&) override;
    void mouseUp (const juce::MouseEvent&) override;
    void paint (juce::Graphics&) override;
    void resized() override;

private:
    struct ParamListener : juce::AudioProcessorValueTreeState::Listener
    {
        explicit ParamListener (FilterResponseStrip& o) : owner (o) {}
        void parameterChanged (const juce::String&, float) override;
        FilterResponseStrip& owner;
    };

    void timerCallback() override { refresh(); }
    void handleAsyncUpdate() override { refresh(); }
    juce::Path buildCurve (float cutoffHz, float r, int model) const;
    std::array<juce::Point<float>, 4> envelopePoints() const;
    void gestures (bool begin);
    static float realValue (juce::RangedAudioParameter*, float fallback);

    juce::AudioProcessorValueTreeState& state;
    ParamListener listener { *this };
    juce::RangedAudioParameter *cutoff, *reso, *envAmount, *model, *attack, *decay, *sustain, *release;
    std::array<float, 8> cached { -1, -1, -1, -1, -1, -1, -1, -1 };
    juce::Path curve, envelopedCurve;
    bool envelopeOverlay = true;
    int dragMode = 0;
    juce::Point<float> pressPosition;
    float pressCutoff = 0, pressReso = 0, pressValue = 0;
    juce::Rectangle<int> plot;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (FilterResponseStrip)
};
}
