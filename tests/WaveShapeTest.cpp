#include "engine/WaveShape.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

using namespace morvane;

namespace
{
constexpr double twoPi = 6.283185307179586;

// Magnitudes of the first harmonics of one period of a wave, by direct DFT.
std::vector<double> harmonics (int wave, float dcw, int count, float resonance = 16.0f)
{
    constexpr int n = 8192;
    std::vector<double> mags ((size_t) count + 1, 0.0);
    for (int h = 0; h <= count; ++h)
    {
        std::complex<double> acc;
        for (int i = 0; i < n; ++i)
        {
            const double p = (double) i / n;
            acc += (double) waveShape (wave, (float) p, dcw, resonance) * std::polar (1.0, -twoPi * h * p);
        }
        mags[(size_t) h] = std::abs (acc) / n * (h == 0 ? 1.0 : 2.0);
    }
    return mags;
}
}

// The bent waves turn into cosines, the resonant ones into a single inner cycle under their window.
TEST (WaveShape, AtZeroDcwTheWavesAreCosinesOrOneInnerCycle)
{
    for (float p = 0.0f; p < 1.0f; p += 0.0137f)
    {
        const float c1 = std::cos (6.2831855f * p);
        for (int w : { 0, 1, 2, 4 })
            EXPECT_NEAR (waveShape (w, p, 0.0f, 16.0f), c1, 2.0e-5f) << "wave " << w << " p " << p;
        EXPECT_NEAR (waveShape (3, p, 0.0f, 16.0f), std::cos (12.566371f * p), 2.0e-5f) << "p " << p;
    }
    for (float p = 0.0f; p < 1.0f; p += 0.0173f)
    {
        const float c = std::cos (6.2831855f * p);
        const float s = std::sin (6.2831855f * p);
        EXPECT_NEAR (waveShape (5, p, 0.0f, 16.0f), 1.0f - (0.5f - 0.5f * c) * 2.0f * (1.0f - p), 1.0e-5f);
        const float tri = p < 0.5f ? 2.0f * p : 2.0f - 2.0f * p;
        EXPECT_NEAR (waveShape (6, p, 0.0f, 16.0f), 2.0f * tri * (0.5f * c + 0.5f) - 1.0f, 1.0e-5f);
        EXPECT_NEAR (waveShape (7, p, 0.0f, 16.0f), s * std::min (2.0f * (1.0f - p), 1.0f), 1.0e-5f);
        const float win = p < 0.5f ? 1.0f - 2.0f * p : 2.0f * (p - 0.5f);
        EXPECT_NEAR (waveShape (9, p, 0.0f, 16.0f), c * win, 1.0e-5f);
    }
}

TEST (WaveShape, AtFullDcwTheShapesReachTheirKnees)
{
    // Saw: the knee stands at 0.01, where the bent phase is a half cycle.
    EXPECT_NEAR (waveShape (0, 0.01f, 1.0f, 16.0f), -1.0f, 1.0e-5f);
    EXPECT_NEAR (waveShape (0, 0.0f, 1.0f, 16.0f), 1.0f, 1.0e-6f);
    EXPECT_NEAR (waveShape (0, 0.505f, 1.0f, 16.0f), 0.0f, 1.0e-3f); // a quarter of the way back up

    // Sinepulse: two cycles squeezed before its knee at 0.01.
    EXPECT_NEAR (waveShape (3, 0.01f, 1.0f, 16.0f), 1.0f, 1.0e-4f);

    // Halfsine: the first half is a plain cosine, the second is compressed into 0.5 .. 0.51.
    EXPECT_NEAR (waveShape (4, 0.25f, 1.0f, 16.0f), 0.0f, 1.0e-5f);
    EXPECT_NEAR (waveShape (4, 0.6f, 1.0f, 16.0f), 1.0f, 1.0e-5f);

    // Square: flat at +1 early in each half, at -1 early in the second half.
    EXPECT_NEAR (waveShape (1, 0.1f, 1.0f, 16.0f), 1.0f, 1.0e-4f);
    EXPECT_NEAR (waveShape (1, 0.6f, 1.0f, 16.0f), -1.0f, 1.0e-4f);

    // Pulse at full DCW holds +1 for most of the cycle.
    EXPECT_NEAR (waveShape (2, 0.5f, 1.0f, 16.0f), 1.0f, 1.0e-5f);

    // The resonant shapes run 16 inner cycles: the resonant saw returns to 1 at p = 1/16.
    EXPECT_NEAR (waveShape (5, 1.0f / 16.0f, 1.0f, 16.0f), 1.0f, 1.0e-4f);
    EXPECT_NEAR (waveShape (5, 1.0f / 32.0f, 1.0f, 16.0f), 1.0f - 2.0f * (1.0f - 1.0f / 32.0f), 1.0e-4f);
    EXPECT_NEAR (waveShape (7, 1.0f / 64.0f, 1.0f, 16.0f), 1.0f, 1.0e-4f);
    EXPECT_NEAR (waveShape (6, 0.5f, 1.0f, 16.0f), 1.0f, 1.0e-4f);
    EXPECT_NEAR (waveShape (9, 0.0f, 1.0f, 16.0f), 1.0f, 1.0e-6f);

    // With a resonance ratio of 4 the editor's drawings run four inner cycles.
    EXPECT_NEAR (waveShape (5, 0.25f, 1.0f, 4.0f), 1.0f, 1.0e-4f);
}

