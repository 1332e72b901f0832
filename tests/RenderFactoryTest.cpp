#include "TestHelpers.h"

#include "audio/SafeXml.h"

#include <juce_audio_formats/juce_audio_formats.h>

using namespace morvane::test;

namespace
{
struct Run
{
    int exitCode;
    juce::String out, err;
};

Run runRenderer (const juce::StringArray& args)
{
    const auto errFile = juce::File::createTempFile (".err");
    juce::ChildProcess child;
    juce::StringArray command { MORVANE_RENDER_PATH };
    command.addArray (args);
    // stderr is caught through a shell redirection so both streams can be read.
    juce::StringArray shell { "/bin/sh", "-c", command.joinIntoString (" ") + " 2>" + errFile.getFullPathName().quoted() };
    Run r { -1, {}, {} };
    if (child.start (shell))
    {
        r.out = child.readAllProcessOutput();
        child.waitForProcessToFinish (120000);
        r.exitCode = (int) child.getExitCode();
    }
    r.err = errFile.loadFileAsString();
    errFile.deleteFile();
    return r;
}
}

TEST (RenderFactory, ListsTheBankAndRefusesUnknownNamesWithCloseOnes)
{
    const auto list = runRenderer ({ "--list-factory" });
    EXPECT_EQ (list.exitCode, 0);
    const auto lines = juce::StringArray::fromLines (list.out.trim());
    EXPECT_EQ (lines.size(), 68);
    EXPECT_EQ (lines[0], "INIT\tinit clean\tinit_clean.xml");
    EXPECT_TRUE (lines.contains (juce::String::fromUTF8 ("BASS \xc2\xb7 REESE\treese classic\treese_classic.xml\t*")));

    const auto unknown = runRenderer ({ "--factory", "'reese clasic'", "--out", "/tmp/never.wav" });
    EXPECT_EQ (unknown.exitCode, 2);
    EXPECT_TRUE (unknown.err.contains ("reese classic")) << unknown.err;
    EXPECT_FALSE (juce::File ("/tmp/never.wav").exists());
}

TEST (RenderFactory, ListsTheParametersInHostOrder)
{
    const auto list = runRenderer ({ "--list-parameters" });
    EXPECT_EQ (list.exitCode, 0);
    const auto lines = juce::StringArray::fromLines (list.out.trim());
    morvane::MorvaneAudioProcessor processor;
    const auto& parameters = processor.getParameters();
    ASSERT_EQ (lines.size(), parameters.size());
    EXPECT_EQ (lines.size(), 157);
    for (int i = 0; i < parameters.size(); ++i)
    {
        const auto* ranged = dynamic_cast<const juce::RangedAudioParameter*> (parameters[i]);
        ASSERT_NE (ranged, nullptr);
        EXPECT_EQ (lines[i], juce::String (i) + "\t" + ranged->getParameterID() + "\t" + ranged->getName (1024));
    }
}

TEST (RenderFactory, StateOutThenStateInReproducesTheRender)
{
    const auto dir = juce::File::createTempFile ("").getSiblingFile ("morvane-render-state");
    dir.createDirectory();
    const auto state = dir.getChildFile ("acid.state");
    const auto first = dir.getChildFile ("first.wav"), second = dir.getChildFile ("second.wav");

    auto a = runRenderer ({ "--factory", "acid_diode_squelch.xml", "--set", "delayEnable=1", "--note", "45:1:0:0.5",
                            "--out", first.getFullPathName(), "--state-out", state.getFullPathName() });
    ASSERT_EQ (a.exitCode, 0) << a.err;
    ASSERT_TRUE (state.existsAsFile());
    auto b = runRenderer ({ "--state-in", state.getFullPathName(), "--note", "45:1:0:0.5", "--out", second.getFullPathName() });
    ASSERT_EQ (b.exitCode, 0) << b.err;

    juce::WavAudioFormat wav;
    auto read = [&] (const juce::File& f)
    {
        std::unique_ptr<juce::AudioFormatReader> reader (wav.createReaderFor (f.createInputStream().release(), true));
        juce::AudioBuffer<float> buffer ((int) reader->numChannels, (int) reader->lengthInSamples);
        reader->read (&buffer, 0, (int) reader->lengthInSamples, 0, true, true);
        return buffer;
    };
    const auto x = read (first), y = read (second);
    ASSERT_EQ (x.getNumSamples(), y.getNumSamples());
    for (int i = 0; i < x.getNumSamples(); ++i)
        ASSERT_EQ (x.getSample (0, i), y.getSample (0, i)) << i;

    juce::MemoryBlock blob;
    state.loadFileAsData (blob);
    const auto xml = morvane::xmlFromStateBlob (blob.getData(), (int) blob.getSize());
    ASSERT_NE (xml, nullptr);
    const auto* ui = xml->getChildByName ("UISTATE");
    ASSERT_NE (ui, nullptr);
    EXPECT_EQ (ui->getStringAttribute ("presetName"), "acid diode squelch");
    EXPECT_EQ (ui->getStringAttribute ("presetSource"), "factory:acid_diode_squelch.xml");
    EXPECT_EQ (ui->getStringAttribute ("presetDirty"), "1"); // --set came after the preset

    const auto bad = dir.getChildFile ("bad.state");
    bad.replaceWithText ("no state here");
    EXPECT_EQ (runRenderer ({ "--state-in", bad.getFullPathName(), "--out", second.getFullPathName() }).exitCode, 2);
    dir.deleteRecursively();
}
