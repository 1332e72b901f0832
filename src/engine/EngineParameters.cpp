#include "engine/EngineParameters.h"

namespace morvane
{
namespace
{
    constexpr const char* ids[] = {
        "phaseMode", "mode", "detuneMode", "stereoMode", "stereoWidth", "osc1Wave", "osc2Wave", "subWave",
        "subMode", "subOctave", "subSemitone", "subFine", "syncOsc1", "syncOsc2", "driveMode", "drivePosition",
        "driveAutoMakeup", "filterModel", "noiseColour", "subRouting", "velToFilterEnv", "velToDrive",
        "osc2PhaseOffset", "lfo1Retrig", "glideTime", "octave", "osc1Level", "osc2Level", "subLevel",
        "subDriveSend", "drive", "osc2Detune", "osc2DetuneHz", "osc1DcwDepth", "osc2DcwDepth", "oscDrift",
        "subDcwDepth", "filterCutoff", "filterReso", "filterEnvAmount", "outputGain", "lfo1Rate", "lfo1Depth",
        "lfo1Phase", "noiseLevel", "noiseRouting", "osc1PulseWidth", "osc2PulseWidth", "osc1Semitone",
        "osc1Fine", "osc2Semitone", "osc2Fine", "driveGain", "driveMix", "filterEnabled", "monoLowEnabled",
        "monoLowFreq", "reeseBeat", "reeseSpread", "reeseLock", "pdMorphAmount", "phaseMix", "phaseStereo",
        "phaseNotch", "feedbackAmount", "feedbackTone", "feedbackPosition", "mbdEnable", "mbdMix",
        "mbdLowAmount", "mbdMidAmount", "mbdHighAmount", "mbdLowCross", "mbdHighCross", "mbdLowMode",
        "mbdMidMode", "mbdHighMode", "modFxEnable", "modFxMode", "modFxRate", "modFxDepth", "modFxFeedback",
        "modFxMix", "postEqEnable", "postEqTilt", "postEqNotchHz", "postEqNotchDepth", "driveOn"
    };
    static_assert (std::size (ids) == (size_t) P::count);
}

const char* cachedParameterId (P p) noexcept { return ids[(size_t) p]; }

void ParamCache::fill (juce::AudioProcessorValueTreeState& tree)
{
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = tree.getRawParameterValue (ids[i]);
}
}
