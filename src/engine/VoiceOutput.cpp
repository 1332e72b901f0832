#include "engine/VoiceEngine.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
void VoiceEngine::applyModFxControls (const OutputControls& controls) noexcept
{
    for (auto& unit : modFx)
    {
        unit.enabled = controls.fxEnabled;
        unit.mode = controls.fxMode;
        unit.rateHz = controls.fxRate;
        unit.depth = controls.fxDepth;
        unit.feedback = controls.fxFeedback;
        unit.mix = controls.fxMix;
    }
}

void VoiceEngine::applyEqControls (const OutputControls& controls) noexcept
{
    postEq.enabled = controls.eqEnabled;
    // A disabled EQ filters nothing, so it is designed when it comes back.
    if (postEq.enabled)
    {
        postEq.setTilt (controls.tilt);
        postEq.setNotch (controls.notchHz, controls.notchDepth);
    }
}

void VoiceEngine::outputStage (juce::AudioBuffer<float>& buffer, int start, int n) noexcept
{
    const int channels = buffer.getNumChannels();
    float* outLeft = channels > 0 ? buffer.getWritePointer (0, start) : nullptr;
    float* outRight = channels > 1 ? buffer.getWritePointer (1, start) : nullptr;
    if (outLeft == nullptr)
        return;

    // The voice with the post noise, then Mod FX over each run of samples whose controls stand,
    // then the post EQ, gain, blockers and mono low: each sample meets the same steps in the
    // same order as in one pass a sample at a time. The EQ's loops and the blockers' wait for
    // nothing of each other's, so they share one loop.
    float* wetLeft = dryBuffer.getWritePointer (0);
    float* wetRight = dryBuffer.getWritePointer (1);
    for (int i = 0; i < n; ++i)
    {
        wetLeft[i] += noisePostLeft[(size_t) i];
        wetRight[i] += noisePostRight[(size_t) i];
    }
    // Under modulation the controls are worked out on every sample, mostly to the same Mod FX
    // settings: a run goes on until those change.
    const auto sameModFx = [] (const OutputControls& a, const OutputControls& b)
    {
        return a.fxEnabled == b.fxEnabled && a.fxMode == b.fxMode && a.fxRate == b.fxRate && a.fxDepth == b.fxDepth
            && a.fxFeedback == b.fxFeedback && a.fxMix == b.fxMix;
    };
    const OutputControls* applied = nullptr;
    for (int i = 0; i < n;)
    {
        if (chainSteps[(size_t) i].settingsMoved)
        {
            applied = &outputControls[(size_t) i];
            applyModFxControls (*applied);
        }
        int end = i + 1;
        while (end < n && ! (chainSteps[(size_t) end].settingsMoved && (applied == nullptr || ! sameModFx (outputControls[(size_t) end], *applied))))
            ++end;
        ModFx::processPair (modFx[Side::left], modFx[Side::right], wetLeft + i, wetRight + i, end - i);
        i = end;
    }

    for (int i = 0; i < n; ++i)
    {
        if (chainSteps[(size_t) i].settingsMoved)
            applyEqControls (outputControls[(size_t) i]);
        if (postEq.enabled)
            postEq.process (wetLeft[i], wetRight[i]);

        float g = gainBuffer[(size_t) i];
        if (antiClickCounter > 0)
        {
            const float c = (float) antiClickCounter--;
            const float t = 1.0f - c / (float) antiClickLength;
            g *= (3.0f - 2.0f * t) * t * t;
        }

        float l = wetLeft[i];
        float r = wetRight[i];
        l *= g;
        r *= g;

        l = outputBlockers[Side::left].process (l);
        r = outputBlockers[Side::right].process (r);

        // Mono low: the side signal is high-passed, so the lows sum to mono.
        const float m = (l + r) * 0.5f;
        const float s = (l - r) * 0.5f;
        const float monoLowOn = sm (S::monoLowOn).getNextValue();
        const float monoLowHz = sm (S::monoLowHz).getNextValue();
        monoLowBlocker.R = monoLowCache.get (monoLowHz, [this] (float hz)
        {
            DcBlocker d;
            d.setCutoff (sampleRate > 0.0 ? std::clamp (hz, 0.0f, 0.45f * (float) sampleRate) : std::min (hz, 20000.0f), sampleRate);
            return d.R;
        });
        const float h = monoLowBlocker.process (s);
        const float sOut = s + (h - s) * monoLowOn;

        const float mixedLeft = m + sOut;
        const float mixedRight = m - sOut;
        if (outRight != nullptr)
        {
            outLeft[i] += mixedLeft;
            outRight[i] += mixedRight;
        }
        else
        {
            outLeft[i] += (mixedLeft + mixedRight) * 0.7071068f;
        }
    }
}
}
