#pragma once

#include "audio/PluginProcessor.h"

#include <juce_events/juce_events.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace morvane::fuzz
{
// One framework instance and one prepared processor for the whole run; inputs land on it in turn,
// as a host's session and preset loads land on one plug-in.
struct Harness
{
    struct QuietLog : juce::Logger
    {
        void logMessage (const juce::String&) override {}
    };

    juce::ScopedJuceInitialiser_GUI juce;
    QuietLog quiet;
    MorvaneAudioProcessor processor;
    juce::AudioBuffer<float> buffer { 2, 64 };
    juce::MidiBuffer midi;

    Harness()
    {
        juce::Logger::setCurrentLogger (&quiet);
        processor.prepareToPlay (48000.0, 64);
        midi.ensureSize (64);
    }

    static Harness& get()
    {
        static auto* harness = new Harness(); // never destroyed: libFuzzer leaves by exit()
        return *harness;
    }

    // Whatever was loaded must still play: finite audio and an intact controller table.
    void checkStillPlays()
    {
        midi.clear();
        midi.addEvent (juce::MidiMessage::noteOn (1, 40, (juce::uint8) 100), 0);
        midi.addEvent (juce::MidiMessage::controllerEvent (1, 7, 90), 10);
        processor.processBlock (buffer, midi);
        for (int ch = 0; ch < buffer.getNumChannels(); ++ch)
            for (int i = 0; i < buffer.getNumSamples(); ++i)
                if (! std::isfinite (buffer.getSample (ch, i)))
                    fail ("the processor produced a non-finite sample after this input");
        for (int cc = 0; cc < 128; ++cc)
        {
            const int binding = processor.getControllerBinding (cc);
            if (binding < -1 || binding >= (int) processor.getParameters().size())
                fail ("a controller is bound to a parameter that does not exist");
        }
    }

    [[noreturn]] static void fail (const char* what)
    {
        std::fprintf (stderr, "morvane fuzz: %s\n", what);
        std::abort();
    }
};
}
