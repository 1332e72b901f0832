#include "TestHelpers.h"

#include "audio/BitCrusher.h"
#include "audio/ModFx.h"
#include "audio/PlateReverb.h"
#include "audio/StereoDelay.h"

#include <numeric>
#include <random>
#include <tuple>

using namespace morvane;
using namespace morvane::test;

namespace
{
constexpr double rate = 48000.0;

template <typename Stage>
Stage wet()
{
    Stage s;
    s.prepare (rate);
    s.enabled = true;
    s.mix = 1.0f;
    return s;
}

StereoDelay makeDelay (float ms, float feedback, bool pingPong)
{
    auto d = wet<StereoDelay>();
    d.setDelayTimeMs (ms);
    d.prepare (rate); // takes the target at once
    d.feedback = feedback;
    d.pingPong = pingPong;
    return d;
}

// Two channels of uniform noise within +-peak, the same for every run of a seed.
std::pair<std::vector<float>, std::vector<float>> noiseBlock (size_t length, unsigned seed, float peak)
{
    std::mt19937 rng (seed);
    std::uniform_real_distribution<float> dist (-peak, peak);
    std::vector<float> l (length), r (length);
    for (size_t i = 0; i < length; ++i)
        l[i] = dist (rng), r[i] = dist (rng);
    return { l, r };
}

// Runs an impulse on the left side through a pair process and returns both outputs.
template <typename Stage>
std::pair<std::vector<float>, std::vector<float>> impulseResponse (Stage& stage, int length, float leftGain = 1.0f, float rightGain = 0.0f)
{
    std::vector<float> l ((size_t) length), r ((size_t) length);
    for (int i = 0; i < length; ++i)
    {
        float a = i == 0 ? leftGain : 0.0f, b = i == 0 ? rightGain : 0.0f;
        stage.process (a, b);
        l[(size_t) i] = a;
        r[(size_t) i] = b;
    }
    return { l, r };
}

int firstAbove (const std::vector<float>& x, float threshold, int from = 0)
{
    for (int i = from; i < (int) x.size(); ++i)
        if (std::abs (x[(size_t) i]) > threshold)
            return i;
    return -1;
}
}

TEST (MasterEffects, EveryStageIsTransparentAndStandsStillWhenOffOrAtMixZero)
{
    std::mt19937 rng (3);
    std::uniform_real_distribution<float> dist (-1.0f, 1.0f);

    StereoDelay delay = makeDelay (100.0f, 0.5f, false);
    auto reverb = wet<PlateReverb>();
    auto crusher = wet<BitCrusher>();
    crusher.jitter = 1.0f;
    crusher.dither = true;
    auto fx = wet<ModFx>();

    for (int i = 0; i < 2000; ++i) // leave some state to stand still
    {
        float l = dist (rng), r = dist (rng);
        delay.process (l, r);
        reverb.process (l, r);
        crusher.process (l, r);
        fx.process (l);
    }

    const auto state = [&]
    {
        return std::tuple (delay.writeIndex, delay.currentLeft, reverb.predelayWrite, reverb.lfoPhase, crusher.clockPhase,
                           crusher.randomState, fx.lfoPhase);
    };
    for (bool off : { true, false })
    {
        delay.enabled = reverb.enabled = crusher.enabled = fx.enabled = ! off;
        delay.mix = reverb.mix = crusher.mix = fx.mix = off ? 0.5f : 0.0f;
        const auto before = state();
        for (int i = 0; i < 500; ++i)
        {
            const float a = dist (rng), b = dist (rng);
            for (int stage = 0; stage < 4; ++stage)
            {
                float l = a, r = b;
                switch (stage)
                {
                    case 0: delay.process (l, r); break;
                    case 1: reverb.process (l, r); break;
                    case 2: crusher.process (l, r); break;
                    default: l = fx.process (l); break;
                }
                ASSERT_EQ (l, a);
                ASSERT_EQ (r, b);
            }
        }
        EXPECT_EQ (state(), before) << (off ? "off" : "mix 0");
    }
}

