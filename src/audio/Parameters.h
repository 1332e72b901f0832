#pragma once

#include "engine/ModMatrix.h"

#include <juce_audio_processors/juce_audio_processors.h>

namespace morvane
{
// Shared choice lists. Stored patches hold indices into these, so their order never changes.
namespace choices
{
    const juce::StringArray& waves();
    const juce::StringArray& octave();
    const juce::StringArray& subOctave();
    const juce::StringArray& mbdModes();
    const juce::StringArray& subRouting();
    const juce::StringArray& feedbackPosition();
    const juce::StringArray& modSources();
    const juce::StringArray& modDestinations();
}

inline constexpr int numParameters = 158;

// Range whose midpoint sits at the geometric mean of start and end; skew 0.4 when either end
// is not above zero.
juce::NormalisableRange<float> makeGeometricRange (float start, float end);

void addEnvelopeParameters (juce::AudioProcessorValueTreeState::ParameterLayout& layout,
                            const juce::String& idPrefix, const juce::String& namePrefix,
                            float attack, float decay, float sustain, float release);

juce::AudioProcessorValueTreeState::ParameterLayout createParameterLayout();

// The ids of the matrix slot parameters, slot numbered from 1.
juce::String modSourceId (int slot);
juce::String modDestId (int slot);
juce::String modAmountId (int slot);
juce::String modCurveId (int slot);
}
