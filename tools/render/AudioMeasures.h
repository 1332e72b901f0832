#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

namespace morvane::render
{
struct AudioMeasures
{
    float peakDb = -200.0f;
    float rmsDb = -200.0f;
    float centroidHz = 0.0f;
    float loudnessLufs = -200.0f; // integrated, K-weighted, gated
};

// Peak and RMS over all channels, power-weighted spectral centroid of the mono sum, and integrated loudness in the
// manner of ITU-R BS.1770 (K-weighting, 400 ms blocks, absolute and relative gates).
AudioMeasures measureAudio (const juce::AudioBuffer<float>& audio, double rate);
}
