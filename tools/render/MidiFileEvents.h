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

// All tracks of a standard MIDI file merged, timed through its tempo map. Meta events dropped.
// Returns false with a message when the file cannot be read or parsed.
bool loadMidiFileEvents (const juce::File& file, double sampleRate, std::vector<TimedEvent>& events,
                         juce::String& error);

// Stable order by sample; at one sample, note-offs before anything else so that a repeated key
// that ends where the next begins is not cut short.
void sortEvents (std::vector<TimedEvent>& events);
}
