#include "audio/Parameters.h"
#include "audio/PluginProcessor.h"

#include <gtest/gtest.h>

#include <map>

using namespace morvane;

namespace
{
struct Expected
{
    const char* id;
    const char* name;
    char kind; // f float, c choice, b bool
    float start, end, interval, skew, def;
    int choiceCount;
};

constexpr float geo = -1.0f; // geometric rule
constexpr float lin = 1.0f;

// The whole table: id, name, kind, range, step, skew and default, in layout order.
const std::vector<Expected>& table()
{
    static const std::vector<Expected> rows = {
        { "osc1Wave", "osc 1 wave", 'c', 0, 9, 1, lin, 0, 10 },
        { "osc1DcwDepth", "osc 1 dcw", 'f', 0, 1, 0, lin, 0, 0 },
        { "osc1DcwAttack", "osc 1 dcw attack", 'f', 0.001f, 4, 0, geo, 0.005f, 0 },
        { "osc1DcwDecay", "osc 1 dcw decay", 'f', 0.001f, 4, 0, geo, 0.5f, 0 },
        { "osc1DcwSustain", "osc 1 dcw sustain", 'f', 0, 1, 0, lin, 0.8f, 0 },
        { "osc1DcwRelease", "osc 1 dcw release", 'f', 0.001f, 4, 0, geo, 0.3f, 0 },
        { "osc1Level", "osc 1 level", 'f', -60, 6, 0, lin, 0, 0 },
        { "osc1PulseWidth", "osc 1 pw", 'f', 0.05f, 0.95f, 0, lin, 0.5f, 0 },
        { "osc1Semitone", "osc 1 semitone", 'f', -12, 12, 1, lin, 0, 0 },
        { "osc1Fine", "osc 1 fine", 'f', -50, 50, 1, lin, 0, 0 },
        { "syncOsc1", "osc 1 sync", 'b', 0, 1, 1, lin, 0, 0 },
        { "osc2Wave", "osc 2 wave", 'c', 0, 9, 1, lin, 0, 10 },
        { "osc2DcwDepth", "osc 2 dcw", 'f', 0, 1, 0, lin, 0, 0 },
        { "osc2DcwAttack", "osc 2 dcw attack", 'f', 0.001f, 4, 0, geo, 0.005f, 0 },
        { "osc2DcwDecay", "osc 2 dcw decay", 'f', 0.001f, 4, 0, geo, 0.5f, 0 },
        { "osc2DcwSustain", "osc 2 dcw sustain", 'f', 0, 1, 0, lin, 0.8f, 0 },
        { "osc2DcwRelease", "osc 2 dcw release", 'f', 0.001f, 4, 0, geo, 0.3f, 0 },
        { "osc2Level", "osc 2 level", 'f', -60, 6, 0, lin, -60, 0 },
        { "osc2Detune", "osc 2 detune", 'f', -100, 100, 0, lin, 0, 0 },
        { "osc2DetuneHz", "osc 2 detune hz", 'f', -20, 20, 0, lin, 0, 0 },
        { "detuneMode", "detune mode", 'c', 0, 1, 1, lin, 0, 2 },
        { "osc2PhaseOffset", "osc 2 phase", 'f', -180, 180, 0, lin, 0, 0 },
        { "osc2PulseWidth", "osc 2 pw", 'f', 0.05f, 0.95f, 0, lin, 0.5f, 0 },
        { "osc2Semitone", "osc 2 semitone", 'f', -12, 12, 1, lin, 0, 0 },
        { "osc2Fine", "osc 2 fine", 'f', -50, 50, 1, lin, 0, 0 },
        { "syncOsc2", "osc 2 sync", 'b', 0, 1, 1, lin, 0, 0 },
        { "oscDrift", "drift", 'f', 0, 1, 0, lin, 0, 0 },
        { "subMode", "sub mode", 'c', 0, 1, 1, lin, 0, 2 },
        { "subWave", "sub wave", 'c', 0, 9, 1, lin, 0, 10 },
        { "subOctave", "sub octave", 'c', 0, 4, 1, lin, 1, 5 },
        { "subSemitone", "sub semitone", 'f', -12, 12, 1, lin, 0, 0 },
        { "subFine", "sub fine", 'f', -50, 50, 1, lin, 0, 0 },
        { "subDcwDepth", "sub dcw", 'f', 0, 1, 0, lin, 0, 0 },
        { "subLevel", "sub", 'f', -120, 0, 0, lin, -90, 0 },
        { "subDriveSend", "sub drive send", 'f', 0, 1, 0, lin, 1, 0 },
        { "subRouting", "sub routing", 'c', 0, 1, 1, lin, 0, 2 },
        { "noiseLevel", "noise level", 'f', -90, 0, 0, lin, -90, 0 },
        { "noiseColour", "noise colour", 'c', 0, 2, 1, lin, 0, 3 },
        { "noiseRouting", "noise routing", 'f', 0, 1, 0, lin, 0, 0 },
        { "mode", "mode", 'c', 0, 1, 1, lin, 0, 2 },
        { "driveMix", "drive mix", 'f', 0, 1, 0, lin, 1, 0 },
        { "drive", "drive", 'f', 0, 24, 0, lin, 0, 0 },
        { "velToDrive", "vel\xe2\x86\x92" "drive", 'f', 0, 1, 0, lin, 0, 0 },
        { "driveGain", "drive makeup", 'f', -12, 24, 0, lin, 0, 0 },
        { "driveAutoMakeup", "auto makeup", 'b', 0, 1, 1, lin, 0, 0 },
        { "driveMode", "drive mode", 'c', 0, 2, 1, lin, 0, 3 },
        { "drivePosition", "drive position", 'c', 0, 1, 1, lin, 0, 2 },
        { "feedbackAmount", "feedback", 'f', 0, 1, 0, lin, 0, 0 },
        { "feedbackTone", "feedback tone", 'f', 80, 12000, 0, geo, 2500, 0 },
        { "feedbackPosition", "feedback position", 'c', 0, 1, 1, lin, 0, 2 },
        { "filterEnabled", "filter enabled", 'b', 0, 1, 1, lin, 1, 0 },
        { "filterCutoff", "cutoff", 'f', 20, 20000, 0, geo, 20000, 0 },
        { "filterReso", "resonance", 'f', 0, 1, 0, lin, 0, 0 },
        { "filterEnvAmount", "env amount", 'f', -48, 48, 0, lin, 0, 0 },
        { "velToFilterEnv", "vel\xe2\x86\x92" "filter", 'f', 0, 1, 0, lin, 0, 0 },
        { "filterModel", "filter model", 'c', 0, 3, 1, lin, 0, 4 },
        { "phaseMix", "phase mix", 'f', 0, 1, 0, lin, 0.5f, 0 },
        { "phaseStereo", "phase stereo", 'f', 0, 1, 0, lin, 0, 0 },
        { "phaseNotch", "phase notch", 'f', 0, 1, 0, lin, 1, 0 },
        { "filterAttack", "filter attack", 'f', 0.001f, 4, 0, geo, 0.005f, 0 },
        { "filterDecay", "filter decay", 'f', 0.001f, 4, 0, geo, 0.5f, 0 },
        { "filterSustain", "filter sustain", 'f', 0, 1, 0, lin, 0.6f, 0 },
        { "filterRelease", "filter release", 'f', 0.001f, 4, 0, geo, 0.3f, 0 },
        { "ampAttack", "amp attack", 'f', 0.001f, 4, 0, geo, 0.005f, 0 },
        { "ampDecay", "amp decay", 'f', 0.001f, 4, 0, geo, 0.1f, 0 },
        { "ampSustain", "amp sustain", 'f', 0, 1, 0, lin, 1, 0 },
        { "ampRelease", "amp release", 'f', 0.001f, 4, 0, geo, 0.2f, 0 },
        { "glideTime", "glide", 'f', 0, 2, 0, 0.4f, 0, 0 },
        { "legato", "legato", 'b', 0, 1, 1, lin, 0, 0 },
        { "phaseMode", "phase", 'c', 0, 2, 1, lin, 2, 3 },
        { "stereoMode", "stereo", 'c', 0, 1, 1, lin, 1, 2 },
        { "stereoWidth", "stereo width", 'f', 0, 1, 0, lin, 0, 0 },
        { "octave", "octave", 'c', 0, 4, 1, lin, 2, 5 },
        { "reeseBeat", "beat", 'f', 0, 20, 0, lin, 0, 0 },
        { "reeseSpread", "spread", 'f', 0, 1, 0, lin, 0, 0 },
        { "reeseLock", "lock", 'b', 0, 1, 1, lin, 0, 0 },
        { "pdMorphAmount", "pd morph", 'f', 0, 1, 0, lin, 0, 0 },
        { "monoLowEnabled", "mono low", 'b', 0, 1, 1, lin, 1, 0 },
        { "monoLowFreq", "mono low freq", 'f', 40, 300, 0, geo, 120, 0 },
        { "outputGain", "output", 'f', -60, 6, 0, lin, -6, 0 },
        { "lfo1Rate", "lfo 1 rate", 'f', 0.05f, 20, 0, geo, 1, 0 },
        { "lfo1Depth", "lfo 1 depth", 'f', 0, 1, 0, lin, 0, 0 },
        { "lfo1Shape", "lfo 1 shape", 'c', 0, 3, 1, lin, 0, 4 },
        { "lfo1Sync", "lfo 1 sync", 'c', 0, 1, 1, lin, 0, 2 },
        { "lfoSyncBpm", "sync bpm", 'f', 40, 240, 0, lin, 120, 0 },
        { "lfo1Phase", "lfo 1 phase", 'f', -180, 180, 0, lin, 0, 0 },
        { "lfo1Retrig", "lfo 1 retrig", 'c', 0, 1, 1, lin, 0, 2 },
        { "mbdEnable", "mb drive on", 'b', 0, 1, 1, lin, 0, 0 },
        { "mbdMix", "mb drive mix", 'f', 0, 1, 0, lin, 1, 0 },
        { "mbdLowAmount", "mb low", 'f', 0, 24, 0, lin, 0, 0 },
        { "mbdMidAmount", "mb mid", 'f', 0, 24, 0, lin, 0, 0 },
        { "mbdHighAmount", "mb high", 'f', 0, 24, 0, lin, 0, 0 },
        { "mbdLowCross", "mb low xover", 'f', 60, 600, 0, geo, 200, 0 },
        { "mbdHighCross", "mb high xover", 'f', 800, 8000, 0, geo, 2200, 0 },
        { "mbdLowMode", "mb low mode", 'c', 0, 3, 1, lin, 0, 4 },
        { "mbdMidMode", "mb mid mode", 'c', 0, 3, 1, lin, 0, 4 },
        { "mbdHighMode", "mb high mode", 'c', 0, 3, 1, lin, 0, 4 },
        { "modFxEnable", "mod fx on", 'b', 0, 1, 1, lin, 0, 0 },
        { "modFxMode", "mod fx mode", 'c', 0, 2, 1, lin, 0, 3 },
        { "modFxRate", "mod fx rate", 'f', 0.05f, 8, 0, geo, 0.6f, 0 },
        { "modFxDepth", "mod fx depth", 'f', 0, 1, 0, lin, 0.5f, 0 },
        { "modFxFeedback", "mod fx fdbk", 'f', 0, 0.95f, 0, lin, 0, 0 },
        { "modFxMix", "mod fx mix", 'f', 0, 1, 0, lin, 0.5f, 0 },
        { "postEqEnable", "post eq on", 'b', 0, 1, 1, lin, 0, 0 },
        { "postEqTilt", "tilt", 'f', -12, 12, 0, lin, 0, 0 },
        { "postEqNotchHz", "notch hz", 'f', 80, 8000, 0, geo, 800, 0 },
        { "postEqNotchDepth", "notch depth", 'f', 0, 1, 0, lin, 0, 0 },
        { "delayEnable", "delay on", 'b', 0, 1, 1, lin, 0, 0 },
        { "delayPingPong", "delay mode", 'c', 0, 1, 1, lin, 0, 2 },
        { "delayTimeMs", "delay time", 'f', 1, 1500, 0, geo, 250, 0 },
        { "delayFeedback", "delay fdbk", 'f', 0, 0.95f, 0, lin, 0.4f, 0 },
        { "delayTone", "delay tone", 'f', 200, 20000, 0, geo, 6000, 0 },
        { "delayMix", "delay mix", 'f', 0, 1, 0, lin, 0.3f, 0 },
        { "reverbEnable", "reverb on", 'b', 0, 1, 1, lin, 0, 0 },
        { "reverbPredelayMs", "reverb predelay", 'f', 0, 200, 0, lin, 10, 0 },
        { "reverbBandwidth", "reverb bandwidth", 'f', 0, 1, 0, lin, 0.7f, 0 },
        { "reverbDecay", "reverb decay", 'f', 0, 0.95f, 0, lin, 0.6f, 0 },
        { "reverbDamping", "reverb damping", 'f', 0, 1, 0, lin, 0.4f, 0 },
        { "reverbMix", "reverb mix", 'f', 0, 1, 0, lin, 0.25f, 0 },
        { "crushEnable", "crush on", 'b', 0, 1, 1, lin, 0, 0 },
        { "crushBits", "crush bits", 'f', 4, 16, 0, lin, 12, 0 },
        { "crushRateHz", "crush rate", 'f', 100, 96000, 0, geo, 22050, 0 },
        { "crushJitter", "crush jitter", 'f', 0, 1, 0, lin, 0, 0 },
        { "crushDither", "crush dither", 'c', 0, 1, 1, lin, 0, 2 },
        { "crushMix", "crush mix", 'f', 0, 1, 0, lin, 0.5f, 0 },
    };
    return rows;
}

double geometricSkew (double s, double e)
{
    return std::log (0.5) / std::log ((std::sqrt (s * e) - s) / (e - s));
}

class ParameterLayoutTest : public ::testing::Test
{
protected:
    MorvaneAudioProcessor processor;

