#include "TestHelpers.h"
#include "engine/PdOscillator.h"
#include "engine/SubOscillator.h"
#include "engine/WaveShape.h"

#include <juce_dsp/juce_dsp.h>

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

using namespace morvane;

namespace
{
constexpr double overRate = 96000.0;

PdOscillator makeOscillator (int wave, float frequency, float dcwDepth = 1.0f)
{
    PdOscillator osc;
    osc.prepare (overRate);
    osc.setWave (wave);
    osc.frequency = frequency;
    osc.dcwDepth = dcwDepth;
    osc.dcwEnvelope.setParameters ({ 0.0f, 0.0f, 1.0f, 0.1f }); // straight to full sustain
    osc.dcwEnvelope.noteOn();
    return osc;
}

std::vector<float> run (PdOscillator& osc, int n)
{
    std::vector<float> out ((size_t) n);
    for (auto& s : out)
        s = osc.process();
    return out;
}

double mean (const std::vector<float>& x, size_t from = 0)
{
    double s = 0.0;
    for (size_t i = from; i < x.size(); ++i)
        s += x[i];
    return s / (double) (x.size() - from);
}

// Energy of the signal that is not at a multiple of f: aliases of a periodic wave land between
// the harmonics. Measured by removing the harmonics' projection over whole periods.
double inharmonicShare (const std::vector<float>& x, double f, double rate)
{
    const int period = (int) std::lround (rate / f);
    const int n = (int) x.size() / period * period;
    double total = 0.0, harmonic = 0.0;
    for (int i = 0; i < n; ++i)
        total += (double) x[(size_t) i] * x[(size_t) i];
    for (int h = 0; h * f < rate / 2; ++h)
    {
        double re = 0.0, im = 0.0;
        for (int i = 0; i < n; ++i)
        {
            const double a = 6.283185307179586 * h * f * i / rate;
            re += x[(size_t) i] * std::cos (a);
            im += x[(size_t) i] * std::sin (a);
        }
        harmonic += (h == 0 ? 1.0 : 2.0) * (re * re + im * im) / n;
    }
    return std::max (0.0, total - harmonic) / total;
}
}

TEST (Blep, PolynomialShapeAndEdges)
{
    EXPECT_EQ (blep (0.3f, 0.0f), 0.0f);
    EXPECT_EQ (blep (0.3f, -0.1f), 0.0f);
    EXPECT_FLOAT_EQ (blep (0.0f, 0.1f), -1.0f);
    EXPECT_NEAR (blep (0.0999f, 0.1f), 0.0f, 2.0e-6f);
    EXPECT_NEAR (blep (0.9001f, 0.1f), 0.0f, 2.0e-6f);
    EXPECT_NEAR (blep (0.99999f, 0.1f), 1.0f, 1.0e-3f);
    EXPECT_EQ (blep (0.5f, 0.1f), 0.0f);
}

TEST (PdOscillator, DcwLimitTurnsHighNotesToCosines)
{
    // An increment of 1/60 or more leaves no DCW at any depth (at 1/60 itself, up to single-precision
    // rounding of 1 - 60 / 60); halfway to that limit half the depth is left; low notes keep the
    // envelope's value times the depth.
    struct Row { float frequency, depth, dcw, tolerance; };
    for (auto r : { Row { (float) (overRate / 60.0), 1.0f, 0.0f, 1.0e-6f }, Row { (float) (overRate / 50.0), 1.0f, 0.0f, 0.0f },
                    Row { (float) (overRate / 120.0), 1.0f, 0.5f, 1.0e-4f }, Row { 55.0f, 0.7f, 0.7f, 1.0e-6f } })
    {
        auto osc = makeOscillator (0, r.frequency, r.depth);
        osc.process();
        EXPECT_NEAR (osc.dcwValue, r.dcw, r.tolerance) << r.frequency << " Hz";
    }
}