TEST (StereoDelay, EchoesAtItsTimeAndPingPongCrossesFirst)
{
    auto plain = makeDelay (250.0f, 0.0f, false);
    auto [l, r] = impulseResponse (plain, 30000);
    EXPECT_EQ (firstAbove (l, 0.5f), 12000);
    EXPECT_EQ (firstAbove (r, 1.0e-6f), -1);

    auto crossing = makeDelay (250.0f, 0.5f, true);
    auto [pl, pr] = impulseResponse (crossing, 30000);
    EXPECT_EQ (firstAbove (pr, 0.5f), 12000); // a left input comes back first on the right
    EXPECT_EQ (firstAbove (pl, 1.0e-3f), 24000);
    EXPECT_EQ (pl[12000], 0.0f);

    // The line holds 1.5 s plus room at every rate.
    for (double r2 : { 44100.0, 48000.0, 96000.0, 192000.0 })
    {
        StereoDelay d;
        d.prepare (r2);
        d.setDelayTimeMs (1500.0f);
        EXPECT_FLOAT_EQ (d.targetLeft, (float) (r2 * 1.5));
        EXPECT_GE ((int) d.lineLeft.size(), (int) std::ceil (r2 * 1.5) + 4);
    }
}

TEST (StereoDelay, FeedbackIsBoundedAndTheLoopThinsTheLows)
{
    auto d = makeDelay (20.0f, 0.95f, false);
    std::mt19937 rng (5);
    std::uniform_real_distribution<float> dist (-1.0f, 1.0f);
    float peakOut = 0.0f;
    for (int i = 0; i < 48000 * 10; ++i)
    {
        float l = dist (rng), r = dist (rng);
        d.process (l, r);
        peakOut = std::max ({ peakOut, std::abs (l), std::abs (r) });
    }
    EXPECT_LE (peakOut, 1.95f + 1.0e-4f);

    // A 50 Hz burst: the first echo keeps its level, later repeats lose it to the 120 Hz high-pass.
    auto lows = makeDelay (500.0f, 0.95f, false);
    lows.toneHz = 20000.0f;
    lows.updateCoefficients();
    std::vector<float> out;
    for (int i = 0; i < 48000 * 2; ++i)
    {
        float l = i < 4800 ? std::sin (2.0f * 3.1415927f * 50.0f * (float) i / 48000.0f) : 0.0f, r = 0.0f;
        lows.process (l, r);
        out.push_back (l);
    }
    const double first = rms (out.data() + 24000, 4800), second = rms (out.data() + 48000, 4800);
    EXPECT_NEAR (first, std::sqrt (0.5), 0.02);
    EXPECT_LT (second, 0.5 * first);
}

TEST (BitCrusher, StepSizesClampAndDeterminism)
{
    for (auto [bits, q] : { std::pair { 4.0f, 0.125f }, std::pair { 16.0f, 1.0f / 32768.0f } })
    {
        auto c = wet<BitCrusher>();
        c.bits = bits;
        c.rateHz = 96000.0f; // at or above the rate: a pure quantiser
        std::mt19937 rng (9);
        std::uniform_real_distribution<float> dist (-1.0f, 1.0f);
        for (int i = 0; i < 2000; ++i)
        {
            const float x = dist (rng);
            float l = x, r = -x;
            c.process (l, r);
            ASSERT_NEAR (l / q, std::round (l / q), 1.0e-3) << bits;
            ASSERT_LE (std::abs (l - x), 0.5f * q + 1.0e-6f);
        }
        EXPECT_EQ (c.randomState, 0xC0FFEEu); // no jitter and no dither draw nothing

        float big = 1.7f, low = -3.0f;
        c.process (big, low);
        EXPECT_EQ (big, 1.0f);
        EXPECT_EQ (low, -1.0f);
    }

    // Held at a quarter of the rate: every value stands for four samples.
    auto hold = wet<BitCrusher>();
    hold.bits = 16.0f;
    hold.rateHz = 12000.0f;
    std::vector<float> held;
    for (int i = 0; i < 64; ++i)
    {
        float l = (float) i / 64.0f, r = 0.0f;
        hold.process (l, r);
        held.push_back (l);
    }
    for (int i = 4; i < 64; ++i)
    {
        if (i % 4 == 3) // the clock reaches 1 on every fourth sample
            EXPECT_NE (held[(size_t) i], held[(size_t) i - 1]) << i;
        else
            EXPECT_EQ (held[(size_t) i], held[(size_t) i - 1]) << i;
    }
}

TEST (BitCrusher, DitheredSilenceFlipsBetweenZeroAndOneStep)
{
    auto c = wet<BitCrusher>();
    c.bits = 8.0f;
    c.dither = true;
    c.rateHz = 96000.0f;
    const float q = 1.0f / 128.0f;
    int nonZero = 0;
    for (int i = 0; i < 10000; ++i)
    {
        float l = 0.0f, r = 0.0f;
        c.process (l, r);
        ASSERT_TRUE (l == 0.0f || std::abs (std::abs (l) - q) < 1.0e-7f) << l;
        nonZero += l != 0.0f;
    }
    EXPECT_GT (nonZero, 100);
    EXPECT_LT (nonZero, 9900);
}

