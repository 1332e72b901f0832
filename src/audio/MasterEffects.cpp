#include "audio/PluginProcessor.h"

#include <algorithm>

namespace morvane
{
namespace
{
    enum Fx
    {
        delayEnable, delayPingPong, delayTimeMs, delayFeedback, delayTone, delayMix,
        reverbEnable, reverbPredelayMs, reverbBandwidth, reverbDecay, reverbDamping, reverbMix,
        crushEnable, crushBits, crushRateHz, crushJitter, crushDither, crushMix,
        modFxEnable, modFxMode, modFxRate, modFxDepth, modFxFeedback, modFxMix
    };
}

void MorvaneAudioProcessor::updateFxParameters() noexcept
{
    auto value = [this] (Fx f) { return fxValues[(size_t) f] != nullptr ? fxValues[(size_t) f]->load (std::memory_order_relaxed) : 0.0f; };
    auto within = [&] (Fx f, float lo, float hi) { return std::clamp (value (f), lo, hi); };

    delay.enabled = value (delayEnable) > 0.5f;
    delay.pingPong = value (delayPingPong) > 0.5f;
    delay.setDelayTimeMs (value (delayTimeMs));
    delay.feedback = within (delayFeedback, 0.0f, 0.95f);
    delay.toneHz = within (delayTone, 200.0f, 20000.0f);
    delay.updateCoefficients();
    delay.mix = within (delayMix, 0.0f, 1.0f);

    reverb.enabled = value (reverbEnable) > 0.5f;
    reverb.setPredelayMs (value (reverbPredelayMs));
    reverb.setBandwidth (value (reverbBandwidth));
    reverb.setDecay (value (reverbDecay));
    reverb.setDamping (value (reverbDamping));
    reverb.mix = within (reverbMix, 0.0f, 1.0f);

    crusher.enabled = value (crushEnable) > 0.5f;
    crusher.bits = within (crushBits, 4.0f, 16.0f);
    crusher.rateHz = within (crushRateHz, 100.0f, 96000.0f);
    crusher.jitter = within (crushJitter, 0.0f, 1.0f);
    crusher.dither = value (crushDither) > 0.5f;
    crusher.mix = within (crushMix, 0.0f, 1.0f);

    for (auto* unit : { &modFxLeft, &modFxRight })
    {
        unit->enabled = value (modFxEnable) > 0.5f;
        unit->mode = std::clamp ((int) value (modFxMode), 0, 2);
        unit->rateHz = within (modFxRate, 0.05f, 8.0f);
        unit->depth = within (modFxDepth, 0.0f, 1.0f);
        unit->feedback = within (modFxFeedback, 0.0f, 0.95f);
        unit->mix = within (modFxMix, 0.0f, 1.0f);
    }
}

void MorvaneAudioProcessor::processFxBlock (juce::AudioBuffer<float>& buffer) noexcept
{
    const int channels = buffer.getNumChannels();
    const int numSamples = buffer.getNumSamples();
    if (channels < 1 || numSamples < 1)
        return;

    // A bypassed effect passes its input and stands still, so with all of them bypassed the
    // block is left as it is.
    if (! (modFxLeft.active() || modFxRight.active() || delay.active() || reverb.active() || crusher.active()))
    {
        modFxLeft.process (0.0f);
        modFxRight.process (0.0f);
        return;
    }

    // The voice may have left the buffer flagged clear; the effects write into it regardless.
    buffer.setNotClear();
    float* left = buffer.getWritePointer (0);

    // Each effect runs over a whole stretch before the next: the same samples in the same order
    // as running the chain a sample at a time. A mono output runs its right side on a copy.
    constexpr int stretch = 256;
    float monoRight[stretch];
    for (int start = 0; start < numSamples; start += stretch)
    {
        const int n = std::min (stretch, numSamples - start);
        float* l = left + start;
        float* r = monoRight;
        if (channels > 1)
            r = buffer.getWritePointer (1) + start;
        else
            std::copy (l, l + n, monoRight);
        ModFx::processPair (modFxLeft, modFxRight, l, r, n);
        delay.process (l, r, n);
        reverb.process (l, r, n);
        crusher.process (l, r, n);
    }
}
}
