#pragma once

#include "engine/CubicTable.h"
#include "engine/FastMath.h"

#include <cmath>
#include <limits>

namespace morvane
{
// One waveshaper of the drive stages: "soft", "diode" or "fold", with antiderivative memory
// and an equal-power crossfade when the mode changes.
struct DriveShaper
{
    enum Mode { soft, diode, fold, numModes };

    int mode = soft;
    int previousMode = soft;
    float gain = 1.0f;
    float lastInput = 0.0f;
    int fadeLength = 1;
    int fadeCounter = 0;

    void prepare (double oversampledRate) noexcept;
    void setModeNow (int newMode) noexcept;
    void changeMode (int newMode) noexcept;
    void clearState() noexcept;

    // Inline, so that the voice's step runs the curve without a call; the rare fade runs out of line.
    float process (float x) noexcept
    {
        if (fadeCounter > 0)
            return processFading (x);
        const float y = shape (mode, x, lastInput, gain, memos);
        lastInput = x;
        return y;
    }

    // The curve alone: p is the previous input, g the linear drive gain.
    static float shape (int mode, float x, float p, float g) noexcept;

    // An antiderivative's value at one point. Each sample's far end is the previous sample's near
    // end, so while the gain holds, half of the transcendental work is a lookup.
    struct Memo
    {
        float at = std::numeric_limits<float>::quiet_NaN();
        float value = 0.0f;
    };

    // The auto makeup of a mode for d dB of drive, as a linear gain.
    static float autoMakeup (int mode, float driveDb) noexcept;

private:
    struct Memos
    {
        Memo soft, fold, diodeScale;
    };
    Memos memos;

    float processFading (float x) noexcept;

    static float shape (int mode, float x, float p, float g, Memos& memos) noexcept;
};

// The curves, inline for the voice's step. Their tables are filled once, in DriveShaper.cpp.
namespace driveCurves
{
    // log cosh t = |t| - log 2 + log (1 + e^(-2|t|)). The last term is smooth and falls below a
    // float's resolution of the whole past |t| = 9, so it is tabulated there (error about 1e-8).
    extern const CubicTable<1024> logCoshTail;

    // Two Newton steps on a back-to-back diode pair (Vt 0.026, asymmetry 0.7), from the input.
    // Their result depends on t = g x / 2 alone, so it is tabulated (error about 1e-8). Past
    // |t| = 0.5 both steps move by the same Vt-sized amount, so the curve is a straight line there
    // (within 1e-9), offset from t by these.
    extern const CubicTable<1024> diodeCurve;
    extern const float diodeOffsetAbove, diodeOffsetBelow;

    inline float logCosh (float t) noexcept
    {
        const float a = std::abs (t);
        return a - 0.693147181f + (a < 9.0f ? logCoshTail (a) : 0.0f);
    }

    template <typename Fn>
    inline float recall (DriveShaper::Memo& memo, float t, Fn&& f) noexcept
    {
        if (t != memo.at)
            memo = { t, f (t) };
        return memo.value;
    }

    inline float softShape (float x, float p, float g, DriveShaper::Memo& memo) noexcept
    {
        const float u = g * x, w = g * p;
        if (std::abs (u - w) < 0.001f)
            return fast::tanh (u) / g;
        const float far = recall (memo, w, logCosh);
        return (recall (memo, u, logCosh) - far) / (g * (u - w));
    }

    inline float diodeCurveAt (float t) noexcept
    {
        if (t >= 0.5f)
            return t + diodeOffsetAbove;
        if (t <= -0.5f)
            return t + diodeOffsetBelow;
        return diodeCurve (t);
    }

    // The output scale depends on the gain alone: its division is made when the gain moves.
    inline float diodeShape (float x, float g, DriveShaper::Memo& scale) noexcept
    {
        return recall (scale, g, [] (float gain) { return 1.8f / std::max (gain, 1.0f); }) * diodeCurveAt (0.5f * g * x);
    }

    inline float foldShape (float x, float p, float g, DriveShaper::Memo& memo) noexcept
    {
        const float a = (g - 1.0f) * 6.0f + 1.0f;
        const float u = a * x, w = a * p;
        if (std::abs (u - w) < 0.0001f)
            return fast::sin (u) * 0.7f;
        const auto cosine = [] (float t) { return fast::cos (t); };
        const float far = recall (memo, w, cosine);
        return (far - recall (memo, u, cosine)) / (u - w) * 0.7f;
    }
}

// At 0 dB every mode is a wire; only the memory of the input moves.
__attribute__ ((always_inline)) inline float DriveShaper::shape (int m, float x, float p, float g, Memos& memos) noexcept
{
    if (g <= 1.000001f)
        return x;
    switch (m)
    {
        case diode: return driveCurves::diodeShape (x, g, memos.diodeScale);
        case fold:  return driveCurves::foldShape (x, p, g, memos.fold);
        default:    return driveCurves::softShape (x, p, g, memos.soft);
    }
}
}
