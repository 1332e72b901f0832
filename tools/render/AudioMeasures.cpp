#include "render/AudioMeasures.h"

#include <juce_dsp/juce_dsp.h>

#include <cmath>
#include <vector>

namespace morvane::render
{
namespace
{
    struct Biquad
    {
        double b0, b1, b2, a1, a2, x1 = 0, x2 = 0, y1 = 0, y2 = 0;
        double process (double x)
        {
            const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
            x2 = x1; x1 = x; y2 = y1; y1 = y;
            return y;
        }
    };

    // The two K-weighting stages, designed for any rate from their analogue prototypes.
    std::pair<Biquad, Biquad> kWeighting (double rate)
    {
        const double f0 = 1681.974450955533, gainDb = 3.999843853973347, q = 0.7071752369554196;
        const double k = std::tan (juce::MathConstants<double>::pi * f0 / rate);
        const double vh = std::pow (10.0, gainDb / 20.0), vb = std::pow (vh, 0.4996667741545416);
        const double a0 = 1.0 + k / q + k * k;
        Biquad shelf { (vh + vb * k / q + k * k) / a0, 2.0 * (k * k - vh) / a0, (vh - vb * k / q + k * k) / a0,
                       2.0 * (k * k - 1.0) / a0, (1.0 - k / q + k * k) / a0 };
        const double f1 = 38.13547087602444, q1 = 0.5003270373238773;
        const double k1 = std::tan (juce::MathConstants<double>::pi * f1 / rate);
        const double d = 1.0 + k1 / q1 + k1 * k1;
        Biquad highPass { 1.0, -2.0, 1.0, 2.0 * (k1 * k1 - 1.0) / d, (1.0 - k1 / q1 + k1 * k1) / d };
        return { shelf, highPass };
    }

    float integratedLoudness (const juce::AudioBuffer<float>& audio, double rate)
    {
        const int n = audio.getNumSamples();
        const int channels = audio.getNumChannels();
        std::vector<double> power ((size_t) n, 0.0);
        for (int ch = 0; ch < channels; ++ch)
        {
            auto [shelf, highPass] = kWeighting (rate);
            const float* x = audio.getReadPointer (ch);
            for (int i = 0; i < n; ++i)
            {
                const double y = highPass.process (shelf.process (x[i]));
                power[(size_t) i] += y * y;
            }
        }

        const int blockLength = (int) (0.4 * rate), hop = std::max (1, blockLength / 4);
        std::vector<double> blocks;
        for (int start = 0; start + blockLength <= n; start += hop)
        {
            double sum = 0.0;
            for (int i = start; i < start + blockLength; ++i)
                sum += power[(size_t) i];
            blocks.push_back (sum / blockLength);
        }
        auto lufs = [] (double meanSquare) { return -0.691 + 10.0 * std::log10 (std::max (meanSquare, 1.0e-20)); };
        auto gatedMean = [&] (double gate)
        {
            double sum = 0.0;
            int count = 0;
            for (double b : blocks)
                if (lufs (b) > gate)
                {
                    sum += b;
                    ++count;
                }
            return count > 0 ? sum / count : 0.0;
        };
        const double absolute = gatedMean (-70.0);
        if (absolute <= 0.0)
            return -200.0f;
        return (float) lufs (gatedMean (lufs (absolute) - 10.0));
    }

    float spectralCentroid (const juce::AudioBuffer<float>& audio, double rate)
    {
        constexpr int order = 12, size = 1 << order;
        juce::dsp::FFT fft (order);
        std::vector<float> work (2 * size);
        std::vector<double> spectrum (size / 2, 0.0);
        const int n = audio.getNumSamples();
        for (int start = 0; start + size <= n; start += size / 2)
        {
            std::fill (work.begin(), work.end(), 0.0f);
            for (int i = 0; i < size; ++i)
            {
                float m = 0.0f;
                for (int ch = 0; ch < audio.getNumChannels(); ++ch)
                    m += audio.getSample (ch, start + i);
                work[(size_t) i] = m * (float) (0.5 - 0.5 * std::cos (2.0 * juce::MathConstants<double>::pi * i / size));
            }
            fft.performFrequencyOnlyForwardTransform (work.data());
            for (int k = 0; k < size / 2; ++k)
                spectrum[(size_t) k] += (double) work[(size_t) k] * work[(size_t) k]; // power: a low floor can't pull it up
        }
        double weighted = 0.0, total = 0.0;
        for (int k = 1; k < size / 2; ++k)
        {
            weighted += spectrum[(size_t) k] * k * rate / size;
            total += spectrum[(size_t) k];
        }
        return total > 0.0 ? (float) (weighted / total) : 0.0f;
    }
}

AudioMeasures measureAudio (const juce::AudioBuffer<float>& audio, double rate)
{
    AudioMeasures m;
    const int n = audio.getNumSamples();
    if (n == 0 || audio.getNumChannels() == 0)
        return m;
    float peak = 0.0f;
    double sum = 0.0;
    for (int ch = 0; ch < audio.getNumChannels(); ++ch)
        for (int i = 0; i < n; ++i)
        {
            const float x = audio.getSample (ch, i);
            peak = std::max (peak, std::abs (x));
            sum += (double) x * x;
        }
    auto db = [] (double v) { return v > 0.0 ? (float) (20.0 * std::log10 (v)) : -200.0f; };
    m.peakDb = db (peak);
    m.rmsDb = db (std::sqrt (sum / ((double) n * audio.getNumChannels())));
    m.centroidHz = spectralCentroid (audio, rate);
    m.loudnessLufs = integratedLoudness (audio, rate);
    return m;
}
}
