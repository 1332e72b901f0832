#include "TestHelpers.h"

#include "presets/Catalogue.h"

using namespace morvane;
using namespace morvane::test;

namespace
{
juce::MemoryBlock save (MorvaneAudioProcessor& p)
{
    juce::MemoryBlock blob;
    p.getStateInformation (blob);
    return blob;
}

std::unique_ptr<juce::XmlElement> blobXml (const juce::MemoryBlock& blob)
{
    return juce::AudioProcessor::getXmlFromBinary (blob.getData(), (int) blob.getSize());
}

float value (MorvaneAudioProcessor& p, const juce::String& id)
{
    auto* parameter = dynamic_cast<juce::RangedAudioParameter*> (p.getParameterTree().getParameter (id));
    return parameter->convertFrom0to1 (parameter->getValue());
}

std::unique_ptr<juce::XmlElement> document (std::initializer_list<std::pair<const char*, const char*>> params)
{
    auto xml = std::make_unique<juce::XmlElement> ("PARAMS");
    for (auto [id, v] : params)
    {
        auto* e = xml->createNewChildElement ("PARAM");
        e->setAttribute ("id", id);
        e->setAttribute ("value", v);
    }
    return xml;
}
}

TEST (State, AFreshInstanceStartsOnInitClean)
{
    MorvaneAudioProcessor p;
    EXPECT_EQ (p.getPresetName(), "init clean");
    EXPECT_EQ (p.getPresetSource(), "factory:init_clean.xml");
    EXPECT_FALSE (p.isPresetDirty());
    EXPECT_FLOAT_EQ (value (p, "mod1Amount"), 0.4f);
    EXPECT_FLOAT_EQ (value (p, "ampRelease"), 0.18f);

    const auto xml = blobXml (save (p));
    ASSERT_NE (xml, nullptr);
    EXPECT_EQ (xml->getTagName(), "PARAMS");
    EXPECT_EQ (xml->getChildByName ("MIDILEARN"), nullptr);
    int uiStates = 0;
    for (auto* ui : xml->getChildWithTagNameIterator ("UISTATE"))
    {
        ++uiStates;
        EXPECT_EQ (ui->getStringAttribute ("presetName"), "init clean");
        EXPECT_EQ (ui->getStringAttribute ("presetSource"), "factory:init_clean.xml");
        EXPECT_EQ (ui->getStringAttribute ("presetDirty"), "0");
        EXPECT_EQ (ui->getIntAttribute ("activeView", -1), 0);
    }
    EXPECT_EQ (uiStates, 1);
}

TEST (State, SaveRestoreSaveGivesTheSameBlobAndKeepsTheDirtyFlag)
{
    MorvaneAudioProcessor a;
    setParameter (a, "filterCutoff", 1234.0f);
    setParameter (a, "delayEnable", 1.0f);
    a.setActiveView (1);
    a.startMidiLearn ("drive");
    juce::MidiBuffer midi;
    midi.addEvent (juce::MidiMessage::controllerEvent (1, 74, 64), 0);
    juce::AudioBuffer<float> buffer (2, 64);
    a.prepareToPlay (48000.0, 64);
    a.processBlock (buffer, midi);
    EXPECT_TRUE (a.isPresetDirty());
    const auto first = save (a);

    MorvaneAudioProcessor b;
    b.setStateInformation (first.getData(), (int) first.getSize());
    EXPECT_TRUE (b.isPresetDirty());
    EXPECT_EQ (b.getActiveView(), 1);
    EXPECT_NEAR (value (b, "filterCutoff"), 1234.0f, 0.5f);
    EXPECT_EQ (b.getControllerBinding (74), b.findParameterIndex ("drive"));
    const auto second = save (b);
    EXPECT_EQ (first, second);

    const auto xml = blobXml (second);
    int learns = 0, uis = 0;
    for (auto* c : xml->getChildIterator())
    {
        learns += c->hasTagName ("MIDILEARN");
        uis += c->hasTagName ("UISTATE");
    }
    EXPECT_EQ (learns, 1);
    EXPECT_EQ (uis, 1);

    // A clean save restores clean: restoring itself does not mark the patch.
    MorvaneAudioProcessor c;
    const auto clean = save (c);
    b.setStateInformation (clean.getData(), (int) clean.getSize());
    EXPECT_FALSE (b.isPresetDirty());
    EXPECT_EQ (b.getControllerBinding (74), -1);
}

