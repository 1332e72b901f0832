#include "engine/WaveShape.h"
#include "engine/FastMath.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
    constexpr float twoPi = 6.2831855f;
}

float waveShape (int wave, float phase, float dcw, float resonanceRatio)
{
    return WaveForm::make (wave, dcw, resonanceRatio).at (phase);
}

namespace
{
    // Kept out of line: inlined into the dispatch below, its loop is no longer vectorised.
    // While the DCW holds, the wave's constants are made once rather than in every lane.
    // Flattened: the edges' helpers must be inlined for the loop to run in vector lanes.
    template <int wave, bool withMorph, bool dcwHolds, bool edged = false>
    __attribute__ ((noinline, flatten)) void addRun (const WaveRun& run, float* out, int count) noexcept
    {
        constexpr int next = (wave + 1) % numWaves;
        constexpr bool waveEdged = edged && WaveForm::hasEdges (wave), nextEdged = edged && WaveForm::hasEdges (next);
        const float* const increment = run.increment;
        // Locals, so that no store to out can be taken to move them.
        const float* const phase = run.phase;
        const float* const dcw = run.dcw;
        const float* const morph = run.morph;
        const int* const keep = run.keep;
        const float gain = run.gain, nextGain = run.nextGain;
        const WaveForm held = WaveForm::make (wave, run.heldDcw, 16.0f);
        const WaveForm heldNext = WaveForm::make (next, run.heldDcw, 16.0f);
        const float heldA = held.a, heldB = held.b, heldMultiple = held.multiple;
        const float heldNextA = heldNext.a, heldNextB = heldNext.b, heldNextMultiple = heldNext.multiple;
        const WaveEdges heldEdges = waveEdged ? held.edges() : WaveEdges {};
        const WaveEdges heldNextEdges = nextEdged ? heldNext.edges() : WaveEdges {};
        for (int j = 0; j < count; ++j)
        {
            const float p = phase[j];
            const WaveForm f = dcwHolds ? WaveForm { wave, heldA, heldB, heldMultiple } : WaveForm::make (wave, dcw[j], 16.0f);
            float y = f.at (p);
            if constexpr (waveEdged)
                y += (dcwHolds ? heldEdges : f.edges()).at (p, increment[j]);
            y *= gain;
            // A morph towards the pulse needs its width: those steps are not deferred.
            if constexpr (withMorph && next != pwmWave)
            {
                const WaveForm n = dcwHolds ? WaveForm { next, heldNextA, heldNextB, heldNextMultiple }
                                            : WaveForm::make (next, dcw[j], 16.0f);
                float v = n.at (p);
                if constexpr (nextEdged)
                    v += (dcwHolds ? heldNextEdges : n.edges()).at (p, increment[j]);
                y += (v * nextGain - y) * morph[j];
            }
            out[j] = keep[j] != 0 ? out[j] + y : out[j];
        }
    }

    template <int wave>
    void addRunOf (const WaveRun& run, float* out, int count) noexcept
    {
        // Only the oscillators band-limit the edges (the subs do not), and only waves 6, 7 and 9,
        // and the morph from 5 and 6, have any.
        constexpr bool edges = WaveForm::hasEdges (wave) || WaveForm::hasEdges ((wave + 1) % numWaves);
        if constexpr (edges)
            if (run.increment != nullptr)
            {
                if (run.withMorph)
                    run.dcwHolds ? addRun<wave, true, true, true> (run, out, count) : addRun<wave, true, false, true> (run, out, count);
                else
                    run.dcwHolds ? addRun<wave, false, true, true> (run, out, count) : addRun<wave, false, false, true> (run, out, count);
                return;
            }
        if (run.withMorph)
            run.dcwHolds ? addRun<wave, true, true> (run, out, count) : addRun<wave, true, false> (run, out, count);
        else
            run.dcwHolds ? addRun<wave, false, true> (run, out, count) : addRun<wave, false, false> (run, out, count);
    }
}

void addSineRun (const float* phase, const int* keep, float* out, int count) noexcept
{
    for (int j = 0; j < count; ++j)
    {
        // Worked out for every lane before the choice, or the loop keeps a branch.
        const float y = fast::sin2pi (phase[j]);
        out[j] = keep[j] != 0 ? out[j] + y : out[j];
    }
}

void addWaveRun (const WaveRun& run, float* out, int count) noexcept
{
    switch (run.wave)
    {
        case 0: addRunOf<0> (run, out, count); break;
        case 1: addRunOf<1> (run, out, count); break;
        case 2: addRunOf<2> (run, out, count); break;
        case 3: addRunOf<3> (run, out, count); break;
        case 4: addRunOf<4> (run, out, count); break;
        case 5: addRunOf<5> (run, out, count); break;
        case 6: addRunOf<6> (run, out, count); break;
        case 7: addRunOf<7> (run, out, count); break;
        case 8: addRunOf<8> (run, out, count); break;
        case 9: addRunOf<9> (run, out, count); break;
        default: break;
    }
}

namespace
{
    constexpr int rmsPoints = 4096;
    constexpr float rmsStep = 0.00024414063f;

    template <typename Fn>
    double rootMeanSquare (Fn&& sample)
    {
        double sum = 0.0;
        for (int i = 0; i < rmsPoints; ++i)
        {
            const double v = sample ((float) i * rmsStep);
            sum += v * v;
        }
        return std::sqrt (sum / rmsPoints);
    }

    std::array<float, numWaves> buildRmsGains()
    {
        const double ref = rootMeanSquare ([] (float p)
        {
            return std::cos ((std::min ((1.0f - p) * 0.4949495f, p * 49.000004f) + p) * twoPi);
        });

        std::array<float, numWaves> gains {};
        for (int w = 0; w < numWaves; ++w)
        {
            const double rms = rootMeanSquare ([w] (float p) { return waveShape (w, p, 1.0f, 16.0f); });
            gains[(size_t) w] = rms > 1.0e-6 ? (float) (ref / rms) : 1.0f;
        }
        return gains;
    }
}

const std::array<float, numWaves>& waveRmsGain()
{
    // A function-local static is initialised once, and concurrent first callers wait for it.
    static const std::array<float, numWaves> gains = buildRmsGains();
    return gains;
}
}
