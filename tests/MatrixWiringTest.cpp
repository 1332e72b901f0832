#include "TestHelpers.h"

#include "ui/Editor.h"
#include "ui/matrix/MatrixWiring.h"
#include "WidgetTestSupport.h"

#include <gtest/gtest.h>

using namespace morvane;
using namespace morvane::ui;

namespace
{
struct Matrix
{
    MorvaneAudioProcessor p;
    Matrix()
    {
        // An empty matrix to start from.
        for (int slot = 1; slot <= 8; ++slot)
            for (const char* field : { "Source", "Dest", "Amount" })
                test::setParameter (p, "mod" + juce::String (slot) + field, 0.0f);
    }
    float raw (const juce::String& id) { return p.getParameterTree().getRawParameterValue (id)->load(); }
};
}

TEST (MatrixWiring, DropsFillSlotsReuseTheirDestinationAndStopWhenFull)
{
    Matrix m;
    ASSERT_TRUE (matrix::assignSourceToDestination (m.p, 5, 1));
    EXPECT_EQ (m.raw ("mod1Source"), 5.0f);
    EXPECT_EQ (m.raw ("mod1Dest"), 1.0f);
    EXPECT_NEAR (m.raw ("mod1Amount"), 0.35f, 1e-4f);
    EXPECT_EQ (matrix::findSlotForDestination (m.p, 1), 1);

    // A second source on the same destination replaces the source and keeps the amount.
    test::setParameter (m.p, "mod1Amount", -0.25f);
    EXPECT_EQ (matrix::modulationStatusText (m.p, 1), juce::String (juce::CharPointer_UTF8 ("Modulating: LFO 1 \xc2\xb7 -25 %")));
    ASSERT_TRUE (matrix::assignSourceToDestination (m.p, 3, 1));
    EXPECT_EQ (m.raw ("mod1Source"), 3.0f);
    EXPECT_NEAR (m.raw ("mod1Amount"), -0.25f, 1e-4f);
    EXPECT_EQ (m.raw ("mod2Source"), 0.0f);

    // Clearing keeps the destination; the next drop reuses the slot and its 0 becomes 0.35.
    matrix::clearDestination (m.p, 1);
    EXPECT_EQ (m.raw ("mod1Source"), 0.0f);
    EXPECT_EQ (m.raw ("mod1Dest"), 1.0f);
    EXPECT_EQ (matrix::modulationStatusText (m.p, 1), "");
    EXPECT_EQ (matrix::findSlotForDestination (m.p, 1), 0) << "a slot whose source is off is no route";
    ASSERT_TRUE (matrix::assignSourceToDestination (m.p, 5, 1));
    EXPECT_NEAR (m.raw ("mod1Amount"), 0.35f, 1e-4f);
    test::setParameter (m.p, "mod1Amount", 0.0f);
    EXPECT_EQ (matrix::modulationStatusText (m.p, 1), juce::String (juce::CharPointer_UTF8 ("Modulating: LFO 1 \xc2\xb7 +0 %")));

    for (int d = 2; d <= 8; ++d)
        ASSERT_TRUE (matrix::assignSourceToDestination (m.p, 1, d));
    EXPECT_FALSE (matrix::assignSourceToDestination (m.p, 1, 9)) << "a ninth destination is refused";
}

