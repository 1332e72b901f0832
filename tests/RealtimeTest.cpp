#include "AllocationCounter.h"
#include "TestHelpers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <random>
#include <thread>
#include <vector>

using namespace morvane;
using namespace morvane::test;

namespace
{
// Drives blocks with notes, bends, controllers, pressure, ring commands and parameter moves.
long allocationsWhileProcessing (MorvaneAudioProcessor& p, int blockSize, int blocks)
{
    std::mt19937 rng (1234);
    juce::AudioBuffer<float> buffer (p.getTotalNumOutputChannels(), blockSize);
    juce::MidiBuffer midi;
    midi.ensureSize (4096);

    // Parameter changes from the message thread happen outside the counted window.
    auto* cutoff = p.getParameterTree().getParameter ("osc1DcwDepth");
    // The phrase plays throughout, its pattern changing now and then.
    PhrasePattern phrase;
    for (int k = 0; k < 16; ++k)
        phrase.steps[(size_t) k] = { (std::int8_t) (k % 3 == 2 ? -1 : 36 + k), k % 4 == 1, k % 5 == 0 };
    long total = 0;
    for (int b = 0; b < blocks; ++b)
    {
        midi.clear();
        const int n = 1 + (int) (rng() % 6);
        for (int e = 0; e < n; ++e)
        {
            const int pos = (int) (rng() % (unsigned) blockSize);
            switch (rng() % 6)
            {
                case 0: midi.addEvent (juce::MidiMessage::noteOn (1, 30 + (int) (rng() % 40), (juce::uint8) (1 + rng() % 126)), pos); break;
                case 1: midi.addEvent (juce::MidiMessage::noteOff (1, 30 + (int) (rng() % 40)), pos); break;
                case 2: midi.addEvent (juce::MidiMessage::pitchWheel (1, (int) (rng() % 16384)), pos); break;
                case 3: midi.addEvent (juce::MidiMessage::controllerEvent (1, (int) (rng() % 128), (int) (rng() % 128)), pos); break;
                case 4: midi.addEvent (juce::MidiMessage::channelPressureChange (1, (int) (rng() % 128)), pos); break;
                default: midi.addEvent (juce::MidiMessage::aftertouchChange (1, 60, 30), pos); break;
            }
        }
        if (b % 7 == 0)
        {
            p.pushNoteOn (40 + b % 20, 0.7f);
            p.pushPitchBend (0.3f);
            p.pushModWheel (0.2f);
        }
        if (b % 13 == 0)
            p.pushPanic();
        if (b % 13 == 1)
            p.setPhrasePlaying (true);
        if (b % 11 == 0)
        {
            phrase.swing = 0.5f + (float) (b % 5) * 0.05f;
            p.setPhrase (phrase);
        }
        if (b % 5 == 0)
            cutoff->setValueNotifyingHost ((float) (rng() % 1000) / 1000.0f);

        AllocationCounter counter;
        p.processBlock (buffer, midi);
        total += counter.allocations();
    }
    return total;
}
}

TEST (Realtime, ProcessBlockAllocatesNothing)
{
    // The last row hands over blocks larger than prepared, which are cut into chunks.
    const struct { double rate; int prepared, played, blocks; } rows[] = {
        { 48000.0, 1, 1, 400 }, { 48000.0, 64, 64, 400 }, { 48000.0, 512, 512, 400 }, { 48000.0, 1024, 1024, 400 }, { 44100.0, 128, 1000, 50 }
    };
    for (const auto& r : rows)
    {
        auto p = makePrepared (r.rate, r.prepared);
        EXPECT_EQ (allocationsWhileProcessing (*p, r.played, r.blocks), 0) << "prepared for " << r.prepared << ", blocks of " << r.played;
    }
}

TEST (Realtime, TheCounterSeesThisThreadsAllocationsOnly)
{
    // Another thread, started before counting, allocates while this one counts.
    std::atomic<int> stage { 0 };
    std::thread other ([&stage]
    {
        while (stage.load() == 0)
            std::this_thread::yield();
        auto p = std::make_unique<std::vector<int>> (100);
        stage = 2;
    });
    AllocationCounter counter;
    stage = 1;
    while (stage.load() != 2)
        std::this_thread::yield();
    EXPECT_EQ (counter.allocations(), 0);
    auto* v = new std::vector<int> (100);
    delete v;
    EXPECT_GE (counter.allocations(), 2);
    other.join();
}
