#pragma once

// Inline replacements for the C library's float transcendentals on the audio path. Each is
// accurate to a few parts in 10^7 (about -130 dB), below what a float signal path resolves
// anyway, and costs a handful of multiplies instead of a library call.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace morvane::fast
{
namespace detail
{
    inline float roundToInt (float x, int& n) noexcept
    {
        n = (int) (x >= 0.0f ? x + 0.5f : x - 0.5f);
        return (float) n;
    }

    // sin(2 pi r) for r in [-0.25, 0.25]: the Taylor series to x^11, its last term nudged to take
    // up the x^13 remainder at pi/2; error below 3e-8 before rounding.
    inline float sinQuarter (float r) noexcept
    {
        const float x = 6.2831855f * r;
        const float x2 = x * x;
        float p = -2.4656e-8f;
        p = p * x2 + 2.7557319e-6f;
        p = p * x2 - 1.9841270e-4f;
        p = p * x2 + 8.3333333e-3f;
        p = p * x2 - 1.6666667e-1f;
        return x + x * x2 * p;
    }
}

// sin and cos of a phase in turns (one turn = 2 pi), for phases within +-2^30 turns.
inline float sin2pi (float turns) noexcept
{
    int n;
    float r = turns - detail::roundToInt (turns, n); // [-0.5, 0.5]
    if (r > 0.25f)
        r = 0.5f - r;
    else if (r < -0.25f)
        r = -0.5f - r;
    return detail::sinQuarter (r);
}

inline float cos2pi (float turns) noexcept
{
    int n;
    const float r = turns - detail::roundToInt (turns, n);
    return detail::sinQuarter (0.25f - std::abs (r));
}

inline float sin (float radians) noexcept { return sin2pi (radians * 0.15915494f); }
inline float cos (float radians) noexcept { return cos2pi (radians * 0.15915494f); }

// For coefficient design below a quarter turn, where the cosine stays well away from 0.
inline float tan (float radians) noexcept
{
    const float t = radians * 0.15915494f;
    return sin2pi (t) / cos2pi (t);
}

// 2^x, saturating to the normal float range.
inline float exp2 (float x) noexcept
{
    if (! (x > -126.0f)) // also catches NaN
        return x != x ? x : 0.0f;
    if (x > 127.0f)
        return std::numeric_limits<float>::infinity();
    int n;
    const float y = (x - detail::roundToInt (x, n)) * 0.69314718f; // |y| <= ln2 / 2
    // e^y to y^7: remainder below 6e-9.
    float p = 1.9841270e-4f;
    p = p * y + 1.3888889e-3f;
    p = p * y + 8.3333333e-3f;
    p = p * y + 4.1666667e-2f;
    p = p * y + 1.6666667e-1f;
    p = p * y + 0.5f;
    p = p * y + 1.0f;
    p = p * y + 1.0f;
    const std::uint32_t bits = (std::uint32_t) (n + 127) << 23;
    float scale;
    std::memcpy (&scale, &bits, sizeof (scale));
    return p * scale;
}

inline float exp (float x) noexcept { return exp2 (x * 1.4426950f); }

// 10^(dB / 20).
inline float dbToGain (float db) noexcept { return exp2 (db * 0.16609640f); }

// Natural log of a positive normal float; anything else goes to the library.
inline float log (float x) noexcept
{
    if (! (x >= std::numeric_limits<float>::min() && x <= std::numeric_limits<float>::max()))
        return std::log (x);
    std::uint32_t bits;
    std::memcpy (&bits, &x, sizeof (bits));
    int e = (int) (bits >> 23) - 127;
    bits = (bits & 0x007FFFFFu) | 0x3F800000u; // mantissa in [1, 2)
    float m;
    std::memcpy (&m, &bits, sizeof (m));
    if (m > 1.4142135f)
    {
        m *= 0.5f;
        ++e;
    }
    // log m = 2 atanh s; |s| <= 0.172, so the series to s^9 leaves under 4e-10.
    const float s = (m - 1.0f) / (m + 1.0f);
    const float s2 = s * s;
    float p = 0.11111111f;
    p = p * s2 + 0.14285714f;
    p = p * s2 + 0.2f;
    p = p * s2 + 0.33333333f;
    p = p * s2 + 1.0f;
    return (float) e * 0.69314718f + 2.0f * s * p;
}

inline float tanh (float x) noexcept
{
    const float a = std::abs (x);
    float t;
    if (a < 0.25f)
    {
        // Series to a^7: relative remainder under 1e-7 here, and exact near 0.
        const float a2 = a * a;
        t = a * (1.0f + a2 * (-0.33333333f + a2 * (0.13333333f + a2 * -0.053968254f)));
    }
    else if (a < 9.0f)
    {
        t = 1.0f - 2.0f / (exp2 (a * 2.8853901f) + 1.0f);
    }
    else
    {
        t = x != x ? x : 1.0f;
    }
    return x < 0.0f ? -t : t;
}
}
