#include "render/RenderSession.h"

#include "audio/PhraseText.h"
#include "audio/PluginProcessor.h"
#include "audio/SafeXml.h"
#include "presets/Catalogue.h"
#include "render/MidiFileEvents.h"
#include "render/ProgressLine.h"
#include "render/WavFileStream.h"

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
        // The identity a user file gets when the instrument loads it, so that a saved state names it.
        const auto name = xml->getStringAttribute ("displayName", file.getFileNameWithoutExtension());
        processor.setPresetIdentity (name, "user:" + file.getFullPathName());
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

    bool collectEvents (const RenderOptions& o, std::vector<TimedEvent>& events, double& lastSeconds)
    {
        for (const auto& n : o.notes)
        {
            // A velocity above 0 never rounds down to the byte that means note-off.
            const int byte = n.velocity > 0.0f ? std::max (1, (int) std::lround (n.velocity * 127.0f)) : 0;
            events.push_back ({ secondsToSample (n.start, o.rate), juce::MidiMessage::noteOn (1, n.note, (juce::uint8) byte) });
            events.push_back ({ secondsToSample (n.start + n.length, o.rate), juce::MidiMessage::noteOff (1, n.note) });
            lastSeconds = std::max (lastSeconds, n.start + n.length);
        }

        if (o.midi)
        {
            MidiFileContents contents;
            contents.events = std::move (events);
            juce::String error;
            if (! loadMidiFileEvents (*o.midi, o.rate, contents, error))
            {
                fail (error);
                return false;
            }
            events = std::move (contents.events);
            lastSeconds = std::max (lastSeconds, contents.lastEventSeconds);
        }

        sortEvents (events);
        return true;
    }

    juce::String formatSeconds (double s)
    {
        return (s < longestRenderSeconds ? juce::String (s, 1) : juce::String (s, 3, true)) + " s";
    }

    // The render's length in samples, or a refusal that says what was asked and how to allow it.
    bool renderLength (const RenderOptions& o, double lastSeconds, juce::int64& total)
    {
        const double asked = o.seconds ? *o.seconds : lastSeconds + o.tail;
        if (asked <= o.maxSeconds)
        {
            total = secondsToSample (asked, o.rate);
            return true;
        }

        juce::String what;
        if (o.seconds)
            what = "--seconds asks for " + formatSeconds (asked) + " of audio";
        else
            what = (o.midi ? "'" + o.midi->getFileName() + "'" : juce::String ("the notes")) + " ask"
                   + (o.midi ? "s" : "") + " for " + formatSeconds (asked) + " of audio (last event at "
                   + formatSeconds (lastSeconds) + " plus " + formatSeconds (o.tail) + " of tail)";
        const double allow = std::ceil (asked);
        fail (what + ", more than the limit of " + formatSeconds (o.maxSeconds)
              + (allow <= longestRenderSeconds
                     ? "; pass --max-seconds " + juce::String ((juce::int64) allow) + " to allow it"
                     : "; no render may pass " + formatSeconds (longestRenderSeconds) + ", so its timing is likely damaged"));
        return false;
    }
}

namespace
{
    const char* toolName = "morvane-render";
}

void setToolName (const char* name) { toolName = name; }

void fail (const juce::String& message)
{
    std::cerr << toolName << ": " << message << std::endl;
}

bool writeWav (const juce::File& file, const juce::AudioBuffer<float>& audio, double rate)
{
    WavFileStream wav;
    juce::String error;
    if (wav.open (file, rate, audio.getNumChannels(), error) && wav.write (audio, audio.getNumSamples(), error)
        && wav.close (error))
        return true;
    fail (error);
    wav.abandon();
    return false;
}

