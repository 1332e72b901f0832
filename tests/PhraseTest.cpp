#include "TestHelpers.h"

#include "audio/PhraseText.h"

#include <gtest/gtest.h>

using namespace morvane;

namespace
{
PhrasePattern everyStepANote (float swing)
{
    PhrasePattern p;
    for (int k = 0; k < PhrasePattern::maxSteps; ++k)
        p.steps[(size_t) k] = { (std::int8_t) (36 + k), false, k == 10 };
    p.swing = swing;
    return p;
}

// Drives the sequencer block by block exactly as the processor does, and notes where each note
// starts and ends, in samples from the first block.
struct SequencerRun
{
    PhraseSequencer seq;
    PhraseMailbox box;
    std::vector<std::pair<long, int>> ons, offs;
    std::vector<float> velocities;
    long rendered = 0;

    SequencerRun (const PhrasePattern& pattern, double rate)
    {
        box.publish (pattern);
        seq.prepare (rate);
        seq.playRequested.store (true);
    }

    void block (int n, const PhraseTransport& transport)
    {
        auto off = [this] (int note) { offs.push_back ({ rendered, note }); };
        seq.beginBlock (box, transport, off);
        seq.run (0, n, [this] (int, int count) { rendered += count; },
                 [this] (int note, float velocity)
                 {
                     ons.push_back ({ rendered, note });
                     velocities.push_back (velocity);
                 }, off);
        seq.endBlock (n);
    }
};

struct HostHead : juce::AudioPlayHead
{
    juce::AudioPlayHead::PositionInfo info;
    juce::Optional<PositionInfo> getPosition() const override { return info; }
};
}

TEST (Phrase, EveryOnsetFallsOnItsSampleAtAnyTempoRateBlockAndSwing)
{
    for (double bpm : { 90.0, 120.0, 140.0, 174.0 })
        for (double rate : { 44100.0, 48000.0, 96000.0 })
            for (int blockSize : { 1, 64, 512 })
                for (float swing : { 0.5f, 0.62f })
                {
                    SequencerRun run (everyStepANote (swing), rate);
                    PhraseTransport free;
                    free.bpm = bpm;
                    const double sixteenth = 60.0 / bpm / 4.0 * rate;
                    while (run.ons.size() < 64)
                        run.block (blockSize, free);
                    for (int k = 0; k < 64; ++k)
                    {
                        const double ideal = ((k & 1) == 0 ? k : k - 1 + 2.0 * swing) * sixteenth;
                        const auto [sample, note] = run.ons[(size_t) k];
                        ASSERT_TRUE (sample - ideal >= -1.0e-6 && sample - ideal < 1.0)
                            << "step " << k << " at " << bpm << " bpm, " << rate << " Hz, blocks of " << blockSize
                            << ", swing " << swing << ": " << sample << " against " << ideal;
                        ASSERT_EQ (note, 36 + k % 16);
                    }
                    // 0.72 unaccented, 1 accented, times the velocity slider (0.85 by default).
                    EXPECT_FLOAT_EQ (run.velocities[0], 0.72f * 0.85f);
                    // An untied note ends where the next one starts.
                    ASSERT_GE (run.offs.size(), 63u);
                    EXPECT_EQ (run.offs[10].first, run.ons[11].first);
                }
}

TEST (Phrase, FollowsTheHostsBarAndATempoChangeMovesTheNextStep)
{
    const double rate = 48000.0;
    SequencerRun run (everyStepANote (0.5f), rate);
    PhraseTransport host;
    host.hostPlaying = true;
    // The host starts mid-bar, on its eleventh sixteenth (2.5 quarters in): step 10 plays first.
    double ppq = 2.5, bpm = 120.0;
    std::vector<std::pair<double, double>> tempoAt; // (first sample, ppq there) of each tempo span
    long sample = 0;
    auto play = [&] (int blocks)
    {
        for (int b = 0; b < blocks; ++b)
        {
            host.bpm = bpm;
            host.ppq = ppq;
            host.ppqBarStart = std::floor (ppq / 4.0) * 4.0;
            run.block (512, host);
            ppq += 512.0 / rate * bpm / 60.0;
            sample += 512;
        }
    };
    play (200);
    ASSERT_FALSE (run.ons.empty());
    EXPECT_EQ (run.ons[0], (std::pair<long, int> { 0, 36 + 10 }));
    EXPECT_FLOAT_EQ (run.velocities[0], 0.85f) << "step 10 is accented";
    const size_t before = run.ons.size();
    const long changeSample = sample;
    const double changePpq = ppq;
    bpm = 140.0;
    play (200);
    ASSERT_GT (run.ons.size(), before + 4);
    // The first step after the change falls where the host's new grid puts it.
    const double nextSixteenth = std::floor (changePpq * 4.0) + 1.0;
    const double ideal = changeSample + (nextSixteenth / 4.0 - changePpq) * 60.0 / 140.0 * rate;
    EXPECT_NEAR ((double) run.ons[before].first, ideal, 1.0);
    EXPECT_EQ (run.ons[before].second, 36 + (int) nextSixteenth % 16);

    // The host stops: the phrase stops, lets its note go and gives up PLAY.
    host.hostPlaying = false;
    run.block (512, host);
    EXPECT_FALSE (run.seq.isRunning());
    EXPECT_FALSE (run.seq.playRequested.load());
    EXPECT_EQ (run.offs.back().second, run.ons.back().second);
}