TEST (MatrixWiring, AWiredKnobTakesDropsDragsItsDepthAndLearns)
{
    Matrix m;
    ostrel::widgets::Knob knob (ostrel::widgets::KnobSize::Small, false, false);
    knob.setSize (96, 100);
    matrix::wireKnob (knob, m.p, "filterCutoff", 1);
    EXPECT_TRUE (knob.isModulationEnabled());
    EXPECT_FALSE (knob.isModulated());

    juce::Component source;
    knob.itemDropped ({ "lfo1", &source, {} });
    EXPECT_EQ (m.raw ("mod1Source"), 5.0f);
    EXPECT_EQ (m.raw ("mod1Dest"), 1.0f);
    knob.itemDropped ({ "lfo1", &source, {} });
    EXPECT_EQ (m.raw ("mod2Source"), 0.0f) << "the same source twice takes no second slot";
    matrix::refreshKnobs (m.p);
    EXPECT_TRUE (knob.isModulated());

    // The ring drag changes this slot's amount only.
    const auto cutoff = m.raw ("filterCutoff");
    ostrel::widgets::test::Mouse mouse (knob);
    const auto g = knob.geometry();
    const juce::Point<float> ring (g.cx, g.cy - g.haloD * 0.5f + 4.0f);
    mouse.down (ring);
    EXPECT_TRUE (knob.isDraggingDepth());
    mouse.drag (ring + juce::Point<float> (0.0f, -60.0f));
    mouse.up (ring + juce::Point<float> (0.0f, -60.0f));
    EXPECT_GT (m.raw ("mod1Amount"), 0.36f);
    EXPECT_EQ (m.raw ("mod2Amount"), 0.0f);
    EXPECT_EQ (m.raw ("filterCutoff"), cutoff) << "the knob's own value stays";

    // Learn from the menu, then a controller completes it on the audio thread.
    knob.handleMenuResult (ostrel::widgets::Knob::menuMidiLearn);
    EXPECT_TRUE (m.p.isMidiLearnTarget ("filterCutoff"));
    EXPECT_TRUE (knob.isMidiLearnPending());
    m.p.prepareToPlay (48000.0, 64);
    juce::AudioBuffer<float> buffer (2, 64);
    juce::MidiBuffer midi;
    midi.addEvent (juce::MidiMessage::controllerEvent (1, 21, 100), 0);
    m.p.processBlock (buffer, midi);
    matrix::refreshKnobs (m.p);
    EXPECT_FALSE (knob.isMidiLearnPending());
    EXPECT_GE (m.p.getControllerBinding (21), 0);

    // A second instance's editor never reaches this knob: not its pulse, not its reveal.
    MorvaneAudioProcessor other;
    knob.handleMenuResult (ostrel::widgets::Knob::menuMidiLearn);
    bool revealed = false, otherRevealed = false;
    matrix::wiringOf (m.p).revealInMatrix = [&] (int d) { revealed = d == 1; };
    matrix::wiringOf (other).revealInMatrix = [&] (int) { otherRevealed = true; };
    matrix::refreshKnobs (other);
    EXPECT_TRUE (knob.isMidiLearnPending());
    knob.handleMenuResult (ostrel::widgets::Knob::menuReveal);
    EXPECT_TRUE (revealed);
    EXPECT_FALSE (otherRevealed);
    matrix::forgetWiring (other);
    matrix::forgetWiring (m.p);
    knob.handleMenuResult (ostrel::widgets::Knob::menuMidiLearn);

    knob.handleMenuResult (ostrel::widgets::Knob::menuRemoveModulation);
    EXPECT_EQ (m.raw ("mod1Source"), 0.0f);
}

