#include "TestHelpers.h"

#include "ui/widgets/PlayOverlay.h"

#include <gtest/gtest.h>

using namespace morvane;

namespace
{
struct Overlay
{
    MorvaneAudioProcessor p;
    std::unique_ptr<ui::widgets::PlayOverlay> overlay;
    juce::AudioBuffer<float> buffer { 2, 64 };
    juce::MidiBuffer midi;
    Overlay()
    {
        p.prepareToPlay (48000.0, 64);
        overlay = std::make_unique<ui::widgets::PlayOverlay> (p);
        overlay->setBounds (0, 0, 1284, 636);
        overlay->setVisible (true);
    }
    // The ring reaches the note stack at the next block.
    int held()
    {
        p.processBlock (buffer, midi);
        return p.getHeldCount();
    }
};
}

TEST (PlayOverlay, KeysHoldAndPanic)
{
    Overlay o;
    auto& kb = o.overlay->keyboard;
    kb.onNoteOn (40, 1.0f);
    EXPECT_EQ (o.held(), 1);
    kb.onNoteOff (40);
    EXPECT_EQ (o.held(), 0);

    o.overlay->holdButton.setToggleState (true, juce::dontSendNotification);
    o.overlay->holdButton.onClick();
    kb.onNoteOn (40, 1.0f);
    kb.onNoteOn (43, 1.0f);
    kb.onNoteOff (40);
    kb.onNoteOff (43);
    EXPECT_EQ (o.held(), 2) << "with HOLD the released keys keep sounding";
    o.overlay->holdButton.setToggleState (false, juce::dontSendNotification);
    o.overlay->holdButton.onClick();
    EXPECT_EQ (o.held(), 0) << "HOLD off silences them all at once";

    o.overlay->pitchWheel.setValue (0.8f, true);
    kb.onNoteOn (45, 1.0f);
    o.overlay->setVisible (false);
    EXPECT_EQ (o.held(), 0) << "leaving the view silences it";
    EXPECT_EQ (o.overlay->pitchWheel.getValue(), 0.0f);
}

TEST (PlayOverlay, ThePhraseClockPlaysStepsTiesAndRests)
{
    Overlay o;
    auto& overlay = *o.overlay;
    auto& grid = overlay.phraseGrid;
    ostrel::widgets::PhraseStep first, tied, rest;
    first.note = 40;
    tied.note = 47;
    tied.tied = true;
    grid.setStep (0, first);
    grid.setStep (1, tied);
    grid.setStep (2, rest);

    overlay.setPlaying (true);
    double now = juce::Time::getMillisecondCounterHiRes();
    overlay.tick (now);
    EXPECT_EQ (overlay.getCurrentStep(), 0);
    EXPECT_EQ (overlay.getSoundingNote(), 40);
    overlay.tick (now + 1.0);
    EXPECT_EQ (overlay.getCurrentStep(), 0) << "a sixteenth at 120 bpm is 125 ms";
    now += 126.0;
    overlay.tick (now);
    EXPECT_EQ (overlay.getSoundingNote(), 40) << "a tied step keeps the sounding note, whatever its pitch";
    now += 126.0;
    overlay.tick (now);
    EXPECT_EQ (overlay.getSoundingNote(), -1) << "a rest stops it";
    EXPECT_EQ (grid.getPlayheadStep(), 2);

    EXPECT_TRUE (overlay.keyPressed (juce::KeyPress (juce::KeyPress::spaceKey)));
    EXPECT_FALSE (overlay.isPlaying());
    EXPECT_EQ (grid.getPlayheadStep(), -1);
    EXPECT_FALSE (overlay.keyPressed (juce::KeyPress ('a')));

    // A tied first step with nothing sounding starts its note.
    grid.setStep (0, tied);
    overlay.setPlaying (true);
    overlay.tick (juce::Time::getMillisecondCounterHiRes());
    EXPECT_EQ (overlay.getSoundingNote(), 47);
    overlay.panic();
    EXPECT_FALSE (overlay.isPlaying());
    EXPECT_EQ (o.held(), 0);
}
