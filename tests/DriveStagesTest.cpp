#include "TestHelpers.h"

#include "engine/DriveShaper.h"
#include "engine/MultibandDrive.h"
#include "engine/NoiseSource.h"
#include "engine/PostEq.h"

#include <juce_dsp/juce_dsp.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

using namespace morvane;
using namespace morvane::test;

namespace
{
double db (double g) { return 20.0 * std::log10 (g); }
}

TEST (DriveShaper, EveryModeIsExactAtZeroDecibels)
{
    std::mt19937 rng (7);
    std::uniform_real_distribution<float> dist (-4.0f, 4.0f);
    for (int mode = 0; mode < DriveShaper::numModes; ++mode)
        for (int i = 0; i < 1000; ++i)
        {
            const float x = dist (rng), p = dist (rng);
            ASSERT_EQ (DriveShaper::shape (mode, x, p, 1.0f), x) << mode;
            ASSERT_EQ (DriveShaper::shape (mode, x, p, 1.000001f), x) << mode;
        }
}

TEST (DriveShaper, SoftHasUnitSmallSignalGainAndACeilingOfOneOverGain)
{
    const float g = std::pow (10.0f, 12.0f / 20.0f);
    DriveShaper shaper;
    shaper.prepare (96000.0);
    shaper.gain = g;

    EXPECT_NEAR (sineGain ([&] (float x) { return shaper.process (x); }, 100.0, 96000.0, 0.001), 1.0, 0.002);

    // A large input on the antiderivative path and on the plain tanh path alike.
    float y = 0.0f;
    for (int i = 0; i < 1000; ++i)
        y = shaper.process (20.0f + 0.01f * (float) i);
    EXPECT_NEAR (y, 1.0f / g, 2.0e-3f);
    for (int i = 0; i < 10; ++i)
        y = shaper.process (-40.0f);
    EXPECT_NEAR (y, -1.0f / g, 1.0e-5f);
}

TEST (DriveShaper, DiodeIsBoundedAndAsymmetric)
{
    for (float driveDb : { 6.0f, 12.0f, 24.0f })
    {
        const float g = std::pow (10.0f, driveDb / 20.0f);
        for (float x : { 1.0e-4f, 0.01f, 0.1f, 0.5f, 1.0f, 10.0f, 1.0e4f })
        {
            const float up = DriveShaper::shape (DriveShaper::diode, x, 0.0f, g);
            const float down = DriveShaper::shape (DriveShaper::diode, -x, 0.0f, g);
            ASSERT_TRUE (std::isfinite (up) && std::isfinite (down));
            EXPECT_LE (std::abs (up), x + 0.01f);
            EXPECT_LE (std::abs (down), x + 0.01f);
            if (0.5f * g * x < 0.1f) // where the two Newton steps reach the knee of the pair
            {
                EXPECT_GT (std::abs (up + down), 1.0e-4f) << x; // the two directions conduct differently
            }
        }
    }
}

// The diode's curve is read from a table: it must still be the two Newton steps on the pair.
TEST (DriveShaper, DiodeIsTwoNewtonStepsOnTheDiodePair)
{
    const auto reference = [] (double x, double g)
    {
        const double t = 0.5 * g * x;
        double v = t;
        for (int i = 0; i < 2; ++i)
        {
            const double e = std::exp (std::clamp (v * 38.461536, -30.0, 30.0));
            const double r = 0.7 / e;
            v -= ((e - r) * 0.1 + (v - t)) / ((r + e) * 3.8461537 + 1.0);
        }
        return 2.0 / std::max (g, 1.0) * v * 0.9;
    };
    double worst = 0.0;
    for (float g : { 1.5f, 2.0f, 4.0f, 15.8f })
        for (int i = -4000; i <= 4000; ++i)
        {
            const float x = 0.0003f * (float) i + 0.0000137f; // off the table's grid
            const double want = reference (x, g);
            worst = std::max (worst, std::abs ((double) DriveShaper::shape (DriveShaper::diode, x, 0.0f, g) - want));
        }
    EXPECT_LT (worst, 2.0e-7);
}

