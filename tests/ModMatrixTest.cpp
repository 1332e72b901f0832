#include "TestHelpers.h"

#include "engine/DcBlocker.h"
#include "engine/ModLabels.h"
#include "engine/ModMatrixEval.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace morvane;
using namespace morvane::test;

namespace
{
struct Matrix
{
    std::array<ModSlot, numModSlots> slots {};
    std::array<float, numModSources> sources {};
    ModSums sums;
    std::array<std::atomic<float>, numModSlots> outputs {};

    void run() { evaluateMatrix (slots, sources, sums, outputs); }
};
}

TEST (ModMatrix, SlotsOnOneDestinationAddInItsUnits)
{
    Matrix m;
    m.sources[5] = 0.5f;  // lfo
    m.sources[1] = 0.8f;  // velocity
    m.slots[0] = { 5, dest::cutoff, 0.5f, 0 };
    m.slots[1] = { 1, dest::cutoff, -0.25f, 0 };
    m.slots[2] = { 1, dest::pitch, 1.0f, 0 };
    m.run();
    EXPECT_FLOAT_EQ (m.sums[dest::cutoff], (0.5f * 0.5f - 0.25f * 0.8f) * 48.0f);
    EXPECT_FLOAT_EQ (m.sums[dest::pitch], 0.8f * 48.0f);
    EXPECT_FLOAT_EQ (m.outputs[1].load(), -0.2f);
    EXPECT_EQ (m.sums.ampFactor, 1.0f);
}

TEST (ModMatrix, AmpMultipliesAndCanInvert)
{
    Matrix m;
    m.sources[1] = 0.0f;
    m.slots[0] = { 1, dest::amp, 0.5f, 0 }; // the default slot: velocity 0 leaves half
    m.run();
    EXPECT_FLOAT_EQ (m.sums.ampFactor, 0.5f);

    m.sources[1] = 1.0f;
    m.run();
    EXPECT_FLOAT_EQ (m.sums.ampFactor, 1.0f);

    m.sources[5] = -1.0f;
    m.slots[1] = { 5, dest::amp, 1.0f, 0 };
    m.run();
    EXPECT_FLOAT_EQ (m.sums.ampFactor, -1.0f); // a bipolar source through 0 to a negative gain

    m.slots[1] = { 5, dest::amp, -0.5f, 0 }; // negative amount: 1 - v
    m.run();
    EXPECT_FLOAT_EQ (m.sums.ampFactor, 0.5f * (1.0f + 1.0f) + 0.5f);
}

TEST (ModMatrix, ExpCurveKeepsTheSignAndZeroAmountsReportZero)
{
    Matrix m;
    m.sources[5] = -0.5f;
    m.slots[0] = { 5, dest::osc1Dcw, 1.0f, 1 };
    m.slots[1] = { 5, dest::drive, 0.0f, 0 };
    m.slots[2] = { 0, dest::drive, 1.0f, 0 };
    m.slots[3] = { 5, dest::off, 1.0f, 0 };
    m.slots[4] = { 20, dest::drive, 1.0f, 0 }; // beyond the source list
    m.run();
    EXPECT_FLOAT_EQ (m.sums[dest::osc1Dcw], -0.25f);
    EXPECT_EQ (m.outputs[1].load(), 0.0f);
    EXPECT_EQ (m.outputs[2].load(), 0.0f);
    EXPECT_EQ (m.outputs[3].load(), 0.0f);
    EXPECT_EQ (m.sums[dest::drive], 0.0f);
}

TEST (ModMatrix, GainFactorsHaveAFloor)
{
    EXPECT_EQ (sumGainFactor (0.0f), 1.0f);
    EXPECT_EQ (sumGainFactor (-90.0f), 0.0f);
    EXPECT_NEAR (sumGainFactor (-6.0f), 0.501187f, 1.0e-5f);
}

TEST (Drift, ExactlyOneAndNoDrawsWithoutAmount)
{
    OscillatorDrift d;
    d.prepare (48000.0);
    for (int i = 0; i < 1000; ++i)
    {
        const auto r = d.ratio (0.0f);
        ASSERT_EQ (r.up, 1.0f);
        ASSERT_EQ (r.down, 1.0f);
    }
    EXPECT_EQ (d.counter, 0);
    EXPECT_EQ (d.value, 0.0f);
    float widest = 1.0f;
    for (int i = 0; i < 48000; ++i)
    {
        const auto r = d.ratio (1.0f);
        // The two ratios are 2^e and 2^-e of the walk's value.
        const double cents = 60.0 * (double) d.value;
        ASSERT_NEAR (r.up, std::exp2 (cents / 1200.0), 2.0e-7);
        ASSERT_NEAR (r.down, std::exp2 (-cents / 1200.0), 2.0e-7);
        widest = std::max (widest, r.up);
    }
    EXPECT_GT (widest, 1.0f);
    EXPECT_LE (widest, std::exp2 (60.0f / 1200.0f) + 1.0e-6f); // +-60 cents at full amount
}