TEST (PdOscillator, PwmOffsetFollowsTheWidth)
{
    for (float width : { 0.5f, 0.25f, 0.8f })
    {
        auto osc = makeOscillator (pwmWave, 100.0f);
        osc.pulseWidth = width;
        const auto y = run (osc, 96000);
        // The naive rectangle's mean is 2w - 1, and the stated offset 1 - 2w is subtracted from it.
        EXPECT_NEAR (mean (y), (2.0 * width - 1.0 - (1.0 - 2.0 * width)) * osc.rmsGain, 2.0e-3) << width;
    }
}

TEST (PdOscillator, PwmIgnoresDcwAndMorph)
{
    auto a = makeOscillator (pwmWave, 220.0f, 0.0f);
    auto b = makeOscillator (pwmWave, 220.0f, 1.0f);
    b.morph = 1.0f;
    for (int i = 0; i < 2000; ++i)
        ASSERT_EQ (a.process(), b.process()) << i;
}

// The polynomial spans a step of 2, so each edge of the pulse takes it once; measured against the
// naive rectangle that takes out nearly all of the aliased energy at 3 kHz / 96 kHz.
TEST (PdOscillator, BlepRemovesMostAliasingOfThePulse)
{
    const float f = 3001.0f;
    auto bandLimited = makeOscillator (pwmWave, f);
    bandLimited.pulseWidth = 0.3f;
    const auto y = run (bandLimited, 48000);

    // The same rectangle with the same offset, naive.
    std::vector<float> naive (y.size());
    float phase = 0.0f;
    for (auto& s : naive)
    {
        s = ((0.3f > phase ? 1.0f : -1.0f) - 0.4f) * bandLimited.rmsGain;
        phase += f / (float) overRate;
        phase -= std::floor (phase);
    }

    const double withBlep = inharmonicShare (y, f, overRate);
    const double without = inharmonicShare (naive, f, overRate);
    EXPECT_LT (withBlep, without * 0.1) << withBlep << " vs " << without;
}

TEST (PdOscillator, PhaseStaysInRangeAtAnyIncrement)
{
    for (float f : { 10.0f, 20000.0f, 95999.0f, 96000.0f, 250000.0f, 1.0e6f })
    {
        auto osc = makeOscillator (0, f);
        for (int i = 0; i < 1000; ++i)
        {
            const float y = osc.process();
            ASSERT_TRUE (std::isfinite (y));
            ASSERT_GE (osc.phase, 0.0f);
            ASSERT_LT (osc.phase, 1.0f) << "f " << f << " step " << i;
        }
    }
}

TEST (PdOscillator, WrapReportsWhereInTheStepItHappened)
{
    auto osc = makeOscillator (0, (float) (overRate * 0.3));
    osc.process(); // 0.3
    osc.process(); // 0.6
    osc.process(); // 0.9
    EXPECT_FALSE (osc.wrapped);
    osc.process(); // 1.2: wrapped a third of the way into the step
    EXPECT_TRUE (osc.wrapped);
    EXPECT_NEAR (osc.wrapFraction, 1.0f / 3.0f, 1.0e-4f);
    EXPECT_NEAR (osc.phase, 0.2f, 1.0e-5f);
}