    std::vector<juce::RangedAudioParameter*> ranged() const
    {
        std::vector<juce::RangedAudioParameter*> out;
        for (auto* p : processor.getParameters())
            out.push_back (dynamic_cast<juce::RangedAudioParameter*> (p));
        return out;
    }
};
}

TEST (GeometricRange, WorkedSkewValues)
{
    EXPECT_NEAR (makeGeometricRange (20.0f, 20000.0f).skew, 0.198894f, 1.0e-6f);
    EXPECT_NEAR (makeGeometricRange (0.001f, 4.0f).skew, 0.166513f, 1.0e-6f);
    EXPECT_NEAR (makeGeometricRange (80.0f, 12000.0f).skew, 0.268266f, 1.0e-6f);
    EXPECT_FLOAT_EQ (makeGeometricRange (0.0f, 2.0f).skew, 0.4f);
    EXPECT_FLOAT_EQ (makeGeometricRange (-1.0f, 2.0f).skew, 0.4f);
}

TEST (GeometricRange, MidpointIsTheGeometricMean)
{
    for (auto [s, e] : { std::pair { 20.0f, 20000.0f }, { 0.001f, 4.0f }, { 80.0f, 12000.0f }, { 0.05f, 20.0f } })
    {
        const auto range = makeGeometricRange (s, e);
        EXPECT_NEAR (range.convertFrom0to1 (0.5f), std::sqrt (s * e), std::sqrt (s * e) * 1.0e-4f) << s << " " << e;
    }
}

