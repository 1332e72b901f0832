#pragma once

#include <juce_audio_formats/juce_audio_formats.h>

#include <memory>

namespace morvane::render
{
// A 32-bit float WAV file written block by block, so memory stays flat whatever the length.
// Every failure comes back as false with a one-line message in error; abandon() then removes
// the partial file.
class WavFileStream
{
public:
    ~WavFileStream();

    bool open (const juce::File& file, double sampleRate, int channels, juce::String& error);
    bool write (const juce::AudioBuffer<float>& audio, int numSamples, juce::String& error);
    // Flushes and closes; false when the data could not all reach the file.
    bool close (juce::String& error);
    void abandon();

private:
    juce::File file;
    std::unique_ptr<juce::AudioFormatWriter> writer;
    juce::FileOutputStream* stream = nullptr; // owned by the writer
};

// Deletes a regular file; a device or pipe named as output is never removed.
void removeRegularFile (const juce::File& file);
}
