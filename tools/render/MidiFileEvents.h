#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#include <vector>

namespace morvane::render
{
struct TimedEvent
{
    juce::int64 sample = 0;
    juce::MidiMessage message;
};

// Limits that keep a damaged or hostile file from exhausting memory; real files are far smaller.
constexpr juce::int64 maxMidiFileBytes = 16 * 1024 * 1024;
constexpr size_t maxMidiEvents = 1000000;

struct MidiFileContents
{
    std::vector<TimedEvent> events; // channel messages only, unsorted across tracks
    double lastEventSeconds = 0.0;  // exact, even when far beyond any sample position
};

// All tracks of a standard MIDI file merged and timed through its tempo map, in one linear pass
// with every length checked. Meta and system exclusive events are dropped; a note-on that repeats
// a sounding key gets a note-off first. On failure, problem says what is wrong in one line.
bool parseMidiFile (const void* data, size_t size, double sampleRate, MidiFileContents& contents,
                    juce::String& problem);

// Reads and parses a file; error names the file and the problem.
bool loadMidiFileEvents (const juce::File& file, double sampleRate, MidiFileContents& contents,
                         juce::String& error);

// Stable order by sample; at one sample, note-offs before anything else so that a repeated key
// that ends where the next begins is not cut short.
void sortEvents (std::vector<TimedEvent>& events);

// A sample position for a time in seconds, held far below overflow for absurd times.
juce::int64 secondsToSample (double seconds, double sampleRate);
}