TEST (PdOscillator, HardSyncFollowsTheMastersPeriodAndSmoothsItsEdgeOverTwoSteps)
{
    // Osc "slave" runs at 310 Hz but is reset by a master at 100 Hz.
    auto master = makeOscillator (0, 100.0f, 0.0f);
    auto slave = makeOscillator (0, 310.0f, 0.0f);
    slave.syncEnabled = true;
    slave.syncSource = &master;

    std::vector<float> y;
    int resets = 0;
    bool justReset = false;
    for (int i = 0; i < 96000; ++i)
    {
        master.process();
        y.push_back (slave.process());
        if (master.wrapped)
        {
            ++resets;
            // Reset to where the master's wrap fell in the step, plus this step's advance.
            const float expected = (1.0f - std::clamp (master.wrapFraction, 0.0f, 1.0f)) * slave.increment + slave.increment;
            ASSERT_NEAR (slave.phase, expected - std::floor (expected), 1.0e-4f) << i;
            // The sync step leaves the opposite half of the correction for the next step.
            EXPECT_NE (slave.pendingStep, 0.0f) << i;
        }
        else if (justReset)
        {
            EXPECT_EQ (slave.pendingStep, 0.0f) << i;
        }
        justReset = master.wrapped;
    }
    EXPECT_NEAR (resets, 100, 1);

    // The output repeats with the master's period.
    const int period = 960;
    double diff = 0.0;
    for (int i = 10 * period; i < 90 * period; ++i)
        diff = std::max (diff, (double) std::abs (y[(size_t) i] - y[(size_t) i + period]));
    EXPECT_LT (diff, 0.05);
}

TEST (PdOscillator, SyncWithoutAWrapLeavesTheOscillatorUntouched)
{
    auto master = makeOscillator (0, 1.0f, 0.0f); // never wraps in this test
    auto synced = makeOscillator (0, 440.0f, 0.5f);
    auto free = makeOscillator (0, 440.0f, 0.5f);
    synced.syncEnabled = true;
    synced.syncSource = &master;
    for (int i = 0; i < 5000; ++i)
    {
        master.process();
        ASSERT_EQ (synced.process(), free.process());
    }
}

TEST (PdOscillator, OutputIsTheWaveTimesItsGainAndMorphTakesTheNextWave)
{
    for (auto [wave, morph, depth] : { std::tuple { 5, 0.0f, 0.0f }, { 0, 1.0f, 0.6f }, { 7, 1.0f, 0.6f }, { 9, 1.0f, 0.6f } })
    {
        auto osc = makeOscillator (wave, 100.0f, depth);
        osc.morph = morph;
        osc.process(); // settle dcwValue
        const float p = osc.phase;
        const float y = osc.process();
        const int shown = morph > 0.0f ? (wave + 1) % numWaves : wave;
        const float expected = shown == pwmWave ? (osc.pulseWidth > p ? 1.0f : -1.0f) * waveRmsGain()[8]
                                                : waveShape (shown, p, osc.dcwValue, 16.0f) * waveRmsGain()[(size_t) shown];
        EXPECT_NEAR (y, expected, morph > 0.0f ? 1.0e-5f : 1.0e-6f) << "wave " << wave;
    }
}

TEST (PdOscillator, PhaseResetCrossfadesWithoutAJump)
{
    auto osc = makeOscillator (0, 200.0f, 0.0f);
    run (osc, 123);
    const float last = osc.process();
    osc.resetPhase (0.5f);
    EXPECT_EQ (osc.fadeCounter, osc.fadeLength);
    const float first = osc.process();
    // The first faded sample is the old phase's continuation, not the new phase's value of -1.
    EXPECT_NEAR (first, last, 0.05f);
    run (osc, osc.fadeLength);
    EXPECT_EQ (osc.fadeCounter, 0);
    EXPECT_EQ (osc.fadeLength, (int) (overRate * 0.005 + 0.5));
}

// A silent oscillator skips its shaping but not its clock: phase, wraps and envelope go on as if
// heard, so that sync and a later fade-in find it where it should be. A copied step stands in for
// a computed one exactly.
TEST (PdOscillator, SilentAndCopiedStepsKeepTheClock)
{
    for (int wave : { 0, 5, pwmWave })
    {
        auto heard = makeOscillator (wave, 1234.5f, 0.6f);
        auto silent = heard, copied = heard;
        for (int i = 0; i < 5000; ++i)
        {
            const float y = heard.process();
            EXPECT_EQ (silent.process (false), 0.0f);
            copied.copyStepFrom (heard);
            ASSERT_EQ (silent.phase, heard.phase) << wave << " " << i;
            ASSERT_EQ (silent.wrapped, heard.wrapped);
            ASSERT_EQ (silent.dcwValue, heard.dcwValue);
            ASSERT_TRUE (copied.inStepWith (heard));
            ASSERT_TRUE (std::isfinite (y));
        }
        auto synced = heard;
        synced.syncEnabled = true;
        EXPECT_FALSE (synced.inStepWith (heard));
        synced.syncEnabled = false;
        synced.frequency *= 1.001f;
        EXPECT_FALSE (synced.inStepWith (heard));
    }
}