bool renderBlocks (MorvaneAudioProcessor& processor, const std::vector<TimedEvent>& events, juce::int64 total,
                   int blockSize, const BlockSink& sink, double* processSeconds)
{
    const int channels = processor.getTotalNumOutputChannels();
    juce::AudioBuffer<float> block (channels, blockSize);
    juce::MidiBuffer midi;
    midi.ensureSize (4096);

    size_t nextEvent = 0;
    double seconds = 0.0;
    bool complete = true;
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

        if (! sink (block, n, pos + n))
        {
            complete = false;
            break;
        }
    }
    if (processSeconds != nullptr)
        *processSeconds = seconds;
    return complete;
}

juce::AudioBuffer<float> renderEvents (MorvaneAudioProcessor& processor, const std::vector<TimedEvent>& events,
                                       int total, int blockSize)
{
    juce::AudioBuffer<float> output (processor.getTotalNumOutputChannels(), std::max (total, 0));
    renderBlocks (processor, events, total, blockSize, [&] (const juce::AudioBuffer<float>& block, int n, juce::int64 done)
    {
        for (int ch = 0; ch < output.getNumChannels(); ++ch)
            output.copyFrom (ch, (int) (done - n), block, ch, 0, n);
        return true;
    });
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
    MorvaneAudioProcessor processor;
    return runRender (o, processor);
}

int runRender (const RenderOptions& o, MorvaneAudioProcessor& processor)
{
    // Everything is read and checked before anything is made.
    std::vector<TimedEvent> events;
    double lastSeconds = 0.0;
    if (! collectEvents (o, events, lastSeconds))
        return exitBadInput;
    juce::int64 total = 0;
    if (! renderLength (o, lastSeconds, total))
        return exitBadInput;

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

    // The phrase: from its file, or the one a saved state brought when nothing else is to play.
    auto pattern = processor.getPhrase();
    bool playPhrase = false;
    if (o.phrase)
    {
        const auto text = o.phrase->loadFileAsString();
        if (! o.phrase->existsAsFile())
        {
            fail ("cannot read phrase '" + o.phrase->getFullPathName() + "': no such file");
            return exitBadInput;
        }
        if (const auto error = phraseFromText (text, pattern); error.isNotEmpty())
        {
            fail ("cannot use phrase '" + o.phrase->getFullPathName() + "': " + error);
            return exitBadInput;
        }
        playPhrase = true;
    }
    else
    {
        playPhrase = o.stateIn && events.empty() && ! pattern.isEmpty();
    }
    if (playPhrase)
    {
        if (o.swing)
            pattern.swing = (float) (*o.swing * 0.01);
        processor.setPhrase (pattern);
        processor.setPhrasePlaying (true);
        // Without a host the phrase runs at the header's tempo, which is this parameter.
        if (auto* bpm = findParameter (processor, "lfoSyncBpm"))
            setAsHost (*bpm, (float) o.bpm);
        if (! o.seconds)
            total = std::max (total, secondsToSample (pattern.stepCount * 15.0 / o.bpm + o.tail, o.rate));
    }

    processor.setRateAndBufferSizeDetails (o.rate, o.block);
    processor.prepareToPlay (o.rate, o.block);

    WavFileStream wav;
    juce::String error;
    const int bits = o.format == RenderOptions::Format::s16 ? 16 : o.format == RenderOptions::Format::s24 ? 24 : 32;
    if (! wav.open (o.out, o.rate, processor.getTotalNumOutputChannels(), error, bits))
    {
        fail (error);
        wav.abandon();
        return exitWriteFailed;
    }

    ProgressLine progress (std::cerr, stderrIsTerminal(), total, o.rate);
    double processSeconds = 0.0;
    juce::int64 written = 0;
    const bool rendered = renderBlocks (processor, events, total, o.block,
                                        [&] (const juce::AudioBuffer<float>& block, int n, juce::int64 done)
                                        {
                                            progress.update (done);
                                            if (! wav.write (block, n, error))
                                                return false;
                                            written = done;
                                            return true;
                                        },
                                        &processSeconds);
    progress.finish (written);
    processor.releaseResources();

    if (! rendered || ! wav.close (error))
    {
        fail (error);
        wav.abandon();
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