TEST_F (ParameterLayoutTest, HasAllParametersInTableOrder)
{
    const auto params = ranged();
    ASSERT_EQ ((int) params.size(), numParameters);
    const auto& rows = table();
    ASSERT_EQ (rows.size(), 125u);

    for (size_t i = 0; i < rows.size(); ++i)
    {
        const auto& row = rows[i];
        auto* p = params[i];
        ASSERT_NE (p, nullptr);
        SCOPED_TRACE (row.id);
        EXPECT_EQ (p->getParameterID(), juce::String (row.id));
        EXPECT_EQ (p->getName (100), juce::String::fromUTF8 (row.name));
        EXPECT_EQ (p->getLabel(), juce::String());
        EXPECT_TRUE (p->isAutomatable());
        EXPECT_FALSE (p->isMetaParameter());
        EXPECT_EQ (p->getVersionHint(), 1);

        const auto& range = p->getNormalisableRange();
        EXPECT_FLOAT_EQ (range.start, row.start);
        EXPECT_FLOAT_EQ (range.end, row.end);
        EXPECT_FLOAT_EQ (p->convertFrom0to1 (p->getDefaultValue()), row.def);

        switch (row.kind)
        {
            case 'c':
            {
                auto* c = dynamic_cast<juce::AudioParameterChoice*> (p);
                ASSERT_NE (c, nullptr);
                EXPECT_EQ (c->choices.size(), row.choiceCount);
                break;
            }
            case 'b':
                EXPECT_NE (dynamic_cast<juce::AudioParameterBool*> (p), nullptr);
                break;
            default:
            {
                ASSERT_NE (dynamic_cast<juce::AudioParameterFloat*> (p), nullptr);
                EXPECT_FLOAT_EQ (range.interval, row.interval);
                const double skew = row.skew == geo ? geometricSkew (row.start, row.end) : row.skew;
                EXPECT_NEAR (range.skew, skew, 1.0e-6);
            }
        }
    }
}

