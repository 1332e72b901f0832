#include "render/RenderSession.h"

#include "audio/PluginProcessor.h"
#include "audio/SafeXml.h"
#include "presets/Catalogue.h"
#include "render/MidiFileEvents.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iostream>

namespace morvane::render
{
namespace
{

    juce::RangedAudioParameter* findParameter (juce::AudioProcessor& processor, const juce::String& id)
    {
        for (auto* p : processor.getParameters())
            if (auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (p))
                if (ranged->getParameterID() == id)
                    return ranged;
        return nullptr;
    }

    // Sets a parameter from a value in its own units, through the host path.
    void setAsHost (juce::RangedAudioParameter& p, float value)
    {
        p.beginChangeGesture();
        p.setValueNotifyingHost (p.convertTo0to1 (value));
        p.endChangeGesture();
    }

    bool applyPresetFile (MorvaneAudioProcessor& processor, const juce::File& file)
    {
        if (! file.existsAsFile())
        {
            fail ("cannot read preset '" + file.getFullPathName() + "': no such file");
            return false;
        }

        juce::MemoryBlock bytes;
        file.loadFileAsData (bytes);
        const auto xml = parseXmlSafely (static_cast<const char*> (bytes.getData()), (int) bytes.getSize());
        if (xml == nullptr)
        {
            fail ("cannot parse preset '" + file.getFullPathName() + "': not an XML document");
            return false;
        }
        if (! xml->hasTagName ("PARAMS"))
        {
            fail ("cannot use preset '" + file.getFullPathName() + "': root element is '" + xml->getTagName()
                  + "', expected 'PARAMS'");
            return false;
        }

        // Parameters the document doesn't name keep their values; unknown ids are skipped.
        processor.applyPresetXml (*xml);
        return true;
    }

    bool applySettings (MorvaneAudioProcessor& processor, const std::vector<ParameterSetting>& sets)
    {
        for (const auto& s : sets)
        {
            auto* p = findParameter (processor, s.id);
            if (p == nullptr)
            {
                fail ("unknown parameter id '" + s.id + "'");
                return false;
            }

            const auto& range = p->getNormalisableRange();
            if (s.value < range.start || s.value > range.end)
                std::cerr << "morvane-render: note: " << s.id << "=" << s.value << " is outside "
                          << range.start << " to " << range.end << " and is clamped" << std::endl;
            setAsHost (*p, s.value);
        }
        return true;
    }