TEST (PlateReverb, PredelayShiftsTheTailAndDecayDies)
{
    auto onset = [] (float predelayMs)
    {
        auto v = wet<PlateReverb>();
        v.setPredelayMs (predelayMs);
        auto [l, r] = impulseResponse (v, 24000, 1.0f, 1.0f);
        return firstAbove (l, 1.0e-9f);
    };
    const int direct = onset (0.0f);
    EXPECT_GT (direct, 0);
    EXPECT_EQ (onset (50.0f) - direct, 2400);

    // 200 ms fits at every rate.
    for (double r2 : { 22050.0, 44100.0, 192000.0 })
    {
        PlateReverb v;
        v.prepare (r2);
        v.setPredelayMs (200.0f);
        EXPECT_EQ (v.predelaySamples, (int) (r2 * 0.2));
    }

    auto v = wet<PlateReverb>();
    v.setDecay (0.95f);
    v.setDamping (0.0f);
    EXPECT_FLOAT_EQ (v.tanks[0].allpass2.coefficient, 0.5f);
    auto [l, r] = impulseResponse (v, 48000 * 30, 1.0f, 1.0f);
    const double early = rms (l.data() + 24000, 24000);
    const double late = rms (l.data() + 48000 * 28, 24000);
    EXPECT_GT (early, 1.0e-3);
    EXPECT_LT (late, 0.1 * early);
    EXPECT_GT (rms (r.data() + 24000, 24000), 1.0e-3);
}

TEST (PlateReverb, CoefficientLimits)
{
    PlateReverb v;
    v.prepare (rate);
    v.setDamping (1.0f);
    EXPECT_FLOAT_EQ (v.dampingCoefficient, 0.05f);
    v.setDamping (0.0f);
    EXPECT_FLOAT_EQ (v.dampingCoefficient, 1.0f);
    v.setBandwidth (0.0f);
    EXPECT_FLOAT_EQ (v.bandwidthCoefficient, 0.005f);
    v.setDecay (0.0f);
    EXPECT_FLOAT_EQ (v.tanks[1].allpass2.coefficient, 0.25f);
    v.setDecay (2.0f);
    EXPECT_FLOAT_EQ (v.decay, 0.95f);
    EXPECT_EQ (v.tanks[0].delay1.delay, (int) std::lround (4453.0f * 48000.0f / 29761.0f));
}

TEST (ModFx, ChorusCeilingFlangerBoundAndPhaserNotch)
{
    auto chorus = wet<ModFx>();
    chorus.depth = 1.0f;
    chorus.rateHz = 3.0f;
    float top = 0.0f;
    for (int i = 0; i < 48000; ++i)
        top = std::max (top, std::abs (chorus.process (10.0f * std::sin (0.01f * (float) i))));
    EXPECT_LE (top, 0.85f + 1.0e-5f); // the mix adds only rounding
    EXPECT_GT (top, 0.8f);

    ModFx flanger = chorus;
    flanger.prepare (rate);
    flanger.mode = ModFx::flanger;
    flanger.feedback = 0.95f;
    std::mt19937 rng (2);
    std::uniform_real_distribution<float> dist (-1.0f, 1.0f);
    top = 0.0f;
    for (int i = 0; i < 48000 * 5; ++i)
        top = std::max (top, std::abs (flanger.process (dist (rng))));
    EXPECT_LE (top, 2.0f); // input plus a tanh

    // Phaser at depth 0: a fixed notch where the four all-passes turn the phase by half a cycle.
    auto phaserGain = [] (double f)
    {
        auto p = wet<ModFx>();
        p.mode = ModFx::phaser;
        p.depth = 0.0f;
        p.feedback = 0.0f;
        return sineGain ([&] (float x) { return p.process (x); }, f, rate, 1.0, 0.5);
    };
    EXPECT_NEAR (phaserGain (20.0), 2.0, 0.02);
    // Four first-order stages around 867 Hz: notches where they turn half a cycle and one and a half.
    double deepest = 10.0, where = 0.0;
    for (double f = 200.0; f < 600.0; f *= 1.005)
        if (const double g = phaserGain (f); g < deepest)
        {
            deepest = g;
            where = f;
        }
    EXPECT_LT (deepest, 0.05);
    EXPECT_NEAR (where, 320.0, 30.0);
    EXPECT_GT (phaserGain (867.0), 0.5);
}

