#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

// A processor that only holds parameters, for controls to bind to outside the instrument: the
// widget gallery and the widget tests.
class ParameterOnlyProcessor : public juce::AudioProcessor
{
public:
    ParameterOnlyProcessor (const juce::Identifier& type, juce::AudioProcessorValueTreeState::ParameterLayout layout)
        : state (*this, nullptr, type, std::move (layout)) {}

    const juce::String getName() const override { return state.state.getType().toString(); }
    void prepareToPlay (double, int) override {}
    void releaseResources() override {}
    using juce::AudioProcessor::processBlock;
    void processBlock (juce::AudioBuffer<float>&, juce::MidiBuffer&) override {}
    double getTailLengthSeconds() const override { return 0.0; }
    bool acceptsMidi() const override { return false; }
    bool producesMidi() const override { return false; }
    juce::AudioProcessorEditor* createEditor() override { return nullptr; }
    bool hasEditor() const override { return false; }
    int getNumPrograms() override { return 1; }
    int getCurrentProgram() override { return 0; }
    void setCurrentProgram (int) override {}
    const juce::String getProgramName (int) override { return {}; }
    void changeProgramName (int, const juce::String&) override {}
    void getStateInformation (juce::MemoryBlock&) override {}
    void setStateInformation (const void*, int) override {}

    juce::AudioProcessorValueTreeState state;
};
