#include "engine/WaveShape.h"
#include "engine/FastMath.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
    constexpr float twoPi = 6.2831855f;

    // Slopes of the bent phase that runs 0..1 and passes 0.5 at p = k.
    inline void knee (float k, float& after, float& before)
    {
        after = (0.5f - k) / (1.0f - k);
        before = (0.5f - k) / k;
    }

    inline float resonanceMultiple (float d, float resonanceRatio)
    {
        return std::max ((resonanceRatio - 1.0f) * d + 1.0f, 1.0f);
    }
}

WaveForm WaveForm::make (int wave, float dcw, float resonanceRatio) noexcept
{
    const float d = std::clamp (dcw, 0.0f, 1.0f);
    WaveForm f;
    f.wave = wave;
    switch (wave)
    {
        case 0: knee (std::clamp (0.5f - 0.5f * d, 0.01f, 0.5f), f.a, f.b); break;
        case 1:
        {
            const float s = std::clamp (std::sqrt (std::sqrt (d)), 0.0f, 0.999f);
            f.a = s / (1.0f - s);
            break;
        }
        case 2:
        {
            const float s = std::clamp (d, 0.0f, 0.99f);
            f.a = s / (1.0f - s);
            break;
        }
        case 3: knee (std::clamp (0.5f - 0.49f * d, 0.01f, 0.5f), f.a, f.b); break;
        case 4: f.b = 0.5f / std::clamp (0.5f - 0.5f * d, 0.01f, 0.5f); break;
        case 5: case 6: case 7: case 9: f.multiple = resonanceMultiple (d, resonanceRatio); break;
        default: break;
    }
    return f;
}

float waveShape (int wave, float phase, float dcw, float resonanceRatio)
{
    return WaveForm::make (wave, dcw, resonanceRatio).at (phase);
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
