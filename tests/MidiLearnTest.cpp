#include "TestHelpers.h"

using namespace morvane;
using namespace morvane::test;

namespace
{
struct Rig
{
    MorvaneAudioProcessor p;
    juce::AudioBuffer<float> buffer { 2, 64 };

    Rig() { p.prepareToPlay (48000.0, 64); }

    void send (const juce::MidiMessage& m)
    {
        juce::MidiBuffer midi;
        midi.addEvent (m, 3);
        p.processBlock (buffer, midi);
    }
    void cc (int number, int v) { send (juce::MidiMessage::controllerEvent (1, number, v)); }

    float raw (const char* id) { return p.getParameterTree().getRawParameterValue (id)->load(); }
    float host (const char* id)
    {
        auto* parameter = dynamic_cast<juce::RangedAudioParameter*> (p.getParameterTree().getParameter (id));
        return parameter->convertFrom0to1 (parameter->getValue());
    }
};
}

TEST (MidiLearn, TheFirstControllerBindsAndActsAtOnceWithoutMarkingThePatch)
{
    Rig r;
    r.p.startMidiLearn ("filterReso");
    EXPECT_TRUE (r.p.isMidiLearnTarget ("filterReso"));
    r.cc (74, 127);
    EXPECT_FALSE (r.p.isMidiLearnTarget ("filterReso"));
    EXPECT_EQ (r.p.getControllerBinding (74), r.p.findParameterIndex ("filterReso"));
    EXPECT_FLOAT_EQ (r.raw ("filterReso"), 1.0f);  // the sound sees it now
    EXPECT_FLOAT_EQ (r.host ("filterReso"), 0.0f); // the host hears of it from the timer
    r.p.flushLearntControllers();
    EXPECT_FLOAT_EQ (r.host ("filterReso"), 1.0f);
    EXPECT_FALSE (r.p.isPresetDirty());

    r.cc (74, 0);
    EXPECT_FLOAT_EQ (r.raw ("filterReso"), 0.0f);

    // A save right after holds the tree's older value of the parameter.
    r.cc (74, 127);
    r.p.flushLearntControllers();
    juce::MemoryBlock blob;
    r.p.getStateInformation (blob);
    const auto xml = juce::AudioProcessor::getXmlFromBinary (blob.getData(), (int) blob.getSize());
    for (auto* param : xml->getChildWithTagNameIterator ("PARAM"))
        if (param->getStringAttribute ("id") == "filterReso")
        {
            EXPECT_FLOAT_EQ ((float) param->getDoubleAttribute ("value"), 0.0f);
        }
}

TEST (MidiLearn, SkewedAndChoiceParametersFollowTheirRanges)
{
    Rig r;
    r.p.startMidiLearn ("filterCutoff");
    r.cc (20, 64);
    EXPECT_NEAR (r.raw ("filterCutoff"), 632.5f, 40.0f); // near the geometric middle of 20..20000

    r.p.startMidiLearn ("filterModel");
    r.cc (21, 127);
    EXPECT_FLOAT_EQ (r.raw ("filterModel"), 3.0f);
    r.cc (21, 50);
    EXPECT_FLOAT_EQ (r.raw ("filterModel"), 1.0f);
}

TEST (MidiLearn, RebindingAndSharingAParameter)
{
    Rig r;
    r.p.startMidiLearn ("drive");
    r.cc (10, 0);
    r.p.startMidiLearn ("drive");
    r.cc (11, 127);
    EXPECT_EQ (r.p.getControllerBinding (10), r.p.findParameterIndex ("drive"));
    EXPECT_EQ (r.p.getControllerBinding (11), r.p.findParameterIndex ("drive"));
    r.cc (10, 127);
    EXPECT_FLOAT_EQ (r.raw ("drive"), 24.0f);
    r.cc (11, 0);
    EXPECT_FLOAT_EQ (r.raw ("drive"), 0.0f); // the later message of either wins

    r.p.startMidiLearn ("lfo1Depth");
    r.cc (10, 127);
    EXPECT_EQ (r.p.getControllerBinding (10), r.p.findParameterIndex ("lfo1Depth"));
    r.cc (10, 0);
    EXPECT_FLOAT_EQ (r.raw ("drive"), 0.0f);
    EXPECT_FLOAT_EQ (r.raw ("lfo1Depth"), 0.0f);
}

