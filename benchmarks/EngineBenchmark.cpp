// Real-time factor of the processor at 48 kHz: a held note and a bass pattern.
#include "audio/PluginProcessor.h"
#include "presets/Catalogue.h"

#include <juce_events/juce_events.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace
{
constexpr double rate = 48000.0;
constexpr int blockSize = 512;

struct Rig
{
    juce::ScopedJuceInitialiser_GUI juce;
    std::unique_ptr<morvane::MorvaneAudioProcessor> processor = std::make_unique<morvane::MorvaneAudioProcessor>();
    juce::AudioBuffer<float> buffer { 2, blockSize };
    juce::MidiBuffer midi;

    Rig()
    {
        processor->setRateAndBufferSizeDetails (rate, blockSize);
        processor->prepareToPlay (rate, blockSize);
        midi.ensureSize (1024);
    }

    void set (const char* id, float value)
    {
        auto* p = processor->getParameterTree().getParameter (id);
        p->setValueNotifyingHost (p->convertTo0to1 (value));
    }

    // A richer patch than the default: two bright oscillators with morph into a resonant filter.
    void busyPatch()
    {
        set ("osc1Wave", 5.0f);
        set ("osc1DcwDepth", 0.8f);
        set ("osc2Wave", 8.0f);
        set ("osc2Level", -3.0f);
        set ("pdMorphAmount", 0.3f);
        set ("glideTime", 0.03f);
        set ("filterCutoff", 800.0f);
        set ("filterReso", 0.5f);
        set ("filterEnvAmount", 24.0f);
    }

    // Every stage of the voice and the master chain at work on top of the busy patch.
    void fullPatch()
    {
        busyPatch();
        set ("subLevel", -6.0f);
        set ("subMode", 1.0f);
        set ("subDcwDepth", 0.5f);
        set ("subDriveSend", 0.5f);
        set ("noiseLevel", -30.0f);
        set ("noiseColour", 1.0f);
        set ("noiseRouting", 0.5f);
        set ("drive", 12.0f);
        set ("driveMode", 1.0f);
        set ("driveAutoMakeup", 1.0f);
        set ("feedbackAmount", 0.4f);
        set ("mbdEnable", 1.0f);
        set ("mbdLowAmount", 6.0f);
        set ("mbdMidAmount", 9.0f);
        set ("mbdHighAmount", 12.0f);
        set ("postEqEnable", 1.0f);
        set ("postEqTilt", 3.0f);
        set ("postEqNotchDepth", 0.5f);
        set ("modFxEnable", 1.0f);
        set ("modFxMode", 2.0f);
        set ("delayEnable", 1.0f);
        set ("delayPingPong", 1.0f);
        set ("reverbEnable", 1.0f);
        set ("crushEnable", 1.0f);
        set ("crushJitter", 0.3f);
        set ("crushDither", 1.0f);
    }

    // A factory preset by its file name, applied as the browser does.
    void factory (const char* xml)
    {
        if (const auto document = morvane::presets::loadFactoryDocument (xml))
            processor->applyPresetXml (*document);
        else
            throw std::runtime_error (std::string ("no factory preset ") + xml);
    }

    // 0 the default patch, 1 busy, 2 every stage, 3 "reese classic".
    void patch (int64_t which)
    {
        if (which == 1)
            busyPatch();
        else if (which == 2)
            fullPatch();
        else if (which == 3)
            factory ("reese_classic.xml");
    }
};

// Seconds of audio rendered per second of CPU time.
void reportRealTime (benchmark::State& state, long samples)
{
    state.counters["x_real_time"] = benchmark::Counter ((double) samples / rate, benchmark::Counter::kIsRate);
}

void HeldNote (benchmark::State& state)
{
    Rig rig;
    rig.patch (state.range (0));
    rig.midi.addEvent (juce::MidiMessage::noteOn (1, 36, 1.0f), 0);
    rig.processor->processBlock (rig.buffer, rig.midi);
    rig.midi.clear();

    long samples = 0;
    for (auto _ : state)
    {
        rig.processor->processBlock (rig.buffer, rig.midi);
        benchmark::DoNotOptimize (rig.buffer.getReadPointer (0)[0]);
        samples += blockSize;
    }
    reportRealTime (state, samples);
}

void NotePattern (benchmark::State& state)
{
    Rig rig;
    rig.patch (state.range (0));

    // Sixteenth notes at 128 BPM, about 5625 samples apart, cycling through a bass line.
    const int notes[] = { 36, 36, 48, 39, 36, 43, 41, 34 };
    constexpr int step = 5625;
    long position = 0, samples = 0;
    int index = 0;
    for (auto _ : state)
    {
        rig.midi.clear();
        const long blockEnd = position + blockSize;
        for (long t = (position + step - 1) / step * step; t < blockEnd; t += step)
        {
            const int offset = (int) (t - position);
            rig.midi.addEvent (juce::MidiMessage::noteOff (1, notes[(index + 7) % 8]), offset);
            rig.midi.addEvent (juce::MidiMessage::noteOn (1, notes[index % 8], 0.9f), offset);
            ++index;
        }
        rig.processor->processBlock (rig.buffer, rig.midi);
        benchmark::DoNotOptimize (rig.buffer.getReadPointer (0)[0]);
        position = blockEnd;
        samples += blockSize;
    }
    reportRealTime (state, samples);
}
}

BENCHMARK (HeldNote)->Arg (0)->Arg (1)->Arg (2)->Arg (3)->ArgName ("patch")->Unit (benchmark::kMicrosecond);
BENCHMARK (NotePattern)->Arg (0)->Arg (1)->Arg (2)->Arg (3)->ArgName ("patch")->Unit (benchmark::kMicrosecond);
BENCHMARK_MAIN();
