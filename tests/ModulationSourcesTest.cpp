#include "TestHelpers.h"

#include "engine/EngineLfo.h"
#include "engine/VoiceEngine.h"

#include <gtest/gtest.h>

using namespace morvane;
using namespace morvane::test;

namespace
{
EngineLfo makeLfo (int shape, float rate = 1.0f, float phaseDegrees = 0.0f)
{
    EngineLfo lfo;
    lfo.prepare (48000.0);
    lfo.update (rate, 0.5f, phaseDegrees, shape, false);
    return lfo;
}
}

TEST (EngineLfo, SyncTableRowsAndSelection)
{
    const auto& t = EngineLfo::syncTable();
    const char* labels[] = { "1/1", "1/2", "1/3", "1/4", "1/6", "1/8", "1/12", "1/16", "1/24", "1/32" };
    const float beats[] = { 4.0f, 2.0f, 4.0f / 3.0f, 1.0f, 2.0f / 3.0f, 0.5f, 1.0f / 3.0f, 0.25f, 1.0f / 6.0f, 0.125f };
    for (size_t i = 0; i < t.size(); ++i)
    {
        EXPECT_STREQ (t[i].label, labels[i]);
        EXPECT_FLOAT_EQ (t[i].beats, beats[i]);
    }
    // Ten rows over the travel, halves rounded away from zero.
    EXPECT_EQ (EngineLfo::syncIndexFor (0.0f), 0);
    EXPECT_EQ (EngineLfo::syncIndexFor (0.5f), 5);
    EXPECT_EQ (EngineLfo::syncIndexFor (1.0f / 18.0f), 1);
    EXPECT_EQ (EngineLfo::syncIndexFor (1.0f), 9);
    EXPECT_EQ (EngineLfo::syncIndexFor (2.0f), 9);
}

TEST (EngineLfo, SyncedRatesFollowTheTempo)
{
    EngineLfo lfo;
    lfo.prepare (48000.0);
    lfo.bpm = 120.0f;
    lfo.update (7.0f, 3.0f / 9.0f, 0.0f, EngineLfo::sine, true); // row "1/4"
    EXPECT_NEAR (lfo.increment * 48000.0f, 2.0f, 1.0e-4f);
    lfo.update (7.0f, 0.0f, 0.0f, EngineLfo::sine, true); // row "1/1"
    EXPECT_NEAR (lfo.increment * 48000.0f, 0.5f, 1.0e-4f);
    lfo.update (7.0f, 0.0f, 0.0f, EngineLfo::sine, false); // free: the rate itself
    EXPECT_NEAR (lfo.increment * 48000.0f, 7.0f, 1.0e-3f);
    lfo.update (1.0f - 20.0f, 0.5f, 0.0f, EngineLfo::sine, false); // a matrix share of -20 Hz
    EXPECT_NEAR (lfo.increment * 48000.0f, 0.001f, 1.0e-6f);
}

TEST (EngineLfo, DefaultRateSitsAtTheMiddleRowWhenSynced)
{
    MorvaneAudioProcessor p;
    auto* rate = dynamic_cast<juce::RangedAudioParameter*> (p.getParameterTree().getParameter ("lfo1Rate"));
    const float position = rate->convertTo0to1 (1.0f);
    EXPECT_NEAR (position, 0.5f, 1.0e-4f);
    EXPECT_STREQ (EngineLfo::syncTable()[(size_t) EngineLfo::syncIndexFor (position)].label, "1/8");
}

TEST (EngineLfo, ShapesPhaseAndHeldValues)
{
    auto tri = makeLfo (EngineLfo::tri);
    EXPECT_EQ (tri.step(), -1.0f);

    auto sine = makeLfo (EngineLfo::sine);
    EXPECT_EQ (sine.step(), 0.0f);

    auto square = makeLfo (EngineLfo::sqr);
    auto inverted = makeLfo (EngineLfo::sqr, 1.0f, 180.0f);
    for (int i = 0; i < 48000; ++i)
    {
        const float a = square.step(), b = inverted.step();
        if (i % 24000 > 5 && i % 24000 < 23995) // away from the edges
        {
            ASSERT_EQ (a, -b) << i;
        }
    }

    // A change of shape to "s&h" draws at once; other changes keep the phase.
    auto lfo = makeLfo (EngineLfo::sine);
    for (int i = 0; i < 1000; ++i)
        lfo.step();
    const float phase = lfo.phase;
    lfo.update (1.0f, 0.5f, 0.0f, EngineLfo::tri, false);
    EXPECT_EQ (lfo.phase, phase);
    EXPECT_EQ (lfo.heldValue, 0.0f);
    lfo.update (1.0f, 0.5f, 0.0f, EngineLfo::sampleAndHold, false);
    const float held = lfo.heldValue;
    EXPECT_NE (held, 0.0f);
    EXPECT_EQ (lfo.step(), held);

    // The held value changes at each wrap, and only then.
    auto sh = makeLfo (EngineLfo::sampleAndHold, 10.0f);
    float value = sh.step();
    int changes = 0;
    for (int i = 0; i < 48000; ++i)
    {
        const float v = sh.step();
        if (v != value)
            ++changes;
        value = v;
        ASSERT_GE (v, -1.0f);
        ASSERT_LE (v, 1.0f);
    }
    EXPECT_NEAR (changes, 10, 1);
}

