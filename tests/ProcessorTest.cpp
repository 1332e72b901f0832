#include "TestHelpers.h"

#include "audio/MidiBlock.h"

#include <gtest/gtest.h>

using namespace morvane;
using namespace morvane::test;

namespace
{
using Block = std::vector<std::pair<int, juce::MidiMessage>>;

void processMidi (MorvaneAudioProcessor& p, const Block& events, int numSamples = 256)
{
    juce::AudioBuffer<float> buffer (p.getTotalNumOutputChannels(), numSamples);
    juce::MidiBuffer midi;
    for (const auto& [pos, m] : events)
        midi.addEvent (m, pos);
    p.processBlock (buffer, midi);
}

void processEmpty (MorvaneAudioProcessor& p, int numSamples = 256) { processMidi (p, {}, numSamples); }

juce::MidiMessage on (int note, float velocity = 1.0f) { return juce::MidiMessage::noteOn (1, note, velocity); }
juce::MidiMessage off (int note) { return juce::MidiMessage::noteOff (1, note); }

struct FixedTempo : juce::AudioPlayHead
{
    double bpm = 300.0;
    juce::Optional<PositionInfo> getPosition() const override
    {
        PositionInfo info;
        info.setBpm (bpm);
        return info;
    }
};
}

TEST (MidiSegments, CutsAtEveryEventWithoutZeroLengthRenders)
{
    struct Cuts { std::vector<std::pair<int, int>> ranges; std::vector<int> events; int renderedBeforeLast = 0; };
    const auto cut = [] (const Block& events)
    {
        juce::MidiBuffer midi;
        for (const auto& [pos, m] : events)
            midi.addEvent (m, pos);
        Cuts c;
        int rendered = 0;
        forEachMidiSegment (midi, 512,
                            [&] (int s, int n)
                            {
                                EXPECT_GT (n, 0);
                                EXPECT_EQ (s, rendered);
                                c.ranges.push_back ({ s, n });
                                rendered += n;
                            },
                            [&] (const juce::MidiMessageMetadata&, int pos)
                            {
                                c.events.push_back (pos);
                                c.renderedBeforeLast = rendered;
                            });
        return c;
    };
    using Ranges = std::vector<std::pair<int, int>>;
    const auto none = cut ({});
    EXPECT_EQ (none.ranges, (Ranges { { 0, 512 } })); // a block without events renders once
    EXPECT_TRUE (none.events.empty());

    // The last one lies past the end of the block.
    const auto some = cut ({ { 0, on (60) }, { 100, on (62) }, { 100, off (60) }, { 511, off (62) }, { 700, on (64) } });
    EXPECT_EQ (some.ranges, (Ranges { { 0, 100 }, { 100, 411 }, { 511, 1 } }));
    EXPECT_EQ (some.events, (std::vector<int> { 0, 100, 100, 511, 512 }));
    EXPECT_EQ (some.renderedBeforeLast, 512); // the late event comes after every sample
}

TEST (PitchBend, MapsToTwoSemitonesOnA14BitGrid)
{
    EXPECT_EQ (bendSemitonesFromRaw (8192), 0.0f);
    EXPECT_NEAR (bendSemitonesFromRaw (16383), 1.99976f, 1.0e-5f);
    EXPECT_EQ (bendSemitonesFromRaw (0), -2.0f);
    EXPECT_EQ (bendSemitonesFromRaw (99999), bendSemitonesFromRaw (16383));
    EXPECT_EQ (bendSemitonesFromNormalised (0.0f), 0.0f);
    EXPECT_NEAR (bendSemitonesFromNormalised (1.0f), 1.99976f, 1.0e-5f);
    EXPECT_NEAR (bendSemitonesFromNormalised (-1.0f), (1.0f - 8192.0f) / 8192.0f * 2.0f, 1.0e-6f);
    EXPECT_EQ (bendSemitonesFromNormalised (5.0f), bendSemitonesFromNormalised (1.0f));
}

