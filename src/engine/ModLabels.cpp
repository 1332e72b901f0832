#include "engine/ModLabels.h"

#include "audio/Parameters.h"

namespace morvane
{
namespace
{
    const char* const ids[] = { "off", "velocity", "key", "modwheel", "aftertouch", "lfo1", "dcw1Env", "dcw2Env",
                                "filterEnv", "ampEnv", "noteRandom", "smoothRandom", "beatPhase" };
    const char* const chips[] = { "OFF", "VEL", "KEY", "MWHL", "AT", "LFO 1", "DCW 1", "DCW 2",
                                  "FENV", "AENV", "NRND", "SRND", "BEAT" };
    const char* const upper[] = { "", "VELOCITY", "", "MOD WHEEL", "AFTERTOUCH", "", "DCW ENV OSC 1", "DCW ENV OSC 2",
                                  "FILTER ENV", "AMP ENV", "NOTE RANDOM", "SMOOTH RANDOM", "BEAT PHASE" };
    const char* const shorts[] = { "", "VEL", "", "MW", "AT", "", "DCW1", "DCW2",
                                   "FENV", "AENV", "NRND", "SRND", "BEAT" };

    template <size_t N>
    juce::String pick (const char* const (&list)[N], int index)
    {
        return index >= 0 && index < (int) N ? juce::String (list[index]) : juce::String();
    }
}

juce::String sourceId (int source) { return pick (ids, source); }
juce::String sourceChipLabel (int source) { return pick (chips, source); }
juce::String sourceUpperName (int source) { return pick (upper, source); }

juce::String shortSourceLabel (const juce::String& name)
{
    const auto key = name.trim().toUpperCase();
    for (size_t i = 0; i < std::size (upper); ++i)
        if (key.isNotEmpty() && key == upper[i])
            return shorts[i];
    return key;
}

juce::String shortSourceName (const juce::String& name)
{
    const auto key = name.trim().toUpperCase();
    const auto label = shortSourceLabel (key);
    return label != key ? label : key.upToFirstOccurrenceOf (" ", false, false);
}

juce::String destinationShortLabel (int destination)
{
    const auto& list = choices::modDestinations();
    if (destination < 0 || destination >= list.size())
        return {};
    return list[destination].toUpperCase()
        .replace ("OSC1", "O1").replace ("OSC2", "O2").replace ("DETUNE HZ", "HZ")
        .replace ("FILTER ENV", "FENV").replace ("NOISE LEVEL", "NOISE").replace ("SUB LEVEL", "SUB")
        .replace ("RESONANCE", "RES").replace ("OUTPUT", "OUT");
}
}
