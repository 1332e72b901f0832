#pragma once

#include <juce_core/juce_core.h>

namespace morvane
{
// The editor's names for modulation sources and destinations, by choice index.
juce::String sourceId (int source);
juce::String sourceChipLabel (int source);
juce::String sourceUpperName (int source); // empty where the source has none
// A source's short label, as an oscillator card's badge shows it: a name outside the table stands
// for itself ("LFO 1").
juce::String shortSourceLabel (const juce::String& name);
// The shorter form of the editor's route badges: a name outside the table gives its first word ("LFO").
juce::String shortSourceName (const juce::String& name);
juce::String destinationShortLabel (int destination);
}
