// The processor as a session runs it: the audio thread playing, the editor open on the message
// thread with its timers, and a host automating and saving or restoring the state on a thread of
// its own, all at once. Under ThreadSanitizer (scripts/sanitize) this is where races show; here it
// checks that nothing is lost on the way.
#include "TestHelpers.h"

#include "ui/Editor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

using namespace morvane;

namespace
{
void pump (int ms) { juce::MessageManager::getInstance()->runDispatchLoopUntil (ms); }

template <typename Condition>
bool pumpUntil (Condition done, int timeoutMs = 20000)
{
    const auto end = juce::Time::getMillisecondCounter() + (juce::uint32) timeoutMs;
    while (! done())
    {
        if (juce::Time::getMillisecondCounter() > end)
            return false;
        pump (2);
    }
    return true;
}
} // namespace

TEST (Threads, AudioEditorAndHostRunTogether)
{
    const auto settingsDir = test::uniqueTempFile ("morvane-threads");
    settingsDir.createDirectory();
    MorvaneAudioProcessor p;
    p.setRateAndBufferSizeDetails (48000.0, 128);
    p.prepareToPlay (48000.0, 128);
    auto editor = std::make_unique<ui::Editor> (p, settingsDir.getChildFile ("Morvane.settings"));

    PhrasePattern phrase;
    for (int i = 0; i < 16; i += 2)
        phrase.steps[(size_t) i] = { (std::int8_t) (36 + i), false, i % 4 == 0 };
    phrase.swing = 0.6f;

    std::atomic<bool> stopAudio { false }, stopHost { false }, restoring { false };
    std::atomic<int> blocks { 0 }, badBlocks { 0 }, saves { 0 }, restores { 0 };

    // The audio thread: notes, a controller that a learn is waiting for, and the pitch wheel.
    std::thread audio ([&]
    {
        juce::AudioBuffer<float> buffer (2, 128);
        juce::MidiBuffer midi;
        midi.ensureSize (256);
        // It stops only between a note's release and the next note.
        for (int b = 0; ! (stopAudio.load() && b % 8 == 7); ++b)
        {
            midi.clear();
            if (b % 8 == 0)
                midi.addEvent (juce::MidiMessage::noteOn (1, 40 + (b / 8) % 12, 0.8f), 5);
            if (b % 8 == 6)
                midi.addEvent (juce::MidiMessage::noteOff (1, 40 + (b / 8) % 12), 60);
            midi.addEvent (juce::MidiMessage::controllerEvent (1, 74, b % 128), 20);
            midi.addEvent (juce::MidiMessage::pitchWheel (1, 8192 + (b % 64) * 64), 90);
            p.processBlock (buffer, midi);
            for (int c = 0; c < 2; ++c)
                for (int i = 0; i < buffer.getNumSamples(); ++i)
                    if (! std::isfinite (buffer.getSample (c, i)))
                    {
                        ++badBlocks;
                        c = 2;
                        break;
                    }
            ++blocks;
            std::this_thread::sleep_for (std::chrono::microseconds (500));
        }
    });

    // The host: automation and state saves; then, once told, restores of its last save.
    juce::MemoryBlock lastSave;
    std::thread host ([&]
    {
        auto* resonance = p.getParameterTree().getParameter ("filterReso");
        auto* drive = p.getParameterTree().getParameter ("drive");
        ASSERT_TRUE (resonance != nullptr && drive != nullptr);
        for (int i = 0; ! stopHost.load(); ++i)
        {
            resonance->setValueNotifyingHost ((float) (i % 10) / 10.0f);
            drive->setValueNotifyingHost ((float) (i % 7) / 7.0f);
            if (restoring.load())
            {
                p.setStateInformation (lastSave.getData(), (int) lastSave.getSize());
                ++restores;
            }
            else
            {
                lastSave.reset();
                p.getStateInformation (lastSave);
                ++saves;
            }
            std::this_thread::sleep_for (std::chrono::milliseconds (1));
        }
    });

    // The message thread: a learn, the on-screen keys through the ring, the phrase playing, and
    // the editor's own timers, while the views change.
    p.startMidiLearn ("filterCutoff");
    p.setPhrase (phrase);
    p.setPhrasePlaying (true);
    const int cutoff = p.findParameterIndex ("filterCutoff");
    for (int view = 0; view < 6; ++view)
    {
        editor->setActiveView (view);
        for (int k = 0; k < 4; ++k)
        {
            p.pushNoteOn (60 + k, 0.7f);
            pump (15);
            p.pushNoteOff (60 + k);
        }
    }
    EXPECT_TRUE (pumpUntil ([&] { return p.getControllerBinding (74) == cutoff && saves.load() > 20; }))
        << "learnt " << p.getControllerBinding (74) << ", saves " << saves.load();
    // Two more saves: the last one before the restores began after the learn.
    const int learntAt = saves.load();
    ASSERT_TRUE (pumpUntil ([&] { return saves.load() >= learntAt + 2; }));

    restoring = true;
    ASSERT_TRUE (pumpUntil ([&] { return restores.load() > 20; }));
    for (int view = 5; view >= 0; --view)
    {
        editor->setActiveView (view);
        pump (20);
    }
    stopHost = true;
    host.join();
    p.setPhrasePlaying (false);
    pump (50);
    stopAudio = true;
    audio.join();
    editor.reset();
    settingsDir.deleteRecursively();

    EXPECT_GT (blocks.load(), 100);
    EXPECT_EQ (badBlocks.load(), 0);
    // The restored state is the last save, taken after the learn: the binding and the phrase stand.
    EXPECT_EQ (p.getControllerBinding (74), cutoff);
    EXPECT_EQ (p.getPhrase().steps, phrase.steps);
    EXPECT_FLOAT_EQ (p.getPhrase().swing, 0.6f);
    EXPECT_EQ (p.getHeldCount(), 0) << "every key pressed on screen was released";
}
