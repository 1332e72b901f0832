#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

namespace morvane::ui::widgets
{
// The thumbnail's transfer curve at input u (-1 to 1), for a drive mode and linear gain g.
float driveThumbnailCurve (int mode, float u, float g) noexcept;

// The transfer curve of the voice drive at its present amount; a vertical drag sets the amount
// and a double-click opens a box for decibels.
class DriveThumbnail : public juce::Component, private juce::AsyncUpdater
{
public:
    explicit DriveThumbnail (juce::AudioProcessorValueTreeState& state);
    ~DriveThumbnail() override;

    void mouseDown (const juce::MouseEvent&) override;
    void mouseDrag (const juce::MouseEvent&) override;
    void mouseUp (const juce::MouseEvent&) override;
    void mouseDoubleClick (const juce::MouseEvent&) override;
    void paint (juce::Graphics&) override;

    juce::TextEditor* getValueEditor() const noexcept { return valueEditor.get(); }
    void openValueEditor();
    void commitValueEditor();
    void cancelValueEditor();
    // The curve's box inside the bounds, and the point of input u in it.
    juce::Rectangle<float> curveArea() const;
    juce::Point<float> curvePoint (float u) const;

private:
    struct ParamListener : juce::AudioProcessorValueTreeState::Listener
    {
        explicit ParamListener (DriveThumbnail& o) : owner (o) {}
        void parameterChanged (const juce::String&, float) override;
        DriveThumbnail& owner;
    };

    void handleAsyncUpdate() override { repaint(); }
    void closeValueEditor();
    float driveDb() const;
    int modeIndex() const;

    juce::AudioProcessorValueTreeState& state;
    juce::RangedAudioParameter *driveParameter, *modeParameter;
    std::unique_ptr<ParamListener> listener;
    bool dragging = false;
    int pressY = 0;
    float pressValue = 0.0f;
    std::unique_ptr<juce::TextEditor> valueEditor;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (DriveThumbnail)
};
}
