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

TEST (PlayOverlay, EditsReachTheProcessorAndNothingOutlivesTheOverlay)
{
    Overlay o;
    auto& overlay = *o.overlay;
    ostrel::widgets::PhraseStep first;
    first.note = 40;
    first.accent = true;
    overlay.phraseGrid.setStep (0, first);
    overlay.swingChip.setValue (62.0, juce::sendNotificationSync);
    const auto pattern = o.p.getPhrase();
    EXPECT_EQ (pattern.steps[0], (PhraseNote { 40, false, true }));
    EXPECT_FLOAT_EQ (pattern.swing, 0.62f);
    EXPECT_FLOAT_EQ (pattern.velocityScale, 0.85f) << "the velocity slider starts at 0.85";

    EXPECT_TRUE (overlay.keyPressed (juce::KeyPress (juce::KeyPress::spaceKey)));
    EXPECT_TRUE (o.p.isPhrasePlaying());
    EXPECT_FALSE (overlay.keyPressed (juce::KeyPress ('a')));
    EXPECT_EQ (o.held(), 1) << "the processor plays the first step at once";
    overlay.syncWithProcessor();
    EXPECT_EQ (overlay.phraseGrid.getPlayheadStep(), 0) << "the playhead comes from the audio thread";
    o.p.setPhrasePlaying (false); // as a host's stop does
    overlay.syncWithProcessor();
    EXPECT_FALSE (overlay.isPlaying());
    EXPECT_FALSE (overlay.playButton.getToggleState());
    EXPECT_EQ (overlay.phraseGrid.getPlayheadStep(), -1);
    EXPECT_TRUE (overlay.keyPressed (juce::KeyPress (juce::KeyPress::spaceKey)));

    // Closing the editor mid-phrase, with a key held under HOLD, leaves nothing sounding.
    overlay.holdButton.setToggleState (true, juce::dontSendNotification);
    overlay.holdButton.onClick();
    overlay.keyboard.onNoteOn (45, 1.0f);
    overlay.keyboard.onNoteOff (45);
    EXPECT_EQ (o.held(), 2);
    o.overlay.reset();
    EXPECT_EQ (o.held(), 0);
    EXPECT_FALSE (o.p.isPhrasePlaying());

    // A new overlay shows the phrase the processor kept.
    o.overlay = std::make_unique<ui::widgets::PlayOverlay> (o.p);
    EXPECT_EQ (o.overlay->phraseGrid.getStep (0).note, 40);
    EXPECT_EQ (juce::roundToInt (o.overlay->swingChip.getValue()), 62);
}
