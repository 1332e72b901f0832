#include "TestHelpers.h"

#include "engine/VoiceFilter.h"

#include <cstring>

using namespace morvane;
using namespace morvane::test;

namespace
{
constexpr double overRate = 96000.0;

VoiceFilter makeFilter (int model, float hz, float reso)
{
    VoiceFilter f;
    f.prepare (overRate);
    f.setModelNow (model);
    f.setCutoff (hz);
    f.setResonance (reso);
    return f;
}

// For a sine small enough to stay linear.
double gainAt (VoiceFilter filter, double frequency)
{
    return sineGain ([&] (float x) { return filter.process (x); }, frequency, overRate, 0.01);
}

double db (double g) { return 20.0 * std::log10 (g); }

// Magnitude of four prewarped trapezoidal one-pole stages.
double fourPoles (double f, double fc)
{
    const double w = std::tan (M_PI * f / overRate) / std::tan (M_PI * fc / overRate);
    return 1.0 / ((1.0 + w * w) * (1.0 + w * w));
}
}

TEST (VoiceFilter, LowPassModelsPassTheBandAndFallAt24DbPerOctave)
{
    struct Case { int model; double passGain; };
    for (auto c : { Case { VoiceFilter::ladder, 1.0 }, Case { VoiceFilter::diode, 0.95 }, Case { VoiceFilter::state, 0.85 } })
    {
        SCOPED_TRACE (c.model);
        const auto filter = makeFilter (c.model, 1000.0f, 0.0f);
        const double shelf = c.model == VoiceFilter::diode ? 0.977 : 1.0; // the tail of its 30 Hz shelf
        EXPECT_NEAR (gainAt (filter, 125.0), c.passGain * shelf * fourPoles (125.0, 1000.0), 0.005);
        // A four-pole low-pass: about 3 dB per stage down at the corner, then 24 dB per octave.
        EXPECT_NEAR (db (gainAt (filter, 1000.0) / c.passGain), -12.0, 1.0);
        const double twoOctavesUp = db (gainAt (filter, 4000.0) / c.passGain);
        EXPECT_NEAR (twoOctavesUp, -48.0, 3.0);
        const double threeOctavesUp = db (gainAt (filter, 8000.0) / c.passGain);
        EXPECT_NEAR (threeOctavesUp - twoOctavesUp, -24.0, 2.0);
    }
}

TEST (VoiceFilter, DiodeLowersTheLowestOctaves)
{
    const auto filter = makeFilter (VoiceFilter::diode, 5000.0f, 0.0f);
    // Below its 30 Hz shelf the output falls toward 0.95 * 0.4.
    EXPECT_NEAR (gainAt (filter, 3.0), 0.95 * 0.4, 0.02);
    EXPECT_NEAR (gainAt (filter, 1000.0), 0.95 * fourPoles (1000.0, 5000.0), 0.005);
}

TEST (VoiceFilter, ResonancePeakGrowsWithResonance)
{
    for (int model : { VoiceFilter::ladder, VoiceFilter::diode, VoiceFilter::state })
    {
        SCOPED_TRACE (model);
        double last = 0.0;
        for (float reso : { 0.0f, 0.5f, 0.8f, 0.95f })
        {
            auto f = makeFilter (model, 1000.0f, reso);
            const double peak = gainAt (f, 1000.0) / gainAt (f, 100.0);
            EXPECT_GT (peak, last) << "reso " << reso;
            last = peak;
        }
        // The ladder and the diode ring clearly; the state model's delayed feedback stays gentle.
        if (model != VoiceFilter::state)
        {
            EXPECT_GT (last, 2.0);
        }
    }
}

TEST (VoiceFilter, ResonanceConstantsPerModel)
{
    VoiceFilter f;
    f.prepare (overRate);
    f.setResonance (1.0f);
    EXPECT_FLOAT_EQ (f.ladderModel.k, 3.95f);
    EXPECT_FLOAT_EQ (f.diodeModel.k, 4.2f);
    EXPECT_FLOAT_EQ (f.stateModel.k, 0.95f);
    EXPECT_FLOAT_EQ (f.phaseModel.k, 0.95f);
}

TEST (VoiceFilter, SelfOscillatingLadderStaysBounded)
{
    auto f = makeFilter (VoiceFilter::ladder, 800.0f, 1.0f);
    float worst = 0.0f;
    for (int i = 0; i < 96000; ++i)
    {
        const float y = f.process (i < 10 ? 1.0f : (i % 4000 < 2000 ? 0.9f : -0.9f));
        ASSERT_TRUE (std::isfinite (y));
        worst = std::max (worst, std::abs (y));
    }
    EXPECT_LT (worst, 10.0f);
}

