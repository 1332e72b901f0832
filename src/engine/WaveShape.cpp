#include "engine/WaveShape.h"
#include "engine/FastMath.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
    constexpr float twoPi = 6.2831855f;
    constexpr float pi = 3.1415927f;
    constexpr float fourPi = 12.566371f;

    inline float frac (float x) { return x - std::floor (x); }

    // Bent phase that runs 0..1 and passes 0.5 at p = k.
    inline float knee (float p, float k)
    {
        const float a = (0.5f - k) / (1.0f - k);
        const float b = (0.5f - k) / k;
        return p + std::min (a * (1.0f - p), b * p);
    }

    inline float resonanceMultiple (float d, float resonanceRatio)
    {
        return std::max ((resonanceRatio - 1.0f) * d + 1.0f, 1.0f);
    }
}

float waveShape (int wave, float phase, float dcw, float resonanceRatio)
{
    const float p = phase;
    const float d = std::clamp (dcw, 0.0f, 1.0f);

    switch (wave)
    {
        case 0:
        {
            const float k = std::clamp (0.5f - 0.5f * d, 0.01f, 0.5f);
            return fast::cos2pi (knee (p, k));
        }
        case 1:
        {
            const float s = std::clamp (std::sqrt (std::sqrt (d)), 0.0f, 0.999f);
            const float u = frac (2.0f * p + 1.0f);
            const float q = u - std::min (s / (1.0f - s) * (1.0f - u), u) + (p >= 0.5f ? 1.0f : 0.0f);
            return fast::cos2pi (0.5f * q);
        }
        case 2:
        {
            const float s = std::clamp (d, 0.0f, 0.99f);
            const float q = p - std::min (s / (1.0f - s) * (1.0f - p), p);
            return fast::cos2pi (q);
        }
        case 3:
        {
            const float k = std::clamp (0.5f - 0.49f * d, 0.01f, 0.5f);
            return fast::cos2pi (2.0f * knee (p, k));
        }
        case 4:
        {
            const float k = std::clamp (0.5f - 0.5f * d, 0.01f, 0.5f);
            const float q = p < 0.5f ? p : std::min ((p - 0.5f) * 0.5f / k + 0.5f, 1.0f);
            return fast::cos2pi (q);
        }
        case 5:
        {
            const float u = frac (resonanceMultiple (d, resonanceRatio) * p);
            return 1.0f - (0.5f - 0.5f * fast::cos2pi (u)) * 2.0f * (1.0f - p);
        }
        case 6:
        {
            const float u = frac (resonanceMultiple (d, resonanceRatio) * p);
            const float w = p < 0.5f ? 2.0f * p : 2.0f - 2.0f * p;
            return 2.0f * w * (0.5f * fast::cos2pi (u) + 0.5f) - 1.0f;
        }
        case 7:
        {
            const float u = frac (resonanceMultiple (d, resonanceRatio) * p);
            return fast::sin2pi (u) * std::min (2.0f * (1.0f - p), 1.0f);
        }
        case 8:
            return p < 0.5f ? 1.0f : -1.0f;
        case 9:
        {
            const float u = frac (resonanceMultiple (d, resonanceRatio) * p);
            const float w = p < 0.5f ? 1.0f - 2.0f * p : 2.0f * (p - 0.5f);
            return fast::cos2pi (u) * w;
        }
        default:
            return 0.0f;
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
