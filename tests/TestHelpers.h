#pragma once

#include "audio/PluginProcessor.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace morvane::test
{
// A temporary path of its own. ctest runs tests as processes side by side, and a name that is
// merely free when asked for could be taken by a neighbour, or deleted under it.
inline juce::File uniqueTempFile (const juce::String& prefix, const juce::String& suffix = {})
{
    return juce::File::getSpecialLocation (juce::File::tempDirectory)
        .getChildFile (prefix + "-" + juce::Uuid().toString() + suffix);
}

// Sets a parameter in its own units through the host path.
inline void setParameter (juce::AudioProcessor& processor, const juce::String& id, float value)
{
    for (auto* p : processor.getParameters())
        if (auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (p))
            if (ranged->getParameterID() == id)
            {
                ranged->setValueNotifyingHost (ranged->convertTo0to1 (value));
                return;
            }
    ADD_FAILURE() << "no parameter " << id;
}

using Settings = std::initializer_list<std::pair<const char*, float>>;

inline void setParameters (juce::AudioProcessor& processor, Settings settings)
{
    for (auto [id, v] : settings)
        setParameter (processor, id, v);
}

struct NoteEvent
{
    int sample;
    int note;
    float velocity; // 0 means note-off
};

// Renders a processor for numSamples with note events at absolute sample positions.
inline juce::AudioBuffer<float> renderProcessor (MorvaneAudioProcessor& processor, int numSamples, int blockSize,
                                                 const std::vector<NoteEvent>& events)
{
    const int channels = processor.getTotalNumOutputChannels();
    juce::AudioBuffer<float> out (channels, numSamples);
    out.clear();
    juce::AudioBuffer<float> block (channels, blockSize);
    juce::MidiBuffer midi;

    for (int pos = 0; pos < numSamples; pos += blockSize)
    {
        const int n = std::min (blockSize, numSamples - pos);
        block.setSize (channels, n, false, false, true);
        midi.clear();
        for (const auto& e : events)
            if (e.sample >= pos && e.sample < pos + n)
                midi.addEvent (e.velocity > 0.0f ? juce::MidiMessage::noteOn (1, e.note, e.velocity)
                                                 : juce::MidiMessage::noteOff (1, e.note),
                               e.sample - pos);
        processor.processBlock (block, midi);
        for (int ch = 0; ch < channels; ++ch)
            out.copyFrom (ch, pos, block, ch, 0, n);
    }
    return out;
}

inline std::unique_ptr<MorvaneAudioProcessor> makePrepared (double rate = 48000.0, int block = 512, bool mono = false)
{
    auto p = std::make_unique<MorvaneAudioProcessor>();
    if (mono)
    {
        juce::AudioProcessor::BusesLayout layout;
        layout.outputBuses.add (juce::AudioChannelSet::mono());
        EXPECT_TRUE (p->setBusesLayout (layout));
    }
    p->setRateAndBufferSizeDetails (rate, block);
    p->prepareToPlay (rate, block);
    return p;
}

inline std::unique_ptr<MorvaneAudioProcessor> makePatched (Settings settings, double rate = 48000.0, int block = 512)
{
    auto p = makePrepared (rate, block);
    setParameters (*p, settings);
    return p;
}

// One key held from the first sample.
inline juce::AudioBuffer<float> renderNote (MorvaneAudioProcessor& processor, int note, int numSamples, float velocity = 1.0f)
{
    return renderProcessor (processor, numSamples, 512, { { 0, note, velocity } });
}

inline double rms (const float* x, int n)
{
    double s = 0.0;
    for (int i = 0; i < n; ++i)
        s += (double) x[i] * x[i];
    return n > 0 ? std::sqrt (s / n) : 0.0;
}

inline float peak (const float* x, int n)
{
    float p = 0.0f;
    for (int i = 0; i < n; ++i)
        p = std::max (p, std::abs (x[i]));
    return p;
}

// Frequency from rising zero crossings, interpolated, over a steady stretch.
inline double zeroCrossingFrequency (const float* x, int n, double rate)
{
    double first = -1.0, last = -1.0;
    int count = 0;
    for (int i = 1; i < n; ++i)
        if (x[i - 1] < 0.0f && x[i] >= 0.0f)
        {
            const double t = (i - 1) + (double) -x[i - 1] / ((double) x[i] - x[i - 1]);
            if (first < 0.0)
                first = t;
            else
                ++count;
            last = t;
        }
    return count > 0 ? count * rate / (last - first) : 0.0;
}

// Magnitude of one frequency by correlation (a single DFT bin at any frequency).
inline double toneMagnitude (const float* x, int n, double frequency, double rate)
{
    double re = 0.0, im = 0.0;
    for (int i = 0; i < n; ++i)
    {
        const double w = 0.5 - 0.5 * std::cos (2.0 * M_PI * i / (n - 1)); // Hann
        const double a = 2.0 * M_PI * frequency * i / rate;
        re += w * x[i] * std::cos (a);
        im -= w * x[i] * std::sin (a);
    }
    return 2.0 * std::sqrt (re * re + im * im) / (0.5 * n);
}

// Steady-state gain of a one-in one-out process for a sine: settled for a stretch, then measured
// over as long again.
template <typename Fn>
double sineGain (Fn&& process, double frequency, double rate, double amplitude = 0.1, double seconds = 0.25)
{
    const int settle = (int) (rate * seconds);
    double in = 0.0, out = 0.0;
    for (int i = 0; i < 2 * settle; ++i)
    {
        const float x = (float) (amplitude * std::sin (2.0 * M_PI * frequency * i / rate));
        const float y = process (x);
        if (i >= settle)
        {
            in += (double) x * x;
            out += (double) y * y;
        }
    }
    return std::sqrt (out / in);
}
}
