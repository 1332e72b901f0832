#pragma once

#include <juce_audio_formats/juce_audio_formats.h>

#include <memory>

namespace morvane::render
{
// A WAV file written block by block, so memory stays flat whatever the length: 32-bit float, or
// 24 or 16-bit integers with triangular (TPDF) dither of one step, from a fixed seed so that a
// render repeats to the bit.
// Every failure comes back as false with a one-line message in error; abandon() then removes
// the partial file.
class WavFileStream
{
public:
    ~WavFileStream();

    bool open (const juce::File& file, double sampleRate, int channels, juce::String& error, int bitsPerSample = 32);
    bool write (const juce::AudioBuffer<float>& audio, int numSamples, juce::String& error);
    // Flushes and closes; false when the data could not all reach the file.
    bool close (juce::String& error);
    void abandon();

private:
    juce::File file;
    std::unique_ptr<juce::AudioFormatWriter> writer;
    juce::FileOutputStream* stream = nullptr; // owned by the writer
    int bits = 32;
    juce::Random dither { 0x5eed };
    juce::AudioBuffer<float> dithered;
};

// Deletes a regular file; a device or pipe named as output is never removed.
void removeRegularFile (const juce::File& file);
}