TEST (VoiceFilter, CutoffLimitsFollowTheRate)
{
    // At 44.1 kHz the oversampled limit is 39690 Hz, so 20 kHz stays untouched.
    auto open = VoiceFilter::coefficientsFor (20000.0f, 88200.0);
    EXPECT_FLOAT_EQ (open.centre, 20000.0f);
    EXPECT_NEAR (open.g, std::tan (20000.0 * M_PI / 88200.0), 1.0e-5);
    // At an 8 kHz host rate the limit is 0.45 of 16 kHz.
    auto low = VoiceFilter::coefficientsFor (20000.0f, 16000.0);
    EXPECT_FLOAT_EQ (low.centre, 7200.0f);
    EXPECT_NEAR (low.g, std::tan (7200.0 * M_PI / 16000.0), 1.0e-4);
    EXPECT_FLOAT_EQ (VoiceFilter::coefficientsFor (1.0f, 96000.0).centre, 20.0f);
    EXPECT_NEAR (open.lowCoefficient, 2.0 * M_PI * 30.0 / 88200.0, 1.0e-7);
}

TEST (VoiceFilter, FourCutoffsAtOnceGiveTheBitsOfOne)
{
    // The voice works out a group's gains as vector lanes ahead of its loop.
    for (const double rate : { 16000.0, 88200.0, 192000.0 })
        for (const float first : { 20.0f, 97.3f, 1234.5f, 19999.0f })
        {
            const float r = VoiceFilter::rateOrDefault (rate);
            fast::Lanes hz { first, first * 1.37f, first * 2.9f, first * 0.51f };
            for (int i = 0; i < 4; ++i)
                hz[i] = VoiceFilter::limitCutoff (hz[i], rate);
            const fast::Lanes g = filterDetail::integratorGain (hz, r);
            const fast::Lanes inverse = 1.0f / (1.0f + g);
            for (int i = 0; i < 4; ++i)
            {
                const auto one = VoiceFilter::coefficientsFor (hz[i], rate);
                const auto split = VoiceFilter::coefficientsFrom (hz[i], g[i], inverse[i], rate);
                EXPECT_EQ (one.g, split.g);
                EXPECT_EQ (std::memcmp (&one.stages, &split.stages, sizeof (StageGains)), 0) << rate << " Hz rate, " << hz[i] << " Hz";
            }
        }
}

TEST (VoiceFilter, PhaseChainCutsNotchesAndSpreadsInStereo)
{
    auto notchFrequency = [] (float octaveOffset)
    {
        auto f = makeFilter (VoiceFilter::phase, 1000.0f, 0.0f);
        f.setPhaseControls (0.5f, 1.0f, octaveOffset);
        // The lowest notch: the first local minimum, where the chain has turned half a cycle.
        double previous = 1.0e9, where = 0.0, depth = 1.0;
        for (double hz = 50.0; hz < 10000.0; hz *= 1.01)
        {
            const double g = gainAt (f, hz);
            if (g > previous && previous < 0.3)
                break;
            previous = g;
            where = hz;
            depth = g;
        }
        return std::pair { where, depth };
    };

    const auto [centre, depth] = notchFrequency (0.0f);
    EXPECT_LT (depth, 0.05); // a deep notch at an even mix of dry and all-pass
    const double below = notchFrequency (-1.0f).first;
    const double above = notchFrequency (1.0f).first;
    EXPECT_NEAR (below / centre, 0.5, 0.03);
    EXPECT_NEAR (above / centre, 2.0, 0.12);

    // At mix 0 the chain is a wire.
    auto bypass = makeFilter (VoiceFilter::phase, 1000.0f, 0.5f);
    bypass.setPhaseControls (0.0f, 1.0f, 0.0f);
    for (int i = 0; i < 1000; ++i)
    {
        const float x = std::sin ((float) i * 0.05f);
        ASSERT_EQ (bypass.process (x), x);
    }
}

TEST (VoiceFilter, ModelChangeCrossfadesWithoutAStep)
{
    auto f = makeFilter (VoiceFilter::ladder, 2000.0f, 0.3f);
    float last = 0.0f, worstJump = 0.0f;
    for (int i = 0; i < 48000; ++i)
    {
        if (i == 24000)
            f.changeModel (VoiceFilter::phase);
        const float y = f.process (0.5f * std::sin (2.0f * 3.1415927f * 110.0f * (float) i / 96000.0f));
        if (i > 1000)
            worstJump = std::max (worstJump, std::abs (y - last));
        last = y;
    }
    // The largest sample-to-sample move stays that of a 110 Hz sine of this size.
    EXPECT_LT (worstJump, 0.5f * 2.0f * 3.1415927f * 110.0f / 96000.0f * 1.6f);
    EXPECT_EQ (f.fadeCounter, 0);
    EXPECT_EQ (f.model, VoiceFilter::phase);
}

TEST (VoiceFilter, ModelsKeepTheirStateWhenLeft)
{
    auto f = makeFilter (VoiceFilter::ladder, 500.0f, 0.0f);
    for (int i = 0; i < 100; ++i)
        f.process (1.0f);
    const float s4 = f.ladderModel.stages[3];
    f.setModelNow (VoiceFilter::state);
    for (int i = 0; i < 100; ++i)
        f.process (1.0f);
    EXPECT_EQ (f.ladderModel.stages[3], s4);
}