TEST (Phrase, TiesHoldRestsAreSilentAndEveryWayOfStoppingReleases)
{
    auto p = test::makePrepared (48000.0, 64);
    test::setParameter (*p, "lfoSyncBpm", 120.0f); // a sixteenth is 6000 samples
    PhrasePattern pattern;
    ASSERT_TRUE (phraseFromText ("C2\ntie\nrest\nE2 acc\n", pattern).isEmpty());
    p->setPhrase (pattern);

    juce::AudioBuffer<float> buffer (2, 64);
    juce::MidiBuffer midi;
    auto playTo = [&] (int samples) { for (int done = 0; done < samples; done += 64) p->processBlock (buffer, midi); };

    p->setPhrasePlaying (true);
    playTo (3000);
    EXPECT_EQ (p->getEngine().currentNote, 36);
    playTo (6000);
    EXPECT_EQ (p->getHeldCount(), 1) << "the tie holds C2 through the second step";
    EXPECT_EQ (p->getPhrasePlayhead(), 1);
    playTo (6000);
    EXPECT_EQ (p->getHeldCount(), 0) << "the rest is silent";
    playTo (6000);
    EXPECT_EQ (p->getEngine().currentNote, 40);
    EXPECT_EQ (p->getHeldCount(), 1);

    // A tied step with nothing sounding starts its own note.
    p->setPhrasePlaying (false);
    playTo (64);
    ASSERT_TRUE (phraseFromText ("G2 tie\nrest\n", pattern).isEmpty());
    p->setPhrase (pattern);
    p->setPhrasePlaying (true);
    playTo (64);
    EXPECT_EQ (p->getEngine().currentNote, 43);
    EXPECT_EQ (p->getHeldCount(), 1);

    HostHead head;
    const std::pair<const char*, std::function<void()>> stops[] = {
        { "PLAY off", [&] { p->setPhrasePlaying (false); } },
        { "the editor's panic", [&] { p->pushPanic(); } },
        { "MIDI all-notes-off", [&] { midi.addEvent (juce::MidiMessage::allNotesOff (1), 0); } },
        { "the host stopping", [&] { head.info.setIsPlaying (false); } },
    };
    for (const auto& [name, stop] : stops)
    {
        head.info.setIsPlaying (name == stops[3].first);
        head.info.setPpqPosition (0.0);
        head.info.setBpm (120.0);
        p->setPlayHead (&head);
        p->setPhrasePlaying (true);
        playTo (640);
        ASSERT_EQ (p->getHeldCount(), 1) << name;
        stop();
        p->processBlock (buffer, midi);
        midi.clear();
        EXPECT_EQ (p->getHeldCount(), 0) << name;
        EXPECT_FALSE (p->isPhrasePlaying()) << name;
        playTo (12000);
        EXPECT_EQ (p->getHeldCount(), 0) << name << ": nothing starts again";
        p->setPlayHead (nullptr);
    }
}

TEST (Phrase, TextAndStateKeepThePhraseButPresetsDont)
{
    PhrasePattern read;
    const auto error = phraseFromText ("# a line\nC2 acc\n  tie\nrest\nD#3 tie\n60\nBb-1\n", read);
    ASSERT_TRUE (error.isEmpty()) << error;
    EXPECT_EQ (read.stepCount, 6);
    EXPECT_EQ (read.steps[0], (PhraseNote { 36, false, true }));
    EXPECT_EQ (read.steps[1], (PhraseNote { 36, true, false }));
    EXPECT_EQ (read.steps[3], (PhraseNote { 51, true, false }));
    EXPECT_EQ (read.steps[5].note, 10);
    PhrasePattern again;
    ASSERT_TRUE (phraseFromText (phraseToText (read), again).isEmpty());
    EXPECT_EQ (again.steps, read.steps);

    const std::pair<const char*, const char*> faults[] = {
        { "C2\nH2\n", "line 2" }, { "C2 loud\n", "unknown word" }, { "rest C2\n", "line 1" },
        { "C10\n", "not a note" }, { "128\n", "not a note" }, { "\n# nothing\n", "no steps" },
        { "C2\nC2\nC2\nC2\nC2\nC2\nC2\nC2\nC2\nC2\nC2\nC2\nC2\nC2\nC2\nC2\nC2\n", "at most 16" },
    };
    for (auto [text, message] : faults)
    {
        PhrasePattern kept = read;
        EXPECT_TRUE (phraseFromText (text, kept).contains (message)) << text;
        EXPECT_EQ (kept.steps, read.steps) << "a refused text changes nothing";
    }

    MorvaneAudioProcessor source;
    read.swing = 0.66f;
    source.setPhrase (read);
    source.setPhraseEditMode (2);
    juce::MemoryBlock blob;
    source.getStateInformation (blob);
    MorvaneAudioProcessor restored;
    restored.setStateInformation (blob.getData(), (int) blob.getSize());
    EXPECT_EQ (restored.getPhrase().steps, read.steps);
    EXPECT_EQ (restored.getPhrase().stepCount, 6);
    EXPECT_FLOAT_EQ (restored.getPhrase().swing, 0.66f);
    EXPECT_EQ (restored.getPhraseEditMode(), 2);
    EXPECT_EQ (restored.createStateXml()->getChildByName ("UISTATE"), nullptr) << "a preset is the sound alone";

    // A state from before the phrase was kept brings an empty one.
    auto xml = restored.createStateXml();
    juce::MemoryBlock old;
    juce::AudioProcessor::copyXmlToBinary (*xml, old);
    restored.setStateInformation (old.getData(), (int) old.getSize());
    EXPECT_TRUE (restored.getPhrase().isEmpty());
    EXPECT_FLOAT_EQ (restored.getPhrase().swing, 0.5f);
}
