#pragma once

#include <array>

namespace morvane
{
inline constexpr int numWaves = 10;
inline constexpr int pwmWave = 8;

// One sample of a phase-distortion wave. Stateless; safe on any thread. Waves beyond 9 give 0.
float waveShape (int wave, float phase, float dcw, float resonanceRatio);

// Gains that give every wave the loudness of the full-DCW saw. Built once, on first use.
const std::array<float, numWaves>& waveRmsGain();
}
