#pragma once

#include <juce_core/juce_core.h>

#include <algorithm>
#include <cmath>

namespace morvane
{
// First-order DC blocker (high-pass): y = (x - x1 + y1) * R.
struct DcBlocker
{
    float R = 0.0f, x1 = 0.0f, y1 = 0.0f;

    void prepare (float cutoffHz, double rate) noexcept
    {
        x1 = y1 = 0.0f;
        setCutoff (cutoffHz, rate);
    }

    void setCutoff (float cutoffHz, double rate) noexcept
    {
        const float r = (float) (rate > 0.0 ? rate : 44100.0);
        R = std::exp (-6.2831855f * std::clamp (cutoffHz, 0.0f, 0.45f * r) / r);
    }

    // The input meets one multiply and one add; the rest is known from the sample before.
    float process (float x) noexcept
    {
        const float y = R * x + R * (y1 - x1);
        x1 = x;
        y1 = y;
        return y;
    }
};

// Shared random walk that pulls the two oscillator pairs apart.
struct OscillatorDrift
{
    float value = 0.0f, target = 0.0f, coefficient = 1.0f;
    int counter = 0, interval = 1;
    juce::Random random { 0x5A0D1234 };

    void prepare (double hostRate) noexcept
    {
        random.setSeed (0x5A0D1234);
        value = target = 0.0f;
        counter = 0;
        interval = std::max ((int) (hostRate * 0.22 + 0.5), 1);
        coefficient = hostRate > 0.0 ? (float) (1.0 - std::exp (-1.0 / (hostRate * 0.035))) : 1.0f;
    }

    // 2^e and 2^-e for |e| up to 0.05: the series to the fourth power, within a float's rounding.
    struct Ratio
    {
        float up = 1.0f, down = 1.0f;
    };

    // Ratio for this host sample; the walk stands still, drawing nothing, while the amount is 0.
    Ratio ratio (float amount) noexcept
    {
        if (std::clamp (amount, 0.0f, 1.0f) <= 0.0f)
            return {};
        if (counter < 1)
        {
            counter = interval;
            target = 2.0f * random.nextFloat() - 1.0f;
        }
        --counter;
        value += (target - value) * coefficient;
        // Up to 60 cents, in natural-log units.
        const float y = std::min (amount, 1.0f) * value * (60.0f * 0.00083333335f * 0.69314718f);
        const float y2 = y * y;
        const float even = 1.0f + y2 * (0.5f + y2 * 0.041666668f);
        const float odd = y * (1.0f + y2 * 0.16666667f);
        return { even + odd, even - odd };
    }
};
}