TEST (MidiLearn, OnlyControllersCompleteALearnAndPanicControllersNever)
{
    Rig r;
    r.p.startMidiLearn ("drive");
    r.send (juce::MidiMessage::noteOn (1, 60, 0.5f));
    r.send (juce::MidiMessage::pitchWheel (1, 12000));
    r.send (juce::MidiMessage::channelPressureChange (1, 40));
    r.cc (120, 0);
    r.cc (123, 0);
    EXPECT_TRUE (r.p.isMidiLearnTarget ("drive"));
    EXPECT_EQ (r.p.getControllerBinding (120), -1);
    EXPECT_EQ (r.p.getControllerBinding (123), -1);

    // The mod wheel can be learnt and still moves the wheel.
    r.cc (1, 127);
    EXPECT_EQ (r.p.getControllerBinding (1), r.p.findParameterIndex ("drive"));
    EXPECT_FLOAT_EQ (r.p.getEngine().modWheel.load(), 1.0f);

    r.p.startMidiLearn ("noSuchParameter");
    EXPECT_FALSE (r.p.isMidiLearnTarget ("noSuchParameter"));
    r.cc (40, 100);
    EXPECT_EQ (r.p.getControllerBinding (40), -1);

    r.p.startMidiLearn ("drive");
    r.p.cancelMidiLearn();
    r.cc (41, 100);
    EXPECT_EQ (r.p.getControllerBinding (41), -1);
}

TEST (MidiLearn, EveryControllerValueLeavesThePatchCleanOnSkewedLinearAndChoiceParameters)
{
    Rig r;
    // Every parameter whose range is skewed, the pulse widths (linear but not 0..1), a plain linear
    // one, a choice and a switch.
    juce::StringArray ids { "osc1PulseWidth", "osc2PulseWidth", "drive", "filterModel", "delayEnable" };
    for (auto* p : r.p.getParameters())
        if (auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (p); ranged->getNormalisableRange().skew != 1.0f)
            ids.add (ranged->getParameterID());
    ASSERT_TRUE (ids.contains ("filterCutoff") && ids.contains ("lfo1Rate") && ids.contains ("glideTime"));

    for (const auto& id : ids)
    {
        const auto before = r.p.getParameterTree().copyState().getChildWithProperty ("id", id).getProperty ("value");
        auto* parameter = dynamic_cast<juce::RangedAudioParameter*> (r.p.getParameterTree().getParameter (id));
        r.p.startMidiLearn (id);
        for (int value = 0; value < 128; ++value)
        {
            r.cc (20, value);
            const float sounding = r.raw (id.toRawUTF8());
            r.p.flushLearntControllers();
            const float raw = r.raw (id.toRawUTF8());
            const float asked = parameter->convertFrom0to1 (value / 127.0f);
            // A host hands a reported value straight back as a parameter change; it must not move the sound.
            ASSERT_EQ (raw, sounding) << id << " at " << value;
            ASSERT_FALSE (r.p.isPresetDirty()) << id << " at " << value;
            ASSERT_EQ (r.host (id.toRawUTF8()), raw) << id << " at " << value;
            ASSERT_NEAR (raw, asked, std::abs (asked) * 1.0e-5f + 1.0e-6f) << id << " at " << value;
        }
        const auto after = r.p.getParameterTree().copyState().getChildWithProperty ("id", id).getProperty ("value");
        EXPECT_EQ (after, before) << id << ": the tree must keep the older value";
    }
}
