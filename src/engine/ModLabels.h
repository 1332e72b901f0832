#pragma once

#include <juce_core/juce_core.h>

namespace morvane
{
// The editor's names for modulation sources and destinations, by choice index.
juce::String sourceId (int source);
juce::String sourceChipLabel (int source);
juce::String sourceUpperName (int source); // empty where the source has none
juce::String shortSourceName (const juce::String& name);
juce::String destinationShortLabel (int destination);
}
