#pragma once

#include "render/MidiFileEvents.h"
#include "render/RenderOptions.h"

#include <juce_audio_basics/juce_audio_basics.h>

#include <functional>
#include <vector>

namespace morvane::render
{
// Exit codes of the renderer.
enum ExitCode { exitOk = 0, exitWriteFailed = 1, exitBadInput = 2 };

// Runs one render as a host would: construct, preset, settings, prepare, process, write.
// Messages go to stderr, the bench line to stdout.
int runRender (const RenderOptions& options);

// The bank's own commands: a listing, and the audition of every preset on one phrase.
int listFactory();
// The processor's parameters in the order a host sees them: index, id and name, tab-separated.
int listParameters();
int runAudition (const juce::File& directory, double rate, int block);
}

namespace morvane
{
class MorvaneAudioProcessor;

namespace render
{
    // runRender on a processor that the caller owns, so that many runs can share one.
    int runRender (const RenderOptions& options, MorvaneAudioProcessor& processor);

    // Receives each rendered block in order; false stops the render.
    using BlockSink = std::function<bool (const juce::AudioBuffer<float>& block, int numSamples, juce::int64 done)>;

    // Plays sorted events through prepared processor blocks, handing each block on as it is made;
    // false when the sink stopped it.
    bool renderBlocks (MorvaneAudioProcessor& processor, const std::vector<TimedEvent>& events, juce::int64 total,
                       int block, const BlockSink& sink, double* processSeconds = nullptr);
    // The same, held in memory: for short renders only.
    juce::AudioBuffer<float> renderEvents (MorvaneAudioProcessor& processor, const std::vector<TimedEvent>& events,
                                           int total, int block);
    // Applies a factory preset by display name or xml file name and takes its identity; an unknown
    // name is refused with the closest names.
    bool applyFactoryPreset (MorvaneAudioProcessor& processor, const juce::String& name);
    // The audition's bass phrase, and one preset rendered on it from a fresh instance.
    std::vector<TimedEvent> auditionPhrase (double rate);
    juce::AudioBuffer<float> renderAudition (const juce::String& xml, double rate, int block);
    bool writeWav (const juce::File& file, const juce::AudioBuffer<float>& audio, double rate);
    void fail (const juce::String& message);
    // The name in front of every message; the other command-line tools share this code.
    void setToolName (const char* name);
}
}