TEST_F (ParameterLayoutTest, ModulationSlotsFollowTheTable)
{
    const auto params = ranged();
    for (int slot = 1; slot <= 8; ++slot)
    {
        const size_t base = 125 + (size_t) (slot - 1) * 4;
        const auto n = juce::String (slot);
        SCOPED_TRACE (slot);

        auto* src = dynamic_cast<juce::AudioParameterChoice*> (params[base]);
        auto* dst = dynamic_cast<juce::AudioParameterChoice*> (params[base + 1]);
        auto* amt = dynamic_cast<juce::AudioParameterFloat*> (params[base + 2]);
        auto* curve = dynamic_cast<juce::AudioParameterChoice*> (params[base + 3]);
        ASSERT_TRUE (src && dst && amt && curve);

        EXPECT_EQ (src->getParameterID(), "mod" + n + "Source");
        EXPECT_EQ (src->getName (100), "mod " + n + " src");
        EXPECT_EQ (dst->getParameterID(), "mod" + n + "Dest");
        EXPECT_EQ (dst->getName (100), "mod " + n + " dst");
        EXPECT_EQ (amt->getParameterID(), "mod" + n + "Amount");
        EXPECT_EQ (amt->getName (100), "mod " + n + " amt");
        EXPECT_EQ (curve->getParameterID(), "matrix" + n + "Curve");
        EXPECT_EQ (curve->getName (100), "mod " + n + " curve");

        EXPECT_EQ (src->choices, choices::modSources());
        EXPECT_EQ (dst->choices, choices::modDestinations());
        EXPECT_EQ (curve->choices, juce::StringArray ({ "lin", "exp" }));
        EXPECT_EQ (src->choices.size(), 13);
        EXPECT_EQ (dst->choices.size(), 35);

        EXPECT_FLOAT_EQ (amt->range.start, -1.0f);
        EXPECT_FLOAT_EQ (amt->range.end, 1.0f);
        EXPECT_FLOAT_EQ (amt->range.interval, 0.0f);

        // Slot 1 is velocity to amp at 0.5 in the layout; init clean, the patch an instance starts
        // on, sets it to 0.4. The others are empty.
        EXPECT_EQ (src->getIndex(), slot == 1 ? 1 : 0);
        EXPECT_EQ (dst->getIndex(), slot == 1 ? 3 : 0);
        EXPECT_FLOAT_EQ (amt->convertFrom0to1 (static_cast<juce::RangedAudioParameter*> (amt)->getDefaultValue()), slot == 1 ? 0.5f : 0.0f);
        EXPECT_FLOAT_EQ (amt->get(), slot == 1 ? 0.4f : 0.0f);
        EXPECT_EQ (curve->getIndex(), 0);
    }

    // The drive switch came after the slots and stands behind them, so that older indices hold.
    auto* driveOn = dynamic_cast<juce::AudioParameterBool*> (params[157]);
    ASSERT_NE (driveOn, nullptr);
    EXPECT_EQ (driveOn->getParameterID(), "driveOn");
    EXPECT_EQ (driveOn->getName (100), "drive on");
    EXPECT_TRUE (driveOn->get());
}