    bool collectEvents (const RenderOptions& o, std::vector<TimedEvent>& events)
    {
        for (const auto& n : o.notes)
        {
            // A velocity above 0 never rounds down to the byte that means note-off.
            const int byte = n.velocity > 0.0f ? std::max (1, (int) std::lround (n.velocity * 127.0f)) : 0;
            events.push_back ({ (juce::int64) std::llround (n.start * o.rate),
                                juce::MidiMessage::noteOn (1, n.note, (juce::uint8) byte) });
            events.push_back ({ (juce::int64) std::llround ((n.start + n.length) * o.rate),
                                juce::MidiMessage::noteOff (1, n.note) });
        }

        if (o.midi)
        {
            juce::String error;
            if (! loadMidiFileEvents (*o.midi, o.rate, events, error))
            {
                fail (error);
                return false;
            }
        }

        sortEvents (events);
        return true;
    }

}

void fail (const juce::String& message)
{
    // The tools share this: each names itself.
    std::cerr << juce::File::getSpecialLocation (juce::File::currentExecutableFile).getFileName() << ": " << message << std::endl;
}

bool writeWav (const juce::File& file, const juce::AudioBuffer<float>& audio, double rate)
{
    file.deleteFile();
    auto stream = std::make_unique<juce::FileOutputStream> (file);
    if (! stream->openedOk())
    {
        fail ("cannot write '" + file.getFullPathName() + "': " + stream->getStatus().getErrorMessage());
        return false;
    }

    juce::WavAudioFormat wav;
    std::unique_ptr<juce::AudioFormatWriter> writer (
        wav.createWriterFor (stream.get(), rate, (unsigned int) audio.getNumChannels(), 32, {}, 0));
    if (writer == nullptr)
    {
        fail ("cannot write '" + file.getFullPathName() + "': no WAV writer for this format");
        return false;
    }
    stream.release(); // the writer owns it now

    const bool ok = writer->writeFromAudioSampleBuffer (audio, 0, audio.getNumSamples());
    writer.reset();
    if (! ok)
    {
        fail ("cannot write '" + file.getFullPathName() + "': write failed");
        return false;
    }
    return true;
}

juce::AudioBuffer<float> renderEvents (MorvaneAudioProcessor& processor, const std::vector<TimedEvent>& events,
                                       juce::int64 total, int blockSize, double* processSeconds)
{
    const int channels = processor.getTotalNumOutputChannels();
    juce::AudioBuffer<float> output (channels, (int) std::max<juce::int64> (total, 0));
    output.clear();
    juce::AudioBuffer<float> block (channels, blockSize);
    juce::MidiBuffer midi;
    midi.ensureSize (4096);

    size_t nextEvent = 0;
    double seconds = 0.0;
    for (juce::int64 pos = 0; pos < total; pos += blockSize)
    {
        const int n = (int) std::min<juce::int64> (blockSize, total - pos);
        block.setSize (channels, n, false, false, true);
        midi.clear();
        while (nextEvent < events.size() && events[nextEvent].sample < pos + n)
        {
            midi.addEvent (events[nextEvent].message, (int) std::max<juce::int64> (events[nextEvent].sample - pos, 0));
            ++nextEvent;
        }

        const auto t0 = std::chrono::steady_clock::now();
        processor.processBlock (block, midi);
        seconds += std::chrono::duration<double> (std::chrono::steady_clock::now() - t0).count();

        for (int ch = 0; ch < channels; ++ch)
            output.copyFrom (ch, (int) pos, block, ch, 0, n);
    }
    if (processSeconds != nullptr)
        *processSeconds = seconds;
    return output;
}

int listParameters()
{
    MorvaneAudioProcessor processor;
    const auto& parameters = processor.getParameters();
    for (int i = 0; i < parameters.size(); ++i)
    {
        const auto* ranged = dynamic_cast<const juce::RangedAudioParameter*> (parameters[i]);
        std::cout << i << "\t" << (ranged != nullptr ? ranged->getParameterID() : juce::String()) << "\t"
                  << parameters[i]->getName (1024) << "\n";
    }
    return parameters.isEmpty() ? exitWriteFailed : exitOk;
}

int runRender (const RenderOptions& o)
{
    std::vector<TimedEvent> events;
    if (! collectEvents (o, events))
        return exitBadInput;

    MorvaneAudioProcessor processor;

    const auto layoutSet = o.channels == 1 ? juce::AudioChannelSet::mono() : juce::AudioChannelSet::stereo();
    juce::AudioProcessor::BusesLayout layout;
    layout.outputBuses.add (layoutSet);
    if (! processor.setBusesLayout (layout))
    {
        fail ("the processor refused a " + juce::String (o.channels) + "-channel output");
        return exitBadInput;
    }

    if (o.stateIn)
    {
        juce::MemoryBlock blob;
        if (! o.stateIn->loadFileAsData (blob))
        {
            fail ("cannot read state '" + o.stateIn->getFullPathName() + "'");
            return exitBadInput;
        }
        if (xmlFromStateBlob (blob.getData(), (int) blob.getSize()) == nullptr)
        {
            fail ("cannot use state '" + o.stateIn->getFullPathName() + "': not a saved Morvane state");
            return exitBadInput;
        }
        processor.setStateInformation (blob.getData(), (int) blob.getSize());
    }
    if (o.preset && ! applyPresetFile (processor, *o.preset))
        return exitBadInput;
    if (o.factory.isNotEmpty() && ! applyFactoryPreset (processor, o.factory))
        return exitBadInput;
    if (! applySettings (processor, o.sets))
        return exitBadInput;

    processor.setRateAndBufferSizeDetails (o.rate, o.block);
    processor.prepareToPlay (o.rate, o.block);

    const juce::int64 lastEvent = events.empty() ? 0 : events.back().sample;
    const juce::int64 total = o.seconds ? (juce::int64) std::llround (*o.seconds * o.rate)
                                        : lastEvent + (juce::int64) std::llround (o.tail * o.rate);
    double processSeconds = 0.0;
    const auto output = renderEvents (processor, events, total, o.block, &processSeconds);

    processor.releaseResources();

    if (! writeWav (o.out, output, o.rate))
    {
        o.out.deleteFile();
        return exitWriteFailed;
    }

    if (o.stateOut)
    {
        juce::MemoryBlock blob;
        processor.getStateInformation (blob);
        if (! o.stateOut->replaceWithData (blob.getData(), blob.getSize()))
        {
            fail ("cannot write state '" + o.stateOut->getFullPathName() + "'");
            return exitWriteFailed;
        }
    }

    if (o.bench)
    {
        const double audioSeconds = (double) total / o.rate;
        const double factor = processSeconds > 0.0 ? audioSeconds / processSeconds : 0.0;
        std::cout << "rendered " << juce::String (audioSeconds, 3) << " s of audio in "
                  << juce::String (processSeconds, 3) << " s: " << juce::String (factor, 1) << " x real time"
                  << std::endl;
    }

    return exitOk;
}
}