// Soft is the first-order antiderivative form of tanh: (F(gx) - F(gp)) / (g (x - p)), F = log cosh.
TEST (DriveShaper, SoftIsTheAntiderivativeDifferenceOfTanh)
{
    const auto logCosh = [] (double t) { return std::abs (t) + std::log1p (std::exp (-2.0 * std::abs (t))) - std::log (2.0); };
    double worst = 0.0;
    for (float g : { 1.5f, 4.0f, 15.8f })
        for (int i = -300; i <= 300; ++i)
        {
            const float x = 0.01f * (float) i + 0.0031f, p = x - 0.05f;
            const double u = (double) g * x, w = (double) g * p;
            const double want = (logCosh (u) - logCosh (w)) / (g * (u - w));
            worst = std::max (worst, std::abs ((double) DriveShaper::shape (DriveShaper::soft, x, p, g) - want));
        }
    EXPECT_LT (worst, 2.0e-5);
}

TEST (DriveShaper, FoldFollowsTheAntiderivativeOfASine)
{
    const float g = std::pow (10.0f, 6.0f / 20.0f);
    const float a = (g - 1.0f) * 6.0f + 1.0f;
    EXPECT_NEAR (DriveShaper::shape (DriveShaper::fold, 0.3f, 0.3f, g), 0.7f * std::sin (a * 0.3f), 1.0e-6f);
    // Between two inputs: the mean of sin over the step.
    const float u = a * 0.4f, w = a * 0.2f;
    EXPECT_NEAR (DriveShaper::shape (DriveShaper::fold, 0.4f, 0.2f, g), 0.7f * (std::cos (w) - std::cos (u)) / (u - w), 1.0e-6f);
}

TEST (DriveShaper, AutoMakeupPerMode)
{
    // 30 dB: the modulated drive is not limited here.
    struct Row { int mode; float driveDb; double makeupDb; };
    for (auto r : { Row { DriveShaper::fold, 24.0f, 9.6 }, Row { DriveShaper::soft, 24.0f, 12.0 }, Row { DriveShaper::diode, 10.0f, 5.5 },
                    Row { DriveShaper::soft, 30.0f, 15.0 } })
        EXPECT_NEAR (db (DriveShaper::autoMakeup (r.mode, r.driveDb)), r.makeupDb, 1.0e-4) << r.mode << " at " << r.driveDb;
    EXPECT_EQ (DriveShaper::autoMakeup (DriveShaper::soft, 0.01f), 1.0f);
}

TEST (DriveShaper, ModeChangeCrossfadesWithEqualPower)
{
    DriveShaper shaper;
    shaper.prepare (96000.0);
    shaper.gain = 4.0f;
    shaper.setModeNow (DriveShaper::soft);
    shaper.changeMode (DriveShaper::fold);
    EXPECT_EQ (shaper.fadeCounter, 480);
    const float first = shaper.process (0.3f); // angle 0: all of the old mode
    EXPECT_NEAR (first, DriveShaper::shape (DriveShaper::soft, 0.3f, 0.0f, 4.0f), 1.0e-6f);
    for (int i = 0; i < 479; ++i)
        shaper.process (0.3f);
    EXPECT_EQ (shaper.fadeCounter, 0);
    EXPECT_NEAR (shaper.process (0.3f), DriveShaper::shape (DriveShaper::fold, 0.3f, 0.3f, 4.0f), 1.0e-6f);
}

namespace
{
// Mean power density in an octave band around centre, from a Welch estimate.
std::vector<double> octaveDensities (NoiseSource source, const std::vector<double>& centres, double rate)
{
    constexpr int order = 12, size = 1 << order, frames = 96;
    juce::dsp::FFT fft (order);
    std::vector<double> density (size / 2, 0.0);
    std::vector<float> work (2 * size);
    for (int f = 0; f < frames; ++f)
    {
        for (int i = 0; i < size; ++i)
            work[(size_t) i] = source.next() * (float) (0.5 - 0.5 * std::cos (2.0 * M_PI * i / size));
        fft.performFrequencyOnlyForwardTransform (work.data());
        for (int k = 0; k < size / 2; ++k)
            density[(size_t) k] += (double) work[(size_t) k] * work[(size_t) k];
    }
    std::vector<double> out;
    for (double c : centres)
    {
        const int lo = (int) (c / std::sqrt (2.0) * size / rate), hi = (int) (c * std::sqrt (2.0) * size / rate);
        double s = 0.0;
        for (int k = lo; k <= hi; ++k)
            s += density[(size_t) k];
        out.push_back (s / (hi - lo + 1));
    }
    return out;
}

double slopePerOctave (const std::vector<double>& densities)
{
    // Least squares of dB over octave index.
    const int n = (int) densities.size();
    double sx = 0, sy = 0, sxx = 0, sxy = 0;
    for (int i = 0; i < n; ++i)
    {
        const double y = 10.0 * std::log10 (densities[(size_t) i]);
        sx += i;
        sy += y;
        sxx += (double) i * i;
        sxy += i * y;
    }
    return (n * sxy - sx * sy) / (n * sxx - sx * sx);
}
}