TEST_F (ParameterLayoutTest, ChoiceListsAreTheSharedLists)
{
    auto choicesOf = [this] (const char* id)
    {
        return dynamic_cast<juce::AudioParameterChoice*> (processor.getParameterTree().getParameter (id))->choices;
    };

    const juce::StringArray waves { "saw", "square", "pulse", "sinepulse", "halfsine",
                                    "ressaw", "restriangle", "restrapezoid", "pwm", "respulse" };
    const juce::StringArray octaves { "-2", "-1", "0", "+1", "+2" }, routes { "pre drive", "post filter" };
    for (const auto& [id, list] : std::vector<std::pair<const char*, juce::StringArray>> {
             { "osc1Wave", waves }, { "osc2Wave", waves }, { "subWave", waves }, { "octave", octaves }, { "subOctave", octaves },
             { "mbdMidMode", { "follow", "soft", "diode", "fold" } }, { "subRouting", routes }, { "feedbackPosition", routes },
             { "filterModel", { "ladder", "diode", "state", "phase" } }, { "lfo1Shape", { "sine", "tri", "sqr", "s&h" } },
             { "delayPingPong", { "stereo", "ping-pong" } }, { "phaseMode", { "free", "first", "per" } } })
        EXPECT_EQ (choicesOf (id), list) << id;
    EXPECT_EQ (choicesOf ("mod3Dest")[34], "eq notch hz");
    EXPECT_EQ (choicesOf ("mod3Source")[12], "beat phase");
}