TEST (WaveShape, DcwBrightensEveryBentWave)
{
    for (int w : { 0, 1, 2, 3, 4 })
    {
        const auto dull = harmonics (w, 0.0f, 8);
        const auto bright = harmonics (w, 1.0f, 8);
        double dullUpper = 0.0, brightUpper = 0.0;
        for (int h = 3; h <= 8; ++h)
        {
            dullUpper += dull[(size_t) h];
            brightUpper += bright[(size_t) h];
        }
        EXPECT_LT (dullUpper, 1.0e-3) << "wave " << w;
        EXPECT_GT (brightUpper, 0.1) << "wave " << w;
    }

    // The full-DCW saw falls off like a saw: each of the first harmonics is present and decreasing.
    const auto saw = harmonics (0, 1.0f, 6);
    for (int h = 1; h < 6; ++h)
        EXPECT_GT (saw[(size_t) h], saw[(size_t) h + 1]) << h;
    EXPECT_GT (saw[2] / saw[1], 0.3);

    // The resonant shapes put their energy near the 16th harmonic.
    const auto res = harmonics (5, 1.0f, 20);
    EXPECT_GT (res[16], res[8]);
    EXPECT_GT (res[16], res[4]);
}

TEST (WaveShape, PwmIsTheFixedRectangleAndUnknownWavesAreSilent)
{
    EXPECT_EQ (waveShape (8, 0.2f, 0.0f, 16.0f), 1.0f);
    EXPECT_EQ (waveShape (8, 0.7f, 1.0f, 16.0f), -1.0f);
    EXPECT_EQ (waveShape (10, 0.3f, 1.0f, 16.0f), 0.0f);
    EXPECT_EQ (waveShape (-1, 0.3f, 1.0f, 16.0f), 0.0f);
    // DCW beyond 0..1 is limited.
    EXPECT_EQ (waveShape (0, 0.3f, 7.0f, 16.0f), waveShape (0, 0.3f, 1.0f, 16.0f));
    EXPECT_EQ (waveShape (0, 0.3f, -2.0f, 16.0f), waveShape (0, 0.3f, 0.0f, 16.0f));
}

TEST (WaveRmsGain, EveryWaveHasTheLoudnessOfTheFullSaw)
{
    const auto& gains = waveRmsGain();
    EXPECT_EQ (&gains, &waveRmsGain()); // built once

    auto rmsOf = [] (int w, float gain)
    {
        double s = 0.0;
        for (int i = 0; i < 4096; ++i)
        {
            const double v = gain * waveShape (w, (float) i / 4096.0f, 1.0f, 16.0f);
            s += v * v;
        }
        return std::sqrt (s / 4096.0);
    };

    const double ref = rmsOf (0, 1.0f);
    EXPECT_NEAR (gains[0], 1.0f, 1.0e-3f);
    for (int w = 0; w < numWaves; ++w)
    {
        EXPECT_NEAR (rmsOf (w, gains[(size_t) w]), ref, ref * 1.0e-3) << "wave " << w;
        EXPECT_GT (gains[(size_t) w], 0.0f);
    }
    // The rectangle has unit RMS, so its gain is the saw's RMS itself.
    EXPECT_NEAR (gains[8], ref, 1.0e-3);
}