TEST (ModFx, TheMasterPairRunsAQuarterCycleApart)
{
    // A phaser sweeping at 1 Hz over a steady tone: the right side's gain leads the left's by 250 ms.
    auto p = makePatched ({ { "osc1DcwDepth", 0.0f }, { "modFxEnable", 1.0f }, { "modFxMode", 2.0f }, { "modFxRate", 1.0f },
                            { "modFxDepth", 1.0f }, { "modFxMix", 1.0f }, { "monoLowEnabled", 0.0f } });
    const auto out = renderNote (*p, 79, 48000 * 4); // about 784 Hz
    auto centredEnvelope = [&] (int ch)
    {
        std::vector<double> e;
        for (int w = 0; w + 480 <= out.getNumSamples(); w += 480)
            e.push_back (rms (out.getReadPointer (ch) + w, 480));
        const double mean = std::accumulate (e.begin(), e.end(), 0.0) / (double) e.size();
        for (double& v : e)
            v -= mean;
        return e;
    };
    const auto left = centredEnvelope (0), right = centredEnvelope (1);
    int bestLag = 0;
    double best = -1.0;
    for (int lag = 0; lag < 100; ++lag) // in 10 ms windows
    {
        double c = 0.0;
        for (size_t i = 100; i + 100 < right.size(); ++i)
            c += left[i + (size_t) lag] * right[i];
        if (c > best)
        {
            best = c;
            bestLag = lag;
        }
    }
    EXPECT_NEAR (bestLag, 25, 2);
}

TEST (MasterEffects, AMonoBufferRunsTheRightSideThroughTheCrossingStages)
{
    // Ping-pong on one channel: the copy of the sample that stood for "right" comes back on the left.
    auto mono = makePrepared (rate, 512, true);
    setParameters (*mono, { { "delayEnable", 1.0f }, { "delayPingPong", 1.0f }, { "delayTimeMs", 100.0f },
                            { "delayMix", 1.0f }, { "delayFeedback", 0.0f }, { "ampRelease", 0.001f } });
    renderProcessor (*mono, 48000, 512, {}); // the delay time settles from 0
    const auto out = renderProcessor (*mono, 9600, 512, { { 0, 45, 1.0f }, { 960, 45, 0.0f } });
    ASSERT_EQ (out.getNumChannels(), 1);
    EXPECT_LT (rms (out.getReadPointer (0) + 2400, 1200), 1.0e-4); // between the note and its echo
    EXPECT_GT (rms (out.getReadPointer (0) + 4800 + 200, 600), 0.05); // the echo, through the crossed line
}

// The phaser's corners glide between exact values a span apart: its output stays within -80 dB
// of the same chain with every corner worked out on every sample, at the fastest, deepest sweep.
TEST (ModFx, PhaserCornersGlideCloseToTheExactSweep)
{
    const auto makePhaser = [] (int span)
    {
        auto fx = wet<ModFx>();
        fx.mode = ModFx::phaser;
        fx.rateHz = 8.0f;
        fx.depth = 1.0f;
        fx.feedback = 0.7f;
        fx.cornerSpan = span;
        return fx;
    };
    auto gliding = makePhaser (8), exact = makePhaser (1);
    std::mt19937 random (3);
    std::uniform_real_distribution<float> noise (-0.5f, 0.5f);
    double error = 0.0, energy = 0.0;
    for (int n = 0; n < 24000; ++n)
    {
        const float x = noise (random);
        const double want = exact.process (x), got = gliding.process (x);
        error += (got - want) * (got - want);
        energy += want * want;
    }
    EXPECT_LT (10.0 * std::log10 (error / energy), -80.0);
}

// The processor runs each effect over a stretch of samples before the next: in every mode, with
// stretches of odd lengths, that gives every bit of running the chain a sample at a time.
TEST (MasterEffects, RunningStretchesGivesTheSamplesOfTheSampleChain)
{
    struct Chain
    {
        ModFx left, right;
        StereoDelay delay = makeDelay (7.0f, 0.6f, true);
        PlateReverb reverb;
        BitCrusher crusher;

        Chain (int mode, float feedback)
        {
            for (auto* fx : { &left, &right })
            {
                fx->prepare (rate);
                fx->enabled = true;
                fx->mode = mode;
                fx->feedback = feedback;
                fx->rateHz = 5.0f;
            }
            right.lfoOffset = 1.5707964f;
            delay.mix = 0.4f;
            reverb.prepare (rate);
            reverb.enabled = true;
            crusher.prepare (rate);
            crusher.enabled = true;
            crusher.rateHz = 17000.0f;
            crusher.jitter = 0.5f;
            crusher.dither = true;
        }
    };

    // The phaser without feedback (its open loop) takes a way of its own.
    for (const auto& [mode, feedback] : { std::pair { ModFx::chorus, 0.5f }, { ModFx::flanger, 0.5f },
                                         { ModFx::phaser, 0.5f }, { ModFx::phaser, 0.0f } })
    {
        Chain bySample (mode, feedback), byStretch (mode, feedback);
        auto [l, r] = noiseBlock (6000, 11, 0.8f);
        auto wantL = l, wantR = r;
        for (size_t i = 0; i < l.size(); ++i)
        {
            ModFx::processPair (bySample.left, bySample.right, wantL[i], wantR[i]);
            bySample.delay.process (wantL[i], wantR[i]);
            bySample.reverb.process (wantL[i], wantR[i]);
            bySample.crusher.process (wantL[i], wantR[i]);
        }
        for (int start = 0, n = 1; start < (int) l.size(); start += n, n = n * 3 % 1009 + 1)
        {
            n = std::min (n, (int) l.size() - start);
            ModFx::processPair (byStretch.left, byStretch.right, l.data() + start, r.data() + start, n);
            byStretch.delay.process (l.data() + start, r.data() + start, n);
            byStretch.reverb.process (l.data() + start, r.data() + start, n);
            byStretch.crusher.process (l.data() + start, r.data() + start, n);
        }
        EXPECT_EQ (l, wantL) << "mode " << mode << ", feedback " << feedback;
        EXPECT_EQ (r, wantR) << "mode " << mode << ", feedback " << feedback;
    }
}

