#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <vector>

namespace morvane::ui::widgets
{
struct Route
{
    int slot;        // 1 to 8
    int source;      // choice index, above 0
    int destination; // choice index, above 0
    float amount;    // -1 to 1
    juce::String sourceName, destinationName;
};

// The slots that have both a source and a destination, in slot order.
std::vector<Route> activeRoutes (juce::AudioProcessorValueTreeState& state);
juce::String formatGlideTime (float seconds);
}