TEST (Processor, IdentityAndBuses)
{
    MorvaneAudioProcessor p;
    EXPECT_EQ (p.getName(), "Morvane");
    EXPECT_TRUE (p.acceptsMidi());
    EXPECT_FALSE (p.producesMidi());
    EXPECT_EQ (p.getTailLengthSeconds(), 0.0);
    EXPECT_EQ (p.getNumPrograms(), 1);
    EXPECT_EQ (p.getTotalNumInputChannels(), 0);
    EXPECT_EQ (p.getTotalNumOutputChannels(), 2);
    EXPECT_EQ (p.getBus (false, 0)->getName(), "Out");

    juce::AudioProcessor::BusesLayout layout;
    layout.outputBuses.add (juce::AudioChannelSet::mono());
    EXPECT_TRUE (p.checkBusesLayoutSupported (layout));
    layout.outputBuses.getReference (0) = juce::AudioChannelSet::create5point1();
    EXPECT_FALSE (p.checkBusesLayoutSupported (layout));
}

TEST (Processor, ReportsTheOversamplersLatency)
{
    auto p = makePrepared (48000.0, 256);
    EXPECT_EQ (p->getLatencySamples(), p->getEngine().getLatencySamples());
    EXPECT_GT (p->getLatencySamples(), 0);
}

TEST (Processor, CommandRingHolds255AndDropsTheRest)
{
    auto p = makePrepared();
    // 254 mod-wheel moves, then the 255th command is a note: it fits, the 256th does not.
    for (int i = 0; i < 254; ++i)
        p->pushModWheel (0.5f);
    p->pushNoteOn (40, 1.0f);
    p->pushNoteOn (41, 1.0f);
    processEmpty (*p);
    EXPECT_EQ (p->getEngine().currentNote, 40);
    EXPECT_EQ (p->getHeldCount(), 1);

    // Drained, the ring takes commands again.
    p->pushNoteOn (45, 1.0f);
    processEmpty (*p);
    EXPECT_EQ (p->getEngine().currentNote, 45);
}

TEST (Processor, PushesLimitTheirValues)
{
    auto p = makePrepared();
    p->pushNoteOn (300, 7.0f);
    p->pushModWheel (4.0f);
    p->pushAftertouch (-1.0f);
    p->pushPitchBend (1.0f);
    processEmpty (*p);
    EXPECT_EQ (p->getEngine().currentNote, 127);
    EXPECT_EQ (p->getEngine().noteVelocity, 1.0f);
    EXPECT_EQ (p->getEngine().modWheel.load(), 1.0f);
    EXPECT_EQ (p->getEngine().aftertouch.load(), 0.0f);
    EXPECT_NEAR (p->getEngine().pitchBendSemitones, 1.99976f, 1.0e-5f);
}

TEST (Processor, TheKeyStackFollowsPressesAndReleases)
{
    // Blocks of events, then the key sounding (-1: none), the keys held and the sounding key's
    // velocity (the one stored with it when an older key takes over).
    const auto controller = [] (int number) { return juce::MidiMessage::controllerEvent (1, number, 0); };
    struct Row
    {
        const char* what;
        std::vector<Block> blocks;
        int note, held;
        float velocity;
    };
    const Row rows[] = {
        { "the same key twice", { { { 0, on (60) }, { 10, on (60) } } }, 60, 1, 1.0f },
        { "... then released", { { { 0, on (60) }, { 10, on (60) } }, { { 0, off (60) } } }, -1, 0, -1.0f },
        { "a newer key", { { { 0, on (60, 0.3f) }, { 50, on (64) } } }, 64, 2, 1.0f },
        { "the newest released", { { { 0, on (60, 0.3f) }, { 50, on (64) } }, { { 0, off (64) } } }, 60, 1, 0.3f },
        { "both released", { { { 0, on (60, 0.3f) }, { 50, on (64) } }, { { 0, off (64) } }, { { 0, off (60) } } }, -1, 0, -1.0f },
        { "an older key released", { { { 0, on (60) }, { 50, on (64) } }, { { 0, off (60) } } }, 64, 1, 1.0f },
        { "all notes off", { { { 0, on (60) }, { 1, on (64) } }, { { 3, controller (120) } } }, -1, 0, -1.0f },
        { "all sound off", { { { 0, on (60) }, { 1, on (64) } }, { { 3, controller (123) } } }, -1, 0, -1.0f },
    };
    for (const auto& row : rows)
    {
        auto p = makePrepared();
        for (const auto& block : row.blocks)
            processMidi (*p, block);
        EXPECT_EQ (p->getEngine().currentNote, row.note) << row.what;
        EXPECT_EQ (p->getHeldCount(), row.held) << row.what;
        if (row.velocity >= 0.0f)
        {
            EXPECT_NEAR (p->getEngine().noteVelocity, row.velocity, 0.01f) << row.what;
            EXPECT_FALSE (p->getEngine().isIdle()) << row.what;
        }
    }
}