TEST (NoiseSource, ColoursHaveTheirSpectralSlopes)
{
    const std::vector<double> centres { 125, 250, 500, 1000, 2000, 4000 };
    struct Case { int colour; double slope, tolerance; };
    for (auto c : { Case { NoiseSource::white, 0.0, 0.4 }, Case { NoiseSource::pink, -3.0, 0.5 }, Case { NoiseSource::brown, -6.0, 0.6 } })
    {
        NoiseSource source;
        source.prepare (48000.0, 0xA1B2C3D4u);
        source.setColour (c.colour);
        EXPECT_NEAR (slopePerOctave (octaveDensities (source, centres, 48000.0)), c.slope, c.tolerance) << c.colour;
    }
}

TEST (NoiseSource, StaysInRangeAndTheTwoSeedsDiffer)
{
    NoiseSource a, b;
    a.prepare (48000.0, 0xA1B2C3D4u);
    b.prepare (48000.0, 0xD4C3B2A1u);
    EXPECT_NEAR (a.brownCoefficient, 100.53096f / 48000.0f, 1.0e-7f);
    for (int colour = 0; colour < 3; ++colour)
    {
        a.setColour (colour);
        b.setColour (colour);
        double mean = 0.0, correlation = 0.0;
        for (int i = 0; i < 100000; ++i)
        {
            const float x = a.next(), y = b.next();
            ASSERT_LE (std::abs (x), 1.0f);
            mean += x;
            correlation += (double) x * y;
        }
        EXPECT_NEAR (mean / 100000.0, 0.0, colour == NoiseSource::brown ? 0.2 : 0.02);
        if (colour == NoiseSource::white)
        {
            EXPECT_NEAR (correlation / 100000.0, 0.0, 0.01);
        }
    }
}

// The voice draws both sides at once, as lanes: each side must give the bits of its own source,
// through colour changes that leave the filters' state where it stood.
TEST (NoiseSource, ThePairGivesTheBitsOfTwoSources)
{
    NoiseSource a, b;
    a.prepare (44100.0, 0xA1B2C3D4u);
    b.prepare (44100.0, 0xD4C3B2A1u);
    NoisePair pair;
    pair.prepare (44100.0, 0xA1B2C3D4u, 0xD4C3B2A1u);
    for (int colour : { NoiseSource::pink, NoiseSource::brown, NoiseSource::white, NoiseSource::pink, NoiseSource::brown })
    {
        a.setColour (colour);
        b.setColour (colour);
        pair.setColour (colour);
        for (int i = 0; i < 20000; ++i)
        {
            const auto both = pair.next();
            const float x = a.next(), y = b.next();
            ASSERT_EQ (both.left, x) << "colour " << colour << ", draw " << i;
            ASSERT_EQ (both.right, y) << "colour " << colour << ", draw " << i;
        }
    }
}

TEST (Crossover, ThreeBandsSumToTheInputMagnitude)
{
    constexpr double rate = 96000.0;
    for (double f : { 30.0, 100.0, 200.0, 450.0, 1000.0, 2200.0, 5000.0, 15000.0 })
    {
        Crossover low, high;
        low.frequency = 200.0f;
        high.frequency = 2200.0f;
        low.prepare (rate);
        high.prepare (rate);
        const auto threeBands = [&] (float x)
        {
            float l, rest, m, h;
            low.process (x, l, rest);
            high.process (rest, m, h);
            return l + m + h;
        };
        EXPECT_NEAR (db (sineGain (threeBands, f, rate)), 0.0, 0.15) << f; // not phase-exact: within a tenth of a dB
    }

    // Each split is -6 dB per side at its frequency.
    Crossover x;
    x.frequency = 500.0f;
    x.prepare (rate);
    EXPECT_NEAR (db (sineGain ([&] (float v) { float l, h; x.process (v, l, h); return l; }, 500.0, rate)), -6.02, 0.05);
}

