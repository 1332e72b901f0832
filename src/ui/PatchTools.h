#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <random>

namespace morvane::ui
{
// The workflow menu's patch tools and the footer's macros. Each parameter change is one host
// gesture; none opens an undo transaction of its own.
namespace patch
{
    // A parameter set in its own units as one gesture; false when the id is unknown.
    bool setParameter (juce::AudioProcessorValueTreeState& state, const juce::String& id, float value);

    juce::ValueTree capture (juce::AudioProcessorValueTreeState& state);
    // Replaces the tree with a deep copy of the slot; each change marks the patch dirty.
    void recall (juce::AudioProcessorValueTreeState& state, const juce::ValueTree& slot);
    // Blends A and B in the parameters' own units into the live patch.
    void morph (juce::AudioProcessorValueTreeState& state, const juce::ValueTree& a, const juce::ValueTree& b, float t);
    // Scopes "osc", "filter", "drive", "movement" and "full"; any other word changes nothing.
    void randomise (juce::AudioProcessorValueTreeState& state, const juce::String& scope, std::mt19937& engine);

    enum class Gesture { begin, drag, end };
    void applyMacro (juce::AudioProcessorValueTreeState& state, int index, float value, Gesture gesture);
}
}