TEST (Processor, StackHoldsEveryKeyAndRepressingMovesItToTheTop)
{
    auto p = makePrepared();
    Block everyKey;
    for (int i = 0; i < 128; ++i)
        everyKey.push_back ({ i, on (i) });
    processMidi (*p, everyKey, 512);
    EXPECT_EQ (p->getHeldCount(), 128);

    // 128 distinct keys are held; re-pressing one moves it to the top instead of growing.
    processMidi (*p, { { 0, on (5) } });
    EXPECT_EQ (p->getHeldCount(), 128);
    EXPECT_EQ (p->getEngine().currentNote, 5);
}

TEST (Processor, PanicCommandReleasesRatherThanCuts)
{
    auto p = makePrepared();
    processMidi (*p, { { 0, on (60) } }, 4800);
    p->pushPanic();
    processEmpty (*p, 32);
    EXPECT_EQ (p->getHeldCount(), 0);
    EXPECT_FALSE (p->getEngine().isIdle()); // in its release
}

TEST (Processor, ModWheelPressureAndBendFromMidi)
{
    auto p = makePrepared();
    processMidi (*p, { { 0, juce::MidiMessage::controllerEvent (1, 1, 127) },
                       { 1, juce::MidiMessage::channelPressureChange (3, 64) },
                       { 2, juce::MidiMessage::pitchWheel (5, 8192) } });
    EXPECT_EQ (p->getEngine().modWheel.load(), 1.0f);
    EXPECT_NEAR (p->getEngine().aftertouch.load(), 64.0f / 127.0f, 1.0e-6f);
    EXPECT_EQ (p->getEngine().pitchBendSemitones, 0.0f);

    processMidi (*p, { { 0, juce::MidiMessage::pitchWheel (1, 16383) } });
    EXPECT_NEAR (p->getEngine().pitchBendSemitones, 1.99976f, 1.0e-5f);
}

TEST (Processor, LegatoDecidesWhetherASecondKeyRetriggers)
{
    for (bool legato : { false, true })
    {
        auto p = makePatched ({ { "legato", legato ? 1.0f : 0.0f }, { "ampDecay", 0.05f }, { "ampSustain", 0.2f } });
        // Hold a note long enough to reach sustain, then add a second key.
        auto out = renderProcessor (*p, 48000, 480, { { 0, 60, 1.0f }, { 24000, 67, 1.0f } });
        const float* l = out.getReadPointer (0);
        const float before = peak (l + 23000, 900);
        const float after = peak (l + 24200, 900); // inside a fresh attack and decay, or still at sustain
        if (legato)
            EXPECT_NEAR (after, before, before * 0.1f);
        else
            EXPECT_GT (after, before * 2.0f);
    }
}

TEST (Processor, HostTempoPassesThroughAndOwnTempoIsLimited)
{
    auto p = makePrepared();
    setParameter (*p, "lfoSyncBpm", 240.0f);
    processEmpty (*p);
    EXPECT_EQ (p->getEngine().hostBpm, 240.0f);

    FixedTempo head;
    p->setPlayHead (&head);
    processEmpty (*p);
    EXPECT_EQ (p->getEngine().hostBpm, 300.0f);
    p->setPlayHead (nullptr);
}

