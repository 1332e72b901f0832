#include "audio/Parameters.h"

#include <cmath>
#include <memory>

namespace morvane
{
namespace choices
{
    const juce::StringArray& waves()
    {
        static const juce::StringArray list { "saw", "square", "pulse", "sinepulse", "halfsine",
                                              "ressaw", "restriangle", "restrapezoid", "pwm", "respulse" };
        return list;
    }

    const juce::StringArray& octave()
    {
        static const juce::StringArray list { "-2", "-1", "0", "+1", "+2" };
        return list;
    }

    const juce::StringArray& subOctave()
    {
        static const juce::StringArray list { "-2", "-1", "0", "+1", "+2" };
        return list;
    }

    const juce::StringArray& mbdModes()
    {
        static const juce::StringArray list { "follow", "soft", "diode", "fold" };
        return list;
    }

    const juce::StringArray& subRouting()
    {
        static const juce::StringArray list { "pre drive", "post filter" };
        return list;
    }

    const juce::StringArray& feedbackPosition()
    {
        static const juce::StringArray list { "pre drive", "post filter" };
        return list;
    }

    const juce::StringArray& modSources()
    {
        static const juce::StringArray list { "off", "velocity", "key", "mod wheel", "aftertouch", "lfo 1",
                                              "dcw env osc 1", "dcw env osc 2", "filter env", "amp env",
                                              "note random", "smooth random", "beat phase" };
        return list;
    }

    const juce::StringArray& modDestinations()
    {
        static const juce::StringArray list {
            "off", "cutoff", "drive", "amp", "osc1 dcw", "osc2 dcw", "sub level", "pitch", "osc1 level",
            "osc2 level", "osc2 detune", "osc2 detune hz", "osc2 phase", "sub dcw", "resonance", "filter env",
            "drift", "lfo1 rate", "lfo1 depth", "output", "noise level", "osc1 pw", "osc2 pw", "pd morph",
            "reese beat", "reese spread", "phase mix", "phase notch", "feedback", "mbd low", "mbd mid",
            "mbd high", "modfx rate", "modfx depth", "eq notch hz"
        };
        return list;
    }
}

juce::NormalisableRange<float> makeGeometricRange (float start, float end)
{
    if (start <= 0.0f || end <= 0.0f)
        return { start, end, 0.0f, 0.4f };

    const double s = start, e = end;
    const double skew = std::log (0.5) / std::log ((std::sqrt (s * e) - s) / (e - s));
    return { start, end, 0.0f, (float) skew };
}

juce::String modSourceId (int slot) { return "mod" + juce::String (slot) + "Source"; }
juce::String modDestId (int slot)   { return "mod" + juce::String (slot) + "Dest"; }
juce::String modAmountId (int slot) { return "mod" + juce::String (slot) + "Amount"; }
juce::String modCurveId (int slot)  { return "matrix" + juce::String (slot) + "Curve"; }

namespace
{
    using Layout = juce::AudioProcessorValueTreeState::ParameterLayout;

    juce::ParameterID pid (const juce::String& id) { return { id, 1 }; }

    void addFloat (Layout& layout, const juce::String& id, const juce::String& name,
                   juce::NormalisableRange<float> range, float defaultValue)
    {
        layout.add (std::make_unique<juce::AudioParameterFloat> (pid (id), name, range, defaultValue));
    }

    void addLinear (Layout& layout, const juce::String& id, const juce::String& name,
                    float start, float end, float defaultValue)
    {
        addFloat (layout, id, name, { start, end, 0.0f, 1.0f }, defaultValue);
    }

    void addStepped (Layout& layout, const juce::String& id, const juce::String& name,
                     float start, float end, float defaultValue)
    {
        addFloat (layout, id, name, { start, end, 1.0f, 1.0f }, defaultValue);
    }

    void addGeometric (Layout& layout, const juce::String& id, const juce::String& name,
                       float start, float end, float defaultValue)
    {
        addFloat (layout, id, name, makeGeometricRange (start, end), defaultValue);
    }

    void addChoice (Layout& layout, const juce::String& id, const juce::String& name,
                    const juce::StringArray& list, int defaultIndex)
    {
        layout.add (std::make_unique<juce::AudioParameterChoice> (pid (id), name, list, defaultIndex));
    }

    void addBool (Layout& layout, const juce::String& id, const juce::String& name, bool defaultValue)
    {
        layout.add (std::make_unique<juce::AudioParameterBool> (pid (id), name, defaultValue));
    }