// The delay runs its reads and its writes in two passes over runs no longer than its time: at
// times down to a sample, while the time sweeps, a block must give the bits of its samples.
TEST (StereoDelay, RunsShorterThanTheTimeGiveTheBitsOfTheSampleStep)
{
    for (const double r2 : { 1000.0, 8000.0, 48000.0 })
        for (const auto& [fromMs, toMs] : { std::pair { 1.0f, 1.0f }, { 1.0f, 9.0f }, { 300.0f, 2.0f } })
        {
            const auto make = [&]
            {
                StereoDelay d;
                d.setDelayTimeMs (fromMs);
                d.prepare (r2);
                d.enabled = true;
                d.mix = 0.7f;
                d.feedback = 0.9f;
                d.pingPong = true;
                d.setDelayTimeMs (toMs);
                return d;
            };
            auto bySample = make(), byBlock = make();
            auto [l, r] = noiseBlock (3000, 9, 1.0f);
            auto wantL = l, wantR = r;
            for (size_t i = 0; i < l.size(); ++i)
                bySample.process (wantL[i], wantR[i]);
            for (int start = 0, n = 1; start < (int) l.size(); start += n, n = n * 5 % 211 + 1)
            {
                n = std::min (n, (int) l.size() - start);
                byBlock.process (l.data() + start, r.data() + start, n);
            }
            EXPECT_EQ (l, wantL) << r2 << " Hz, " << fromMs << " to " << toMs << " ms";
            EXPECT_EQ (r, wantR) << r2 << " Hz, " << fromMs << " to " << toMs << " ms";
        }
}

// The reverb runs its stages over runs of samples; at every rate and predelay, and over stretches
// of uneven lengths, that must give the bits of its one-sample step. At 134918 Hz the first tank's
// modulated all-pass fills its ring but for less than the modulation's depth.
TEST (PlateReverb, RunsOfSamplesGiveTheBitsOfTheSampleStep)
{
    for (double r2 : { 1000.0, 8000.0, 22050.0, 48000.0, 134918.0, 192000.0 })
        for (float predelayMs : { 0.0f, 0.4f, 200.0f })
        {
            auto make = [&]
            {
                PlateReverb v;
                v.prepare (r2);
                v.enabled = true;
                v.mix = 0.7f;
                v.setDecay (0.9f);
                v.setPredelayMs (predelayMs);
                return v;
            };
            auto bySample = make(), byRun = make();
            std::mt19937 rng (5);
            std::uniform_real_distribution<float> dist (-1.0f, 1.0f);
            const int length = (int) (r2 * 0.5) + 3000;
            std::vector<float> l ((size_t) length), r ((size_t) length);
            for (size_t i = 0; i < l.size(); ++i)
                l[i] = dist (rng), r[i] = i % 3 == 0 ? dist (rng) : 0.0f;
            auto wantL = l, wantR = r;
            for (size_t i = 0; i < l.size(); ++i)
                bySample.process (wantL[i], wantR[i]);
            for (int start = 0, n = 1; start < length; start += n, n = n * 7 % 613 + 1)
            {
                n = std::min (n, length - start);
                byRun.process (l.data() + start, r.data() + start, n);
            }
            EXPECT_EQ (l, wantL) << r2 << " Hz, predelay " << predelayMs;
            EXPECT_EQ (r, wantR) << r2 << " Hz, predelay " << predelayMs;
        }
}