// The voice leaves the wave of most steps to one vectorised pass over a group of steps. Every
// wave, with and without morph, a moving DCW, sync edges and a phase reset mid-run must give the
// very bits of the one-step path, at group lengths that do not divide the run.
TEST (PdOscillator, DeferredWavesGiveTheBitsOfSingleSteps)
{
    struct Case { int wave; float morph; bool sync; };
    const Case cases[] = { { 0, 0.0f, false }, { 1, 0.4f, false }, { 2, 0.0f, true }, { 3, 0.7f, false },
                           { 4, 0.0f, false }, { 5, 0.3f, true }, { 6, 0.0f, false }, { 7, 0.5f, false },
                           { 8, 0.0f, true }, { 9, 1.0f, false } };
    for (const auto& c : cases)
    {
        SCOPED_TRACE (c.wave);
        // A DCW envelope that keeps moving, so some groups hold their DCW and others do not.
        auto setUp = [&c] (PdOscillator& master, PdOscillator& slave)
        {
            for (auto* o : { &master, &slave })
            {
                *o = makeOscillator (c.wave, o == &master ? 310.0f : 470.0f, 0.9f);
                o->dcwEnvelope.setParameters ({ 0.002f, 0.01f, 0.5f, 0.1f });
                o->dcwEnvelope.noteOn();
                o->morph = c.morph;
            }
            slave.syncEnabled = c.sync;
            slave.syncSource = &master;
        };
        PdOscillator directMaster, directSlave, groupMaster, groupSlave;
        setUp (directMaster, directSlave);
        setUp (groupMaster, groupSlave);

        const int lengths[] = { 7, 32, 13, 1, 32, 25 };
        int steps = 0;
        for (int round = 0; round < 40; ++round)
        {
            const int count = lengths[round % 6];
            PdOscillator::Run masterRun, slaveRun;
            float expectedMaster[PdOscillator::Run::capacity], expectedSlave[PdOscillator::Run::capacity];
            float master[PdOscillator::Run::capacity], slave[PdOscillator::Run::capacity];
            for (int j = 0; j < count; ++j, ++steps)
            {
                if (steps == 600)
                {
                    directSlave.resetPhase (0.25f);
                    groupSlave.resetPhase (0.25f);
                }
                expectedMaster[j] = directMaster.process();
                expectedSlave[j] = directSlave.process();
                master[j] = groupMaster.processDeferring (true, masterRun, j);
                slave[j] = groupSlave.processDeferring (true, slaveRun, j);
            }
            groupMaster.completeRun (masterRun, master, count);
            groupSlave.completeRun (slaveRun, slave, count);
            for (int j = 0; j < count; ++j)
            {
                ASSERT_EQ (master[j], expectedMaster[j]) << "step " << steps - count + j;
                ASSERT_EQ (slave[j], expectedSlave[j]) << "step " << steps - count + j;
            }
        }
    }
}