namespace
{
// Osc 2 alone at 220 Hz, detuned as asked.
std::unique_ptr<MorvaneAudioProcessor> detunedOsc2 (bool monoLow, Settings settings)
{
    auto p = makePatched ({ { "osc1Level", -60.0f }, { "osc2Level", 0.0f }, { "monoLowEnabled", monoLow ? 1.0f : 0.0f } });
    setParameters (*p, settings);
    return p;
}
}

TEST (Detune, BeatAndCentsSplitTheSidesBySpread)
{
    // Without spread both sides sit 5 Hz above; cents at half spread leave the right side exact.
    struct Row { const char* what; Settings settings; double left, leftTolerance, right, rightTolerance; };
    const Row rows[] = {
        { "beat at full spread", { { "reeseBeat", 5.0f }, { "reeseSpread", 1.0f } }, 225.0, 0.05, 215.0, 0.05 },
        { "beat without spread", { { "reeseBeat", 5.0f } }, 225.0, 0.05, 225.0, 0.05 },
        { "cents at half spread", { { "osc2Detune", 50.0f }, { "stereoWidth", 0.3f }, { "reeseSpread", 0.2f } },
          220.0 * std::pow (2.0, 50.0 / 1200.0), 0.05, 220.0, 0.02 },
    };
    for (const auto& row : rows)
    {
        const auto out = renderNote (*detunedOsc2 (false, row.settings), 57, 48000);
        EXPECT_NEAR (zeroCrossingFrequency (out.getReadPointer (0) + 4800, 43000, 48000.0), row.left, row.leftTolerance) << row.what;
        EXPECT_NEAR (zeroCrossingFrequency (out.getReadPointer (1) + 4800, 43000, 48000.0), row.right, row.rightTolerance) << row.what;
    }
}

TEST (MonoLow, RemovesSideContentBelowItsFrequency)
{
    auto sideLevel = [] (bool monoLow)
    {
        auto p = detunedOsc2 (monoLow, { { "reeseBeat", 5.0f }, { "reeseSpread", 1.0f }, { "monoLowFreq", 300.0f } });
        const auto out = renderNote (*p, 33, 48000); // 55 Hz
        double side = 0.0;
        for (int i = 4800; i < 48000; ++i)
            side += std::pow (out.getSample (0, i) - out.getSample (1, i), 2.0);
        return std::sqrt (side / 43200.0);
    };
    // A first-order high-pass at 300 Hz takes a 55 Hz side signal down by about 15 dB.
    EXPECT_LT (sideLevel (true), sideLevel (false) * 0.25);
}

TEST (ModLabels, SourceAndDestinationNamesFollowTheTables)
{
    EXPECT_EQ (sourceId (3), "modwheel");
    EXPECT_EQ (sourceId (12), "beatPhase");
    EXPECT_EQ (sourceChipLabel (5), "LFO 1");
    EXPECT_EQ (sourceChipLabel (0), "OFF");
    EXPECT_EQ (sourceUpperName (6), "DCW ENV OSC 1");
    EXPECT_EQ (sourceUpperName (2), "");
    EXPECT_EQ (sourceChipLabel (13), "");
    // Names not in the table stand for themselves, in capitals.
    // The card's label keeps an unknown name whole; the route badges' short name keeps its first word.
    for (auto [name, label, shortName] : { std::tuple { " mod wheel ", "MW", "MW" }, { "dcw env osc 2", "DCW2", "DCW2" },
                                           { "lfo 1", "LFO 1", "LFO" }, { "key", "KEY", "KEY" } })
    {
        EXPECT_EQ (shortSourceLabel (name), label) << name;
        EXPECT_EQ (shortSourceName (name), shortName) << name;
    }
    for (auto [destination, label] : { std::pair { 10, "O2 DETUNE" }, { 11, "O2 HZ" }, { 15, "FENV" }, { 20, "NOISE" }, { 6, "SUB" },
                                       { 14, "RES" }, { 19, "OUT" }, { 21, "O1 PW" }, { 34, "EQ NOTCH HZ" }, { 35, "" } })
        EXPECT_EQ (destinationShortLabel (destination), label) << destination;
}

TEST (ModMatrix, PitchBeyondOneOctaveKeepsThePhaseInRange)
{
    auto p = makePrepared();
    // Four slots of mod wheel to pitch at full amount: +192 semitones, far past the oversampled rate.
    for (int slot = 1; slot <= 4; ++slot)
    {
        setParameter (*p, "mod" + juce::String (slot) + "Source", 3.0f);
        setParameter (*p, "mod" + juce::String (slot) + "Dest", 7.0f);
        setParameter (*p, "mod" + juce::String (slot) + "Amount", 1.0f);
    }
    p->pushModWheel (1.0f);
    const auto out = renderProcessor (*p, 9600, 512, { { 0, 100, 1.0f } });
    for (int i = 0; i < 9600; ++i)
        ASSERT_TRUE (std::isfinite (out.getSample (0, i)));
    for (const auto& osc : p->getEngine().oscillators)
    {
        EXPECT_GT (osc.increment, 1.0f);
        EXPECT_GE (osc.phase, 0.0f);
        EXPECT_LT (osc.phase, 1.0f);
    }
}