TEST (SmoothRandom, NewGoalEvery125MsFollowedWithA50MsTimeConstant)
{
    SmoothRandom r;
    r.prepare (48000.0);
    EXPECT_EQ (r.interval, 6000);
    const float first = r.step();
    const float target = r.target;
    EXPECT_NEAR (first, target * r.coefficient, 1.0e-7f);
    for (int i = 1; i < 2400; ++i)
        r.step();
    EXPECT_NEAR (r.value / target, 1.0 - std::exp (-1.0), 1.0e-3); // one time constant
    for (int i = 2400; i < 6000; ++i)
        r.step();
    EXPECT_EQ (r.target, target);
    r.step();
    EXPECT_NE (r.target, target); // the next goal

    SmoothRandom zero;
    zero.prepare (0.0);
    EXPECT_EQ (zero.coefficient, 1.0f);
}

TEST (ModulationSources, SourceArrayHoldsTheVoicesValues)
{
    MorvaneAudioProcessor p;
    VoiceEngine engine (p.getParameterTree());
    engine.prepare (48000.0, 256);
    engine.modWheel = 0.25f;
    engine.startNote (64, 0.5f, false);
    juce::AudioBuffer<float> buffer (2, 4800);
    buffer.clear();
    engine.render (buffer, 0, 4800);

    EXPECT_EQ (engine.sources[0], 0.0f);
    EXPECT_EQ (engine.sources[1], 0.5f);
    EXPECT_FLOAT_EQ (engine.sources[2], 64.0f * 0.007874016f);
    EXPECT_FLOAT_EQ (engine.sources[3], 0.25f);
    EXPECT_EQ (engine.sources[5], 0.0f); // LFO depth 0
    // 100 ms in: 5 ms of attack, then 95 ms of the 0.5 s decays toward 0.8 and 0.6.
    EXPECT_NEAR (engine.sources[6], 1.0f - 0.2f * 0.095f / 0.5f, 2.0e-3f);
    EXPECT_NEAR (engine.sources[7], engine.sources[6], 1.0e-6f);
    EXPECT_NEAR (engine.sources[8], 1.0f - 0.4f * 0.095f / 0.5f, 2.0e-3f);
    EXPECT_FLOAT_EQ (engine.sources[9], 1.0f);
    EXPECT_EQ (engine.sources[10], engine.noteRandom);
    EXPECT_EQ (engine.sources[11], engine.smoothRandom.value);
    EXPECT_EQ (engine.sources[12], 0.0f); // no detune: the beat phase stands still
}

TEST (ModulationSources, NotesResetTheLfoOnlyWhenTheyResetPhasesOrRetrigger)
{
    auto lfoPhaseAfterSecondNote = [] (float phaseMode, float retrig)
    {
        MorvaneAudioProcessor p;
        setParameter (p, "phaseMode", phaseMode);
        setParameter (p, "lfo1Retrig", retrig);
        VoiceEngine engine (p.getParameterTree());
        engine.prepare (48000.0, 256);
        juce::AudioBuffer<float> buffer (2, 2400);
        engine.startNote (40, 1.0f, false);
        engine.render (buffer, 0, 2400);
        engine.startNote (43, 1.0f, false);
        return engine.lfo.phase;
    };

    EXPECT_EQ (lfoPhaseAfterSecondNote (2.0f, 0.0f), 0.0f); // "per": phases reset, the LFO with them
    EXPECT_EQ (lfoPhaseAfterSecondNote (0.0f, 1.0f), 0.0f); // "free" phases, but "retrig"
    EXPECT_NEAR (lfoPhaseAfterSecondNote (0.0f, 0.0f), 2400.0f / 48000.0f, 1.0e-4f); // runs on
}
