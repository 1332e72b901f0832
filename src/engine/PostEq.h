#pragma once

#include "engine/MultibandDrive.h"

namespace morvane
{
struct Biquad
{
    double sampleRate = 44100.0;
    float b0 = 1.0f, b1 = 0.0f, b2 = 0.0f, a1 = 0.0f, a2 = 0.0f;
    BiquadHistory history;

    float process (float x) noexcept { return history.run (x, b0, b1, b2, a1, a2); }
    void setNormalised (double nb0, double nb1, double nb2, double na0, double na1, double na2) noexcept;
};

// Host-rate tilt (two shelves around a pivot) and a peaking notch. One per side.
struct PostEq
{
    bool enabled = false;
    float tilt = 0.0f;
    float notchHz = 800.0f;
    float notchDepth = 0.0f;
    Biquad lowShelf, highShelf, notch;

    void prepare (double hostRate) noexcept;
    // Each redesigns only when its value moves past its threshold.
    void setTilt (float dB) noexcept;
    void setNotch (float hz, float depth) noexcept;

    float process (float x) noexcept;

private:
    void designShelves() noexcept;
    void designNotch() noexcept;
};
}