TEST (Crossover, RedesignsOnlyOnAMoveOfAHundredthOfAHertz)
{
    Crossover x;
    x.prepare (96000.0);
    const float a1 = x.a1;
    x.setFrequency (1000.005f);
    EXPECT_EQ (x.a1, a1);
    EXPECT_EQ (x.frequency, 1000.0f);
    x.setFrequency (1000.02f);
    EXPECT_NE (x.a1, a1);
    x.setFrequency (1.0e6f); // held to 0.45 of the rate
    EXPECT_FLOAT_EQ (x.frequency, 43200.0f);
}

TEST (MultibandDrive, OffOrAtMixZeroIsAPlainWireAndItsFiltersStandStill)
{
    MultibandDrive m;
    m.prepare (96000.0);
    m.bands[0].gain = 8.0f;
    m.enabled = true;
    m.mix = 1.0f;
    for (int i = 0; i < 100; ++i)
        m.process (std::sin (0.05f * (float) i));
    const float history = m.lowCrossover.sections[0].y1[0];

    for (auto [enabled, mix] : { std::pair { false, 1.0f }, std::pair { true, 0.0f } })
    {
        m.enabled = enabled;
        m.mix = mix;
        for (float x : { 0.3f, -0.7f, 1.5f })
            EXPECT_EQ (m.process (x), x);
        EXPECT_EQ (m.lowCrossover.sections[0].y1[0], history);
    }
}

// The voice runs the stage over runs of samples, each shaper over the run; in every mode, across
// a fade between modes and with the right side standing for the left, that must give the bits of
// the samples one at a time.
TEST (MultibandDrive, RunsGiveTheBitsOfTheSampleSteps)
{
    for (int mode : { DriveShaper::soft, DriveShaper::diode, DriveShaper::fold })
        for (bool rightAsLeft : { false, true })
        {
            MultibandDrive bySample, byRun;
            for (auto* m : { &bySample, &byRun })
            {
                m->prepare (96000.0);
                m->lowCrossover.setFrequency (180.0f);
                m->highCrossover.setFrequency (2500.0f);
                m->enabled = true;
                m->mix = 0.8f;
                for (auto* side : { &m->bands, &m->rightBands })
                    for (int b = 0; b < MultibandDrive::numBands; ++b)
                    {
                        (*side)[(size_t) b].setModeNow (mode);
                        (*side)[(size_t) b].gain = 1.5f + 3.0f * (float) b;
                    }
            }
            std::mt19937 rng (3);
            std::uniform_real_distribution<float> dist (-1.2f, 1.2f);
            std::vector<float> l (3000), r (3000);
            for (size_t i = 0; i < l.size(); ++i)
                l[i] = dist (rng), r[i] = rightAsLeft ? l[i] : dist (rng);
            auto wantL = l, wantR = r;
            // Runs of every length, none and longer than a run holds among them.
            for (int start = 0, n = 1; start < (int) l.size(); start += n, n = (n * 7 + 3) % (2 * MultibandDrive::maximumRun + 1))
            {
                n = std::min (n, (int) l.size() - start);
                if (start > 1500 && start < 1800) // a mode change: the bands fade
                    for (auto* m : { &bySample, &byRun })
                        for (auto* side : { &m->bands, &m->rightBands })
                            (*side)[MultibandDrive::mid].changeMode ((mode + 1) % DriveShaper::numModes);
                for (int k = start; k < start + n; ++k)
                    bySample.process (wantL[(size_t) k], wantR[(size_t) k], rightAsLeft);
                byRun.process (l.data() + start, r.data() + start, n, rightAsLeft);
            }
            EXPECT_EQ (l, wantL) << "mode " << mode << ", right as left " << rightAsLeft;
            EXPECT_EQ (r, wantR) << "mode " << mode << ", right as left " << rightAsLeft;
        }
}

