#pragma once

// The float transcendentals of the audio path. sin, cos, tan and tanh are inline polynomials or
// ratios of them, accurate to a few parts in 10^7 (about -130 dB), below what a float signal path
// resolves anyway, and cheaper than the library's calls.
#include <algorithm>
#include <cmath>

namespace morvane::fast
{
namespace detail
{
    // Nearest integer without a branch: adding 1.5 * 2^23 leaves no fraction bits (|x| < 2^22).
    inline float nearest (float x) noexcept
    {
        constexpr float shifter = 12582912.0f;
        return (x + shifter) - shifter;
    }

    // sin(2 pi r) for r in [-0.25, 0.25]: the Taylor series to x^11, its last term nudged to take
    // up the x^13 remainder at pi/2; error below 3e-8 before rounding.
    // The polynomial in x^2 is evaluated in pairs (Estrin's scheme): half the dependent steps of
    // Horner's, and an oscillator's wave sits on every sample's way through the voice.
    // A float or a vector of them, each lane the float's bits.
    template <typename T>
    inline T sinQuarter (T r) noexcept
    {
        const T x = 6.2831855f * r;
        const T x2 = x * x;
        const T x4 = x2 * x2;
        const T low = -1.6666667e-1f + 8.3333333e-3f * x2;
        const T high = -1.9841270e-4f + 2.7557319e-6f * x2;
        const T p = low + x4 * (high + x4 * -2.4656e-8f);
        return x + (x * x2) * p;
    }
}

// sin and cos of a phase in turns (one turn = 2 pi), for phases within +-2^21 turns.
inline float sin2pi (float turns) noexcept
{
    const float r = turns - detail::nearest (turns); // [-0.5, 0.5]
    // sin is even about a quarter turn: fold |r| into [0, 0.25] and put the sign back.
    const float a = std::abs (r);
    return std::copysign (detail::sinQuarter (std::min (a, 0.5f - a)), r);
}

inline float cos2pi (float turns) noexcept
{
    const float r = turns - detail::nearest (turns);
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

// glibc's exp, exp2 and log are table-driven and already faster than a polynomial of the same
// accuracy (measured here: about 3.5 ns a call against 7); they stay behind these names so that
// every stage calls one place.
inline float exp2 (float x) noexcept { return std::exp2 (x); }
inline float exp (float x) noexcept { return std::exp (x); }
inline float log (float x) noexcept { return std::log (x); }

// 10^(dB / 20).
inline float dbToGain (float db) noexcept { return std::exp2 (db * 0.16609640f); }

inline float tanh (float x) noexcept
{
    // Odd in x: x times a function of x^2 gives the sign by itself, and x^2 tells where |x| lies
    // (x^2 > 56.25 exactly when |x| > 7.5, as rounded floats), so no step waits for |x|.
    const float x2 = x * x;
    // Far out, where a signal seldom goes, the closed form; it saturates to 1 by itself.
    if (x2 > 56.25f)
        return std::copysign (1.0f - 2.0f / (std::exp2 (std::min (std::abs (x), 10.0f) * 2.8853901f) + 1.0f), x);

    // Below that both forms are computed and one is picked, so that signals crossing 0.25 cost
    // no branch. Neither calls the library: a saturator in a feedback loop waits for its tanh.
    // Series to x^7: relative remainder under 1e-7 below 0.25, and exact near 0.
    const float series = x * (1.0f + x2 * (-0.33333333f + x2 * (0.13333333f + x2 * -0.053968254f)));
    // A rational minimax fit, x^13 over x^6 (error under 3e-8 before rounding up to 7.5),
    // evaluated in pairs for a short dependent path.
    const float x4 = x2 * x2, x8 = x4 * x4;
    const float p = ((4.89352455891786e-3f + 6.37261928875436e-4f * x2) + x4 * (1.48572235717979e-5f + 5.12229709037114e-8f * x2))
                    + x8 * ((-8.60467152213735e-11f + 2.00018790482477e-13f * x2) + x4 * -2.76076847742355e-16f);
    const float q = (4.89352518554385e-3f + 2.26843463243900e-3f * x2) + x4 * (1.18534705686654e-4f + 1.19825839466702e-6f * x2);
    const float rational = x * p / q;
    return x2 < 0.0625f ? series : rational;
}

// Four floats worked on side by side (GCC's and Clang's vector types: plain SSE on x86-64).
using Lanes = float __attribute__ ((vector_size (16)));

// v in every lane.
constexpr Lanes splat (float v) noexcept { return Lanes { v, v, v, v }; }

// A left and a right value in lanes 0 and 1, for the stages that run their two sides side by side.
constexpr Lanes sides (float left, float right) noexcept { return Lanes { left, right, 0.0f, 0.0f }; }

// Lane i of v in every lane.
template <int i>
inline Lanes broadcast (Lanes v) noexcept
{
    return Lanes { v[i], v[i], v[i], v[i] };
}

// Each lane of v held to at least (at most) the bound's, a NaN lane going to the bound: single
// instructions on x86-64, where the plain comparison and choice take four.
inline Lanes atLeast (Lanes v, Lanes bound) noexcept
{
#if defined(__SSE__)
    return __builtin_ia32_maxps (v, bound);
#else
    return v > bound ? v : bound;
#endif
}

inline Lanes atMost (Lanes v, Lanes bound) noexcept
{
#if defined(__SSE__)
    return __builtin_ia32_minps (v, bound);
#else
    return v < bound ? v : bound;
#endif
}

namespace detail
{
    // The vector tanh's constants as whole vectors, defined out of line: a constant the compiler
    // can see it rebuilds from one float on every use (a load and a shuffle), where one it cannot
    // see is a single memory operand.
    struct TanhLanes
    {
        Lanes limit, one, s1, s2, s3, p0, p1, p2, p3, p4, p5, p6, q0, q1, q2, q3, seriesEnd;
    };
    extern const TanhLanes tanhLanes;
}

// tanh of each lane: lane for lane the operations of the scalar tanh, so the same bits. A lane
// past 7.5, where a signal seldom goes, sends the whole vector through the scalar form.
inline Lanes tanh (Lanes x) noexcept
{
    const auto& k = detail::tanhLanes;
    const Lanes x2 = x * x;
    const auto far = x2 > k.limit;
    if ((far[0] | far[1] | far[2] | far[3]) != 0)
        return Lanes { tanh (x[0]), tanh (x[1]), tanh (x[2]), tanh (x[3]) };
    const Lanes series = x * (k.one + x2 * (k.s1 + x2 * (k.s2 + x2 * k.s3)));
    const Lanes x4 = x2 * x2, x8 = x4 * x4;
    const Lanes p = ((k.p0 + k.p1 * x2) + x4 * (k.p2 + k.p3 * x2)) + x8 * ((k.p4 + k.p5 * x2) + x4 * k.p6);
    const Lanes q = (k.q0 + k.q1 * x2) + x4 * (k.q2 + k.q3 * x2);
    const Lanes rational = x * p / q;
    return x2 < k.seriesEnd ? series : rational;
}
}