TEST_F (ParameterLayoutTest, RawValuesAreRealUnitsAndOutOfRangeValuesClamp)
{
    auto& tree = processor.getParameterTree();
    EXPECT_FLOAT_EQ (tree.getRawParameterValue ("filterCutoff")->load(), 20000.0f);
    EXPECT_FLOAT_EQ (tree.getRawParameterValue ("phaseMode")->load(), 2.0f);
    EXPECT_FLOAT_EQ (tree.getRawParameterValue ("filterEnabled")->load(), 1.0f);

    // Documents store values beyond the ranges; the parameters hold them at their limits.
    auto set = [&] (const char* id, float v)
    {
        auto* p = tree.getParameter (id);
        p->setValueNotifyingHost (p->convertTo0to1 (v));
        return tree.getRawParameterValue (id)->load();
    };
    EXPECT_FLOAT_EQ (set ("osc2Level", -90.0f), -60.0f);
    EXPECT_FLOAT_EQ (set ("osc1Level", -90.0f), -60.0f);
    EXPECT_NEAR (set ("ampRelease", 5.0f), 4.0f, 1.0e-5f);
    EXPECT_FLOAT_EQ (set ("osc2Semitone", 19.0f), 12.0f);
    EXPECT_FLOAT_EQ (set ("osc2Semitone", 3.4f), 3.0f);
    EXPECT_FLOAT_EQ (set ("subLevel", 3.0f), 0.0f);
    EXPECT_NEAR (set ("delayFeedback", 1.0f), 0.95f, 1.0e-6f);
    EXPECT_NEAR (set ("reverbDecay", 1.0f), 0.95f, 1.0e-6f);
}