TEST (MatrixWiring, TheLiveDotFollowsTheSlotOutputsAndALearntControllerMovesTheKnob)
{
    Matrix m;
    test::setParameter (m.p, "lfo1Rate", 8.0f);
    test::setParameter (m.p, "lfo1Depth", 1.0f);
    ostrel::widgets::Knob knob (ostrel::widgets::KnobSize::Small, false, false);
    knob.attachToParameter (m.p.getParameterTree(), "filterCutoff");
    matrix::wireKnob (knob, m.p, "filterCutoff", 1);
    ASSERT_TRUE (matrix::assignSourceToDestination (m.p, 5, 1));
    test::setParameter (m.p, "mod1Amount", 1.0f);

    m.p.prepareToPlay (48000.0, 256);
    juce::AudioBuffer<float> buffer (2, 256);
    juce::MidiBuffer midi;
    midi.addEvent (juce::MidiMessage::noteOn (1, 40, 1.0f), 0);
    double lowest = 1.0, highest = 0.0;
    for (int block = 0; block < 60; ++block)
    {
        m.p.processBlock (buffer, midi);
        midi.clear();
        matrix::refreshKnobs (m.p);
        lowest = std::min (lowest, knob.getLivePosition());
        highest = std::max (highest, knob.getLivePosition());
    }
    EXPECT_LT (lowest, 0.4) << "an 8 Hz LFO at full depth swings the dot";
    EXPECT_GT (highest, 0.6);

    knob.handleMenuResult (ostrel::widgets::Knob::menuMidiLearn);
    midi.addEvent (juce::MidiMessage::controllerEvent (1, 74, 0), 0);
    m.p.processBlock (buffer, midi);
    midi.clear();
    midi.addEvent (juce::MidiMessage::controllerEvent (1, 74, 127), 0);
    m.p.processBlock (buffer, midi);
    m.p.flushLearntControllers();
    juce::MessageManager::getInstance()->runDispatchLoopUntil (30);
    EXPECT_NEAR (knob.getValue(), knob.getMaximum(), 1e-6) << "the knob follows the learnt controller";
}

// Two instances with open editors in one process, as a host runs them: each editor's timer, learn
// pulse and jump to the matrix reach its own instance only, and closing one leaves the other whole.
TEST (MatrixWiring, TwoInstancesWithOpenEditorsAreIndependent)
{
    const auto dir = morvane::test::uniqueTempFile ("morvane-two");
    dir.createDirectory();
    MorvaneAudioProcessor a, b;
    for (auto* p : { &a, &b })
        p->prepareToPlay (48000.0, 256);
    auto ea = std::make_unique<ui::Editor> (a, dir.getChildFile ("a.settings"));
    ui::Editor eb (b, dir.getChildFile ("b.settings"));
    auto cutoffKnob = [] (MorvaneAudioProcessor& p) -> ostrel::widgets::Knob*
    {
        for (auto& entry : matrix::knobRegistry (p))
            if (entry.parameterId == "filterCutoff" && entry.knob != nullptr)
                return entry.knob.getComponent();
        return nullptr;
    };
    auto* knobA = cutoffKnob (a);
    auto* knobB = cutoffKnob (b);
    ASSERT_TRUE (knobA != nullptr && knobB != nullptr && knobA != knobB);

    // A's LFO sweeps A's cut-off; B has no route and waits for a controller on its cut-off.
    test::setParameters (a, { { "lfo1Rate", 8.0f }, { "lfo1Depth", 1.0f } });
    ASSERT_TRUE (matrix::assignSourceToDestination (a, 5, 1));
    test::setParameter (a, "mod1Amount", 1.0f);
    knobB->handleMenuResult (ostrel::widgets::Knob::menuMidiLearn);
    juce::AudioBuffer<float> buffer (2, 256);
    juce::MidiBuffer midi;
    midi.addEvent (juce::MidiMessage::noteOn (1, 40, 1.0f), 0);
    for (int block = 0; block < 40; ++block)
    {
        a.processBlock (buffer, midi);
        midi.clear();
        b.processBlock (buffer, midi);
        juce::MessageManager::getInstance()->runDispatchLoopUntil (5);
    }
    EXPECT_TRUE (knobA->isModulated());
    EXPECT_FALSE (knobB->isModulated()) << "A's slots never reach B's rings";
    EXPECT_EQ (knobB->getLivePosition(), 0.5);
    EXPECT_TRUE (knobB->isMidiLearnPending()) << "A's timer leaves B's learn alone";
    EXPECT_TRUE (b.isMidiLearnTarget ("filterCutoff"));

    // Closing A leaves B's jump to the matrix in place.
    ea.reset();
    knobB->handleMenuResult (ostrel::widgets::Knob::menuReveal);
    EXPECT_EQ (eb.getActiveView(), (int) ui::Editor::matrixView);
    dir.deleteRecursively();
}
