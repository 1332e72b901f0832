#include "render/WavFileStream.h"

#include <sys/stat.h>

namespace morvane::render
{
void removeRegularFile (const juce::File& file)
{
    struct stat info {};
    if (::stat (file.getFullPathName().toRawUTF8(), &info) == 0 && S_ISREG (info.st_mode))
        file.deleteFile();
}

WavFileStream::~WavFileStream()
{
    writer.reset();
}

bool WavFileStream::open (const juce::File& target, double sampleRate, int channels, juce::String& error, int bitsPerSample)
{
    file = target;
    bits = bitsPerSample == 16 || bitsPerSample == 24 ? bitsPerSample : 32;
    const auto cannot = "cannot write '" + file.getFullPathName() + "': ";
    removeRegularFile (file); // the stream would otherwise append to an older file
    auto output = std::make_unique<juce::FileOutputStream> (file);
    if (! output->openedOk())
    {
        error = cannot + output->getStatus().getErrorMessage();
        return false;
    }

    juce::WavAudioFormat wav;
    auto* raw = output.get();
    writer.reset (wav.createWriterFor (raw, sampleRate, (unsigned int) channels, bits, {}, 0));
    if (writer == nullptr)
    {
        error = cannot + "no WAV writer for this format";
        return false;
    }
    output.release(); // the writer owns it now
    stream = raw;
    if (stream->getStatus().failed())
    {
        error = cannot + stream->getStatus().getErrorMessage();
        return false;
    }
    return true;
}

bool WavFileStream::write (const juce::AudioBuffer<float>& audio, int numSamples, juce::String& error)
{
    if (writer == nullptr)
        return false;
    const auto* source = &audio;
    if (bits < 32)
    {
        // Two uniform values of one step each: a triangular dither that leaves no error pattern
        // tied to the signal.
        const float step = 1.0f / (float) (1 << (bits - 1));
        dithered.setSize (audio.getNumChannels(), numSamples, false, false, true);
        for (int ch = 0; ch < audio.getNumChannels(); ++ch)
        {
            const auto* in = audio.getReadPointer (ch);
            auto* out = dithered.getWritePointer (ch);
            for (int i = 0; i < numSamples; ++i)
                out[i] = in[i] + (dither.nextFloat() - dither.nextFloat()) * step;
        }
        source = &dithered;
    }
    if (writer->writeFromAudioSampleBuffer (*source, 0, numSamples) && ! stream->getStatus().failed())
        return true;
    error = "cannot write '" + file.getFullPathName() + "': "
            + (stream->getStatus().failed() ? stream->getStatus().getErrorMessage() : juce::String ("write failed"));
    return false;
}

bool WavFileStream::close (juce::String& error)
{
    if (writer == nullptr)
        return false;
    // The header is written and the buffer emptied here, while a failure can still be seen.
    const bool headerOk = writer->flush();
    stream->flush();
    const auto status = stream->getStatus();
    writer.reset();
    stream = nullptr;
    if (headerOk && ! status.failed())
        return true;
    error = "cannot write '" + file.getFullPathName() + "': "
            + (status.failed() ? status.getErrorMessage() : juce::String ("could not finish the header"));
    return false;
}

void WavFileStream::abandon()
{
    writer.reset();
    stream = nullptr;
    removeRegularFile (file);
}
}