TEST (SubOscillator, DeferredWavesGiveTheBitsOfSingleSteps)
{
    for (const auto& [pd, wave] : { std::pair { false, 0 }, std::pair { true, 3 }, std::pair { true, 8 } })
    {
        SCOPED_TRACE (wave);
        SubOscillator direct, grouped;
        for (auto* s : { &direct, &grouped })
        {
            s->prepare (overRate);
            s->setShape (pd, wave);
            s->dcw = 0.6f;
            s->setFrequency (55.0f);
        }
        for (int round = 0; round < 30; ++round)
        {
            const int count = round % 2 == 0 ? 32 : 11;
            PdOscillator::Run run;
            float expected[PdOscillator::Run::capacity], values[PdOscillator::Run::capacity];
            for (int j = 0; j < count; ++j)
            {
                if (round == 10 && j == 3)
                {
                    direct.resetPhase();
                    grouped.resetPhase();
                }
                expected[j] = direct.process();
                values[j] = grouped.processDeferring (true, run, j);
            }
            grouped.completeRun (run, values, count);
            for (int j = 0; j < count; ++j)
                ASSERT_EQ (values[j], expected[j]) << "round " << round << " step " << j;
        }
    }

    // A wave index from outside the table reads as its nearest end.
    SubOscillator past, last;
    past.setShape (true, 99);
    last.setShape (true, numWaves - 1);
    EXPECT_EQ (past.wave, last.wave);
}

namespace
{
// Energy between the harmonics against the energy on them, in dB, of oscillator 1 alone through
// the whole instrument at 48 kHz: full DCW envelope, filter open, the note held 1.5 s. The last
// 2^15 samples under a four-term Blackman-Harris window (side lobes at -92 dB); a harmonic is its
// bin and six on each side, the main lobe's four with room for the wave's own spread.
double aliasingDb (int wave, int note, float dcw)
{
    constexpr double rate = 48000.0;
    constexpr int order = 15, size = 1 << order, length = 72000;
    auto p = test::makePatched ({ { "osc1Wave", (float) wave }, { "osc1DcwDepth", dcw }, { "osc1DcwAttack", 0.001f },
                                  { "osc1DcwSustain", 1.0f }, { "filterCutoff", 20000.0f } });
    const auto audio = test::renderNote (*p, note, length);
    std::vector<float> bins (2 * size, 0.0f);
    const float* x = audio.getReadPointer (0) + length - size;
    for (int i = 0; i < size; ++i)
    {
        const double a = 6.283185307179586 * i / size;
        const double w = 0.35875 - 0.48829 * std::cos (a) + 0.14128 * std::cos (2 * a) - 0.01168 * std::cos (3 * a);
        bins[(size_t) i] = (float) (x[i] * w);
    }
    juce::dsp::FFT (order).performFrequencyOnlyForwardTransform (bins.data());
    const double f0 = 440.0 * std::pow (2.0, (note - 69) / 12.0), binHz = rate / size;
    double on = 0.0, between = 0.0;
    for (int b = 7; b <= size / 2; ++b)
    {
        const double harmonic = std::round (b * binHz / f0);
        const double power = (double) bins[(size_t) b] * bins[(size_t) b];
        (harmonic >= 1.0 && std::abs (b - harmonic * f0 / binHz) <= 6.0 ? on : between) += power;
    }
    return 10.0 * std::log10 (between / on);
}
}

// The aliasing of every wave at full and half DCW, on the notes where the windowed waves were
// worst. Their edges and corners are smoothed as the pulse's are, which takes waves 6 and 7 past
// 60 dB. What is left above that, in the respulse and the pulse, is the harmonic just above
// 24 kHz (every C has one, at 24.07 kHz) that the decimator's transition band folds to 23.93 kHz;
// the table holds those two to what they reach now.
TEST (PdOscillator, EveryWaveKeepsItsAliasingDown)
{
    struct Row { int wave; double limitDb; };
    for (auto r : { Row { 0, -60.0 }, Row { 1, -60.0 }, Row { 2, -60.0 }, Row { 3, -60.0 }, Row { 4, -60.0 },
                    Row { 5, -60.0 }, Row { 6, -60.0 }, Row { 7, -60.0 }, Row { 8, -49.0 }, Row { 9, -52.0 } })
        for (int note : { 72, 84, 96 })
            for (float dcw : { 1.0f, 0.5f })
                EXPECT_LT (aliasingDb (r.wave, note, dcw), r.limitDb) << "wave " << r.wave << ", note " << note << ", DCW " << dcw;
}