TEST (Processor, PeakRisesAtOnceAndFallsAt24DbPerSecond)
{
    auto p = makePrepared (48000.0, 480);
    EXPECT_EQ (p->getPeakDb(), -120.0f);
    processMidi (*p, { { 0, on (69) } }, 4800);
    const float held = p->getPeakDb();
    EXPECT_GT (held, -10.0f);
    processMidi (*p, { { 0, off (69) } }, 480);
    // Silence after the release: 10 blocks of 10 ms fall 2.4 dB at most, never below what sounds.
    for (int i = 0; i < 100; ++i)
        processEmpty (*p, 480);
    EXPECT_NEAR (p->getPeakDb(), held - 24.0f - 0.24f, 1.0f);
}

TEST (Processor, MonoBusKeepsLevelThroughTheSumFactor)
{
    auto stereo = makePrepared(), mono = makePrepared (48000.0, 512, true);
    ASSERT_EQ (mono->getTotalNumOutputChannels(), 1);
    const auto s = renderNote (*stereo, 57, 9600), m = renderNote (*mono, 57, 9600);
    for (int i = 0; i < 9600; ++i)
        ASSERT_NEAR (m.getSample (0, i), (s.getSample (0, i) + s.getSample (1, i)) * 0.7071068f, 1.0e-6f);
}

// A host's bypass with a note held across it: a fade without a click, silence, and a clean return.
TEST (Processor, HostBypassFadesTheHeldVoiceOutAndReturnsClean)
{
    auto p = test::makePrepared (48000.0, 128);
    juce::AudioBuffer<float> buffer (2, 128);
    juce::MidiBuffer midi;
    auto largestStep = [&] (float& last)
    {
        float step = 0.0f;
        for (int i = 0; i < buffer.getNumSamples(); ++i)
        {
            step = std::max (step, std::abs (buffer.getSample (0, i) - last));
            last = buffer.getSample (0, i);
        }
        return step;
    };

    midi.addEvent (juce::MidiMessage::noteOn (1, 36, 1.0f), 0);
    float last = 0.0f, playingStep = 0.0f;
    for (int b = 0; b < 60; ++b)
    {
        p->processBlock (buffer, midi);
        midi.clear();
        playingStep = std::max (playingStep, largestStep (last));
    }
    ASSERT_GT (buffer.getMagnitude (0, 128), 0.05f);

    float fadeStep = 0.0f;
    for (int b = 0; b < 4; ++b)
    {
        p->processBlockBypassed (buffer, midi);
        fadeStep = std::max (fadeStep, largestStep (last));
    }
    EXPECT_LE (fadeStep, playingStep * 1.05f) << "the fade adds no step larger than the note's own";
    p->processBlockBypassed (buffer, midi);
    EXPECT_EQ (buffer.getMagnitude (0, 128), 0.0f) << "silent once 10 ms have passed";
    EXPECT_EQ (p->getHeldCount(), 0) << "the voice was let go";

    for (int b = 0; b < 750; ++b) // two seconds bypassed, the note's key still down
        p->processBlockBypassed (buffer, midi);
    EXPECT_EQ (buffer.getMagnitude (0, 128), 0.0f);
    float returned = 0.0f;
    for (int b = 0; b < 10; ++b)
    {
        p->processBlock (buffer, midi);
        returned = std::max (returned, buffer.getMagnitude (0, 128));
    }
    EXPECT_LT (returned, 1.0e-3f) << "un-bypassing starts clean, without the old note";
    midi.addEvent (juce::MidiMessage::noteOn (1, 40, 1.0f), 0);
    for (int b = 0; b < 20; ++b)
    {
        p->processBlock (buffer, midi);
        midi.clear();
    }
    EXPECT_GT (buffer.getMagnitude (0, 128), 0.05f) << "and plays the next note";
}