    void addOscillator (Layout& layout, int n)
    {
        const auto id = "osc" + juce::String (n);
        const auto name = "osc " + juce::String (n);
        addChoice (layout, id + "Wave", name + " wave", choices::waves(), 0);
        addLinear (layout, id + "DcwDepth", name + " dcw", 0.0f, 1.0f, 0.0f);
        addEnvelopeParameters (layout, id + "Dcw", name + " dcw", 0.005f, 0.5f, 0.8f, 0.3f);
    }

    void addModSlots (Layout& layout)
    {
        for (int slot = 1; slot <= numModSlots; ++slot)
        {
            const auto n = juce::String (slot);
            const bool first = slot == 1;
            addChoice (layout, modSourceId (slot), "mod " + n + " src", choices::modSources(), first ? 1 : 0);
            addChoice (layout, modDestId (slot), "mod " + n + " dst", choices::modDestinations(), first ? 3 : 0);
            addLinear (layout, modAmountId (slot), "mod " + n + " amt", -1.0f, 1.0f, first ? 0.5f : 0.0f);
            addChoice (layout, modCurveId (slot), "mod " + n + " curve", { "lin", "exp" }, 0);
        }
    }
}

void addEnvelopeParameters (Layout& layout, const juce::String& idPrefix, const juce::String& namePrefix,
                            float attack, float decay, float sustain, float release)
{
    addGeometric (layout, idPrefix + "Attack", namePrefix + " attack", 0.001f, 4.0f, attack);
    addGeometric (layout, idPrefix + "Decay", namePrefix + " decay", 0.001f, 4.0f, decay);
    addLinear (layout, idPrefix + "Sustain", namePrefix + " sustain", 0.0f, 1.0f, sustain);
    addGeometric (layout, idPrefix + "Release", namePrefix + " release", 0.001f, 4.0f, release);
}

juce::AudioProcessorValueTreeState::ParameterLayout createParameterLayout()
{
    Layout layout;
    const auto arrow = juce::String::fromUTF8 ("vel\xe2\x86\x92");

    // Oscillator 1
    addOscillator (layout, 1);
    addLinear (layout, "osc1Level", "osc 1 level", -60.0f, 6.0f, 0.0f);
    addLinear (layout, "osc1PulseWidth", "osc 1 pw", 0.05f, 0.95f, 0.5f);
    addStepped (layout, "osc1Semitone", "osc 1 semitone", -12.0f, 12.0f, 0.0f);
    addStepped (layout, "osc1Fine", "osc 1 fine", -50.0f, 50.0f, 0.0f);
    addBool (layout, "syncOsc1", "osc 1 sync", false);

    // Oscillator 2
    addOscillator (layout, 2);
    addLinear (layout, "osc2Level", "osc 2 level", -60.0f, 6.0f, -60.0f);
    addLinear (layout, "osc2Detune", "osc 2 detune", -100.0f, 100.0f, 0.0f);
    addLinear (layout, "osc2DetuneHz", "osc 2 detune hz", -20.0f, 20.0f, 0.0f);
    addChoice (layout, "detuneMode", "detune mode", { "cents", "hz" }, 0);
    addLinear (layout, "osc2PhaseOffset", "osc 2 phase", -180.0f, 180.0f, 0.0f);
    addLinear (layout, "osc2PulseWidth", "osc 2 pw", 0.05f, 0.95f, 0.5f);
    addStepped (layout, "osc2Semitone", "osc 2 semitone", -12.0f, 12.0f, 0.0f);
    addStepped (layout, "osc2Fine", "osc 2 fine", -50.0f, 50.0f, 0.0f);
    addBool (layout, "syncOsc2", "osc 2 sync", false);
    addLinear (layout, "oscDrift", "drift", 0.0f, 1.0f, 0.0f);

    // Sub, noise, drive, feedback
    addChoice (layout, "subMode", "sub mode", { "sine", "pd" }, 0);
    addChoice (layout, "subWave", "sub wave", choices::waves(), 0);
    addChoice (layout, "subOctave", "sub octave", choices::subOctave(), 1);
    addStepped (layout, "subSemitone", "sub semitone", -12.0f, 12.0f, 0.0f);
    addStepped (layout, "subFine", "sub fine", -50.0f, 50.0f, 0.0f);
    addLinear (layout, "subDcwDepth", "sub dcw", 0.0f, 1.0f, 0.0f);
    addLinear (layout, "subLevel", "sub", -120.0f, 0.0f, -90.0f);
    addLinear (layout, "subDriveSend", "sub drive send", 0.0f, 1.0f, 1.0f);
    addChoice (layout, "subRouting", "sub routing", choices::subRouting(), 0);
    addLinear (layout, "noiseLevel", "noise level", -90.0f, 0.0f, -90.0f);
    addChoice (layout, "noiseColour", "noise colour", { "white", "pink", "brown" }, 0);
    addLinear (layout, "noiseRouting", "noise routing", 0.0f, 1.0f, 0.0f);
    addChoice (layout, "mode", "mode", { "mix", "ring" }, 0);
    addLinear (layout, "driveMix", "drive mix", 0.0f, 1.0f, 1.0f);
    addLinear (layout, "drive", "drive", 0.0f, 24.0f, 0.0f);
    addLinear (layout, "velToDrive", arrow + "drive", 0.0f, 1.0f, 0.0f);
    addLinear (layout, "driveGain", "drive makeup", -12.0f, 24.0f, 0.0f);
    addBool (layout, "driveAutoMakeup", "auto makeup", false);
    addChoice (layout, "driveMode", "drive mode", { "soft", "diode", "fold" }, 0);
    addChoice (layout, "drivePosition", "drive position", { "pre filter", "post filter" }, 0);
    addLinear (layout, "feedbackAmount", "feedback", 0.0f, 1.0f, 0.0f);
    addGeometric (layout, "feedbackTone", "feedback tone", 80.0f, 12000.0f, 2500.0f);
    addChoice (layout, "feedbackPosition", "feedback position", choices::feedbackPosition(), 0);

    // Voice filter
    addBool (layout, "filterEnabled", "filter enabled", true);
    addGeometric (layout, "filterCutoff", "cutoff", 20.0f, 20000.0f, 20000.0f);
    addLinear (layout, "filterReso", "resonance", 0.0f, 1.0f, 0.0f);
    addLinear (layout, "filterEnvAmount", "env amount", -48.0f, 48.0f, 0.0f);
    addLinear (layout, "velToFilterEnv", arrow + "filter", 0.0f, 1.0f, 0.0f);
    addChoice (layout, "filterModel", "filter model", { "ladder", "diode", "state", "phase" }, 0);
    addLinear (layout, "phaseMix", "phase mix", 0.0f, 1.0f, 0.5f);
    addLinear (layout, "phaseStereo", "phase stereo", 0.0f, 1.0f, 0.0f);
    addLinear (layout, "phaseNotch", "phase notch", 0.0f, 1.0f, 1.0f);

    // Envelopes
    addEnvelopeParameters (layout, "filter", "filter", 0.005f, 0.5f, 0.6f, 0.3f);
    addEnvelopeParameters (layout, "amp", "amp", 0.005f, 0.1f, 1.0f, 0.2f);

    // Voice
    addGeometric (layout, "glideTime", "glide", 0.0f, 2.0f, 0.0f);
    addBool (layout, "legato", "legato", false);
    addChoice (layout, "phaseMode", "phase", { "free", "first", "per" }, 2);
    addChoice (layout, "stereoMode", "stereo", { "wide", "mono" }, 1);
    addLinear (layout, "stereoWidth", "stereo width", 0.0f, 1.0f, 0.0f);
    addChoice (layout, "octave", "octave", choices::octave(), 2);
    addLinear (layout, "reeseBeat", "beat", 0.0f, 20.0f, 0.0f);
    addLinear (layout, "reeseSpread", "spread", 0.0f, 1.0f, 0.0f);
    addBool (layout, "reeseLock", "lock", false);
    addLinear (layout, "pdMorphAmount", "pd morph", 0.0f, 1.0f, 0.0f);
    addBool (layout, "monoLowEnabled", "mono low", true);
    addGeometric (layout, "monoLowFreq", "mono low freq", 40.0f, 300.0f, 120.0f);
    addLinear (layout, "outputGain", "output", -60.0f, 6.0f, -6.0f);

    // LFO
    addGeometric (layout, "lfo1Rate", "lfo 1 rate", 0.05f, 20.0f, 1.0f);
    addLinear (layout, "lfo1Depth", "lfo 1 depth", 0.0f, 1.0f, 0.0f);
    addChoice (layout, "lfo1Shape", "lfo 1 shape", { "sine", "tri", "sqr", "s&h" }, 0);
    addChoice (layout, "lfo1Sync", "lfo 1 sync", { "free", "sync" }, 0);
    addLinear (layout, "lfoSyncBpm", "sync bpm", 40.0f, 240.0f, 120.0f);
    addLinear (layout, "lfo1Phase", "lfo 1 phase", -180.0f, 180.0f, 0.0f);
    addChoice (layout, "lfo1Retrig", "lfo 1 retrig", { "free", "retrig" }, 0);

    // Multiband drive
    addBool (layout, "mbdEnable", "mb drive on", false);
    addLinear (layout, "mbdMix", "mb drive mix", 0.0f, 1.0f, 1.0f);
    addLinear (layout, "mbdLowAmount", "mb low", 0.0f, 24.0f, 0.0f);
    addLinear (layout, "mbdMidAmount", "mb mid", 0.0f, 24.0f, 0.0f);
    addLinear (layout, "mbdHighAmount", "mb high", 0.0f, 24.0f, 0.0f);
    addGeometric (layout, "mbdLowCross", "mb low xover", 60.0f, 600.0f, 200.0f);
    addGeometric (layout, "mbdHighCross", "mb high xover", 800.0f, 8000.0f, 2200.0f);
    addChoice (layout, "mbdLowMode", "mb low mode", choices::mbdModes(), 0);
    addChoice (layout, "mbdMidMode", "mb mid mode", choices::mbdModes(), 0);
    addChoice (layout, "mbdHighMode", "mb high mode", choices::mbdModes(), 0);

    // Mod FX
    addBool (layout, "modFxEnable", "mod fx on", false);
    addChoice (layout, "modFxMode", "mod fx mode", { "chorus", "flanger", "phaser" }, 0);
    addGeometric (layout, "modFxRate", "mod fx rate", 0.05f, 8.0f, 0.6f);
    addLinear (layout, "modFxDepth", "mod fx depth", 0.0f, 1.0f, 0.5f);
    addLinear (layout, "modFxFeedback", "mod fx fdbk", 0.0f, 0.95f, 0.0f);
    addLinear (layout, "modFxMix", "mod fx mix", 0.0f, 1.0f, 0.5f);

    // Post EQ
    addBool (layout, "postEqEnable", "post eq on", false);
    addLinear (layout, "postEqTilt", "tilt", -12.0f, 12.0f, 0.0f);
    addGeometric (layout, "postEqNotchHz", "notch hz", 80.0f, 8000.0f, 800.0f);
    addLinear (layout, "postEqNotchDepth", "notch depth", 0.0f, 1.0f, 0.0f);

    // Delay
    addBool (layout, "delayEnable", "delay on", false);
    addChoice (layout, "delayPingPong", "delay mode", { "stereo", "ping-pong" }, 0);
    addGeometric (layout, "delayTimeMs", "delay time", 1.0f, 1500.0f, 250.0f);
    addLinear (layout, "delayFeedback", "delay fdbk", 0.0f, 0.95f, 0.4f);
    addGeometric (layout, "delayTone", "delay tone", 200.0f, 20000.0f, 6000.0f);
    addLinear (layout, "delayMix", "delay mix", 0.0f, 1.0f, 0.3f);

    // Reverb
    addBool (layout, "reverbEnable", "reverb on", false);
    addLinear (layout, "reverbPredelayMs", "reverb predelay", 0.0f, 200.0f, 10.0f);
    addLinear (layout, "reverbBandwidth", "reverb bandwidth", 0.0f, 1.0f, 0.7f);
    addLinear (layout, "reverbDecay", "reverb decay", 0.0f, 0.95f, 0.6f);
    addLinear (layout, "reverbDamping", "reverb damping", 0.0f, 1.0f, 0.4f);
    addLinear (layout, "reverbMix", "reverb mix", 0.0f, 1.0f, 0.25f);

    // Bit crusher
    addBool (layout, "crushEnable", "crush on", false);
    addLinear (layout, "crushBits", "crush bits", 4.0f, 16.0f, 12.0f);
    addGeometric (layout, "crushRateHz", "crush rate", 100.0f, 96000.0f, 22050.0f);
    addLinear (layout, "crushJitter", "crush jitter", 0.0f, 1.0f, 0.0f);
    addChoice (layout, "crushDither", "crush dither", { "off", "tpdf" }, 0);
    addLinear (layout, "crushMix", "crush mix", 0.0f, 1.0f, 0.5f);

    addModSlots (layout);

    // Appended after the slots so that the older parameters keep their host indices.
    addBool (layout, "driveOn", "drive on", true);
    return layout;
}
}