TEST (MultibandDrive, DrivenBandsAddHarmonicsOnlyWhereDriven)
{
    constexpr double rate = 96000.0;
    MultibandDrive m;
    m.prepare (rate);
    m.lowCrossover.setFrequency (200.0f);
    m.highCrossover.setFrequency (2200.0f);
    m.enabled = true;
    m.mix = 1.0f;
    m.bands[MultibandDrive::low].gain = std::pow (10.0f, 24.0f / 20.0f);

    // A 1 kHz tone lives in the mid band, which is not driven: it passes at unity.
    EXPECT_NEAR (db (sineGain ([&] (float x) { return m.process (x); }, 1000.0, rate, 0.5)), 0.0, 0.1);
    // An 80 Hz tone is compressed by the driven low band.
    EXPECT_LT (db (sineGain ([&] (float x) { return m.process (x); }, 80.0, rate, 0.5)), -6.0);
}

TEST (PostEq, TiltPivotsAndTheNotchCutsEighteenDecibels)
{
    constexpr double rate = 48000.0;
    PostEq eq;
    eq.prepare (rate);
    eq.enabled = true;
    eq.setTilt (6.0f);
    auto gainAt = [&] (double f) { PostEq copy = eq; return db (sineGain ([&] (float x) { return copy.process (x); }, f, rate)); };
    EXPECT_NEAR (gainAt (20.0), -6.0, 0.3);
    EXPECT_NEAR (gainAt (std::sqrt (200.0 * 2500.0)), 0.0, 0.5);
    EXPECT_NEAR (gainAt (18000.0), 6.0, 0.3);

    eq.setTilt (0.0f);
    eq.setNotch (800.0f, 1.0f);
    EXPECT_NEAR (gainAt (800.0), -18.0, 0.1);
    eq.setNotch (800.0f, 0.5f);
    EXPECT_NEAR (gainAt (800.0), -9.0, 0.1);
    EXPECT_NEAR (gainAt (100.0), 0.0, 0.2);
}

TEST (PostEq, NeutralSectionsAreSkippedButKeepTheirHistory)
{
    PostEq eq;
    eq.prepare (48000.0);
    eq.enabled = true;
    eq.setTilt (6.0f);
    eq.setNotch (800.0f, 1.0f);
    for (int i = 0; i < 64; ++i)
        eq.process (std::sin (0.1f * (float) i));
    const float shelfState = eq.lowShelf.ic1eq[0];

    eq.setTilt (0.005f); // designed, but treated as flat
    eq.setNotch (800.0f, 0.0f);
    EXPECT_FLOAT_EQ (eq.tilt, 0.005f);
    for (float x : { 0.25f, -1.0f, 0.5f })
        EXPECT_EQ (eq.process (x), x);
    EXPECT_EQ (eq.lowShelf.ic1eq[0], shelfState);

    eq.enabled = false;
    eq.setTilt (12.0f);
    EXPECT_EQ (eq.process (0.3f), 0.3f);

    // The notch can be moved past its control's range, up to its limits.
    eq.setNotch (30000.0f, 1.0f);
    EXPECT_EQ (eq.notchHz, 12000.0f);
    eq.setNotch (1.0f, 1.0f);
    EXPECT_EQ (eq.notchHz, 50.0f);
}

TEST (PostEq, JumpsOfTheNotchAndTiltStayBounded)
{
    // Sources such as "s&h" move the notch in one step; the section must not ring up.
    std::mt19937 rng (1);
    std::uniform_real_distribution<float> u (0.0f, 1.0f);
    for (double rate : { 44100.0, 192000.0 })
    {
        PostEq eq;
        eq.prepare (rate);
        eq.enabled = true;
        float loudest = 0.0f;
        for (int i = 0; i < (int) rate * 5; ++i)
        {
            if (i % 64 == 0)
            {
                eq.setTilt (-12.0f + 24.0f * u (rng));
                eq.setNotch (50.0f * std::pow (240.0f, u (rng)), u (rng));
            }
            loudest = std::max (loudest, std::abs (eq.process (2.0f * u (rng) - 1.0f)));
        }
        EXPECT_LT (loudest, 12.0f) << rate; // four times the largest steady gain of a +12 dB shelf
    }
}