TEST (State, BadBlobsChangeNothingAndBadMappingsAreDropped)
{
    MorvaneAudioProcessor p;
    setParameter (p, "drive", 7.0f);
    setParameter (p, "driveOn", 0.0f); // the old blob below, made before the switch, brings it back on
    const char junk[] = "not a state at all";
    p.setStateInformation (junk, (int) sizeof (junk));
    p.setStateInformation (nullptr, 0);
    EXPECT_FLOAT_EQ (value (p, "drive"), 7.0f);

    auto xml = document ({ { "drive", "3" } });
    auto* learn = xml->createNewChildElement ("MIDILEARN");
    for (auto [cc, param] : { std::pair { 200, "drive" }, { 20, "noSuchParameter" }, { 21, "filterReso" } })
    {
        auto* map = learn->createNewChildElement ("MAP");
        map->setAttribute ("cc", cc);
        map->setAttribute ("param", param);
    }
    juce::MemoryBlock blob;
    juce::AudioProcessor::copyXmlToBinary (*xml, blob);
    p.setStateInformation (blob.getData(), (int) blob.getSize());
    EXPECT_FLOAT_EQ (value (p, "drive"), 3.0f);
    EXPECT_FLOAT_EQ (value (p, "driveOn"), 1.0f);
    EXPECT_EQ (p.getControllerBinding (20), -1);
    EXPECT_EQ (p.getControllerBinding (21), p.findParameterIndex ("filterReso"));
    // An old blob without UISTATE clears the identity.
    EXPECT_EQ (p.getPresetName(), "");
    EXPECT_FALSE (p.isPresetDirty());
}

TEST (State, MigrationOfOldIdsAndUnreadableValues)
{
    MorvaneAudioProcessor p;
    p.applyPresetXml (*document ({ { "stereoMode", "0" } }));
    EXPECT_FLOAT_EQ (value (p, "stereoWidth"), 1.0f);
    p.applyPresetXml (*document ({ { "stereoMode", "1" } }));
    EXPECT_FLOAT_EQ (value (p, "stereoWidth"), 0.0f);
    p.applyPresetXml (*document ({ { "stereoMode", "0" }, { "stereoWidth", "0.25" } }));
    EXPECT_FLOAT_EQ (value (p, "stereoWidth"), 0.25f);
    EXPECT_FLOAT_EQ (value (p, "stereoMode"), 0.0f); // still a parameter of its own

    p.applyPresetXml (*document ({ { "driveEnabled", "0" } }));
    EXPECT_FLOAT_EQ (value (p, "driveMix"), 0.0f);
    p.applyPresetXml (*document ({ { "driveEnabled", "1" } }));
    EXPECT_FLOAT_EQ (value (p, "driveMix"), 1.0f);
    // The drive switch: a document that names it is obeyed, and one without it turns the drive on.
    p.applyPresetXml (*document ({ { "driveOn", "0" } }));
    EXPECT_FLOAT_EQ (value (p, "driveOn"), 0.0f);
    p.applyPresetXml (*document ({ { "drive", "6" } }));
    EXPECT_FLOAT_EQ (value (p, "driveOn"), 1.0f);

    // Unreadable numbers take the default, not the range's end; out-of-range ones are held.
    p.applyPresetXml (*document ({ { "filterCutoff", "inf" }, { "drive", "nan" }, { "outputGain", "-inf" },
                                    { "osc1Level", "99" }, { "subLevel", "-500" } }));
    EXPECT_NEAR (value (p, "filterCutoff"), 20000.0f, 1.0f);
    EXPECT_FLOAT_EQ (value (p, "drive"), 0.0f);
    EXPECT_FLOAT_EQ (value (p, "outputGain"), -6.0f);
    EXPECT_FLOAT_EQ (value (p, "osc1Level"), 6.0f);
    EXPECT_FLOAT_EQ (value (p, "subLevel"), -120.0f);
}

TEST (State, APresetIsLaidOverThePatchAndLeavesMappingsAndDirtyClean)
{
    MorvaneAudioProcessor p;
    setParameter (p, "delayEnable", 1.0f);
    setParameter (p, "mod6Amount", 0.7f);
    p.startMidiLearn ("filterCutoff");
    juce::MidiBuffer midi;
    midi.addEvent (juce::MidiMessage::controllerEvent (1, 30, 10), 0);
    juce::AudioBuffer<float> buffer (2, 32);
    p.prepareToPlay (48000.0, 32);
    p.processBlock (buffer, midi);
    EXPECT_TRUE (p.isPresetDirty());

    auto reese = presets::loadFactoryDocument ("reese_classic.xml");
    ASSERT_NE (reese, nullptr);
    p.applyPresetXml (*reese);
    EXPECT_FALSE (p.isPresetDirty());
    EXPECT_FLOAT_EQ (value (p, "delayEnable"), 1.0f); // no factory document names it
    EXPECT_FLOAT_EQ (value (p, "mod6Amount"), 0.7f);
    EXPECT_FLOAT_EQ (value (p, "filterCutoff"), 700.0f);
    EXPECT_EQ (p.getControllerBinding (30), p.findParameterIndex ("filterCutoff"));
    EXPECT_FALSE (p.getParameterTree().undoManager->canUndo());

    // An invalid element changes nothing; identity is the caller's.
    p.setPresetIdentity ("reese classic", "factory:reese_classic.xml");
    p.applyPresetXml (juce::XmlElement ("NOTPARAMS"));
    EXPECT_EQ (p.getPresetName(), "reese classic");
    p.setPresetName ("renamed");
    EXPECT_EQ (p.getPresetSource(), "factory:reese_classic.xml");
}
