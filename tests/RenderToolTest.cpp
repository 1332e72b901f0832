#include "TestHelpers.h"

#include "audio/SafeXml.h"
#include "render/RenderOptions.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <gtest/gtest.h>

#include <regex>

using namespace morvane;
using namespace morvane::test;

namespace
{
struct Run
{
    int exitCode = -1;
    juce::String out, err;
    juce::String output() const { return out + err; }
};

// Runs the real binary through a shell, after any commands given to that shell; stderr is caught
// by a redirection so that the two streams can be told apart.
Run runRenderer (const juce::StringArray& args, const juce::String& before = {})
{
    auto quote = [] (const juce::String& s) { return "'" + s.replace ("'", "'\\''") + "'"; };
    const auto errFile = uniqueTempFile ("morvane-render", ".err");
    auto command = before + "exec " + quote (MORVANE_RENDER_PATH);
    for (const auto& a : args)
        command << " " << quote (a);
    juce::ChildProcess process;
    Run run;
    if (process.start (juce::StringArray { "/bin/sh", "-c", command + " 2>" + quote (errFile.getFullPathName()) }, juce::ChildProcess::wantStdOut))
    {
        run.out = process.readAllProcessOutput();
        process.waitForProcessToFinish (120000);
        run.exitCode = (int) process.getExitCode();
    }
    run.err = errFile.loadFileAsString();
    errFile.deleteFile();
    return run;
}

struct TempDir
{
    juce::File dir = morvane::test::uniqueTempFile ("morvane-render-test");
    TempDir() { dir.createDirectory(); }
    ~TempDir() { dir.deleteRecursively(); }
    juce::String path (const char* name) const { return dir.getChildFile (name).getFullPathName(); }
    juce::String write (const char* name, const juce::String& text) const { dir.getChildFile (name).replaceWithText (text); return path (name); }
};

std::unique_ptr<juce::AudioFormatReader> openWav (const juce::String& path)
{
    juce::WavAudioFormat wav;
    auto stream = std::make_unique<juce::FileInputStream> (juce::File (path));
    if (! stream->openedOk())
        return nullptr;
    return std::unique_ptr<juce::AudioFormatReader> (wav.createReaderFor (stream.release(), true));
}

juce::AudioBuffer<float> readAll (juce::AudioFormatReader& reader)
{
    juce::AudioBuffer<float> b ((int) reader.numChannels, (int) reader.lengthInSamples);
    reader.read (&b, 0, (int) reader.lengthInSamples, 0, true, true);
    return b;
}

bool writeMidi (const juce::String& path, std::initializer_list<juce::MidiMessageSequence> tracks)
{
    juce::MidiFile file;
    file.setTicksPerQuarterNote (480);
    for (const auto& t : tracks)
        file.addTrack (t);
    juce::FileOutputStream stream { juce::File (path) };
    return file.writeTo (stream);
}

int firstSoundingSample (const juce::AudioBuffer<float>& b, int from)
{
    for (int i = from; i < b.getNumSamples(); ++i)
        if (b.getSample (0, i) != 0.0f)
            return i;
    return -1;
}

// The UISTATE of a saved state file, or null.
std::unique_ptr<juce::XmlElement> uiStateIn (const juce::String& stateFile)
{
    juce::MemoryBlock blob;
    juce::File (stateFile).loadFileAsData (blob);
    const auto xml = xmlFromStateBlob (blob.getData(), (int) blob.getSize());
    const auto* ui = xml != nullptr ? xml->getChildByName ("UISTATE") : nullptr;
    return ui != nullptr ? std::make_unique<juce::XmlElement> (*ui) : nullptr;
}
}

TEST (RenderOptions, ParsesAFullCommandLine)
{
    const auto r = render::parseRenderOptions ({ "--out", "x.wav", "--set", "drive=12", "--set", "osc1Wave=3",
                                                 "--note", "40:0.5:0.25:1.5", "--tail", "2", "--rate", "44100",
                                                 "--block", "64", "--channels", "1", "--bench" });
    ASSERT_TRUE (r.error.isEmpty()) << r.error;
    const auto& o = r.options;
    EXPECT_EQ (o.out.getFileName(), "x.wav");
    ASSERT_EQ (o.sets.size(), 2u);
    EXPECT_EQ (o.sets[0].id, "drive");
    EXPECT_EQ (o.sets[0].value, 12.0f);
    ASSERT_EQ (o.notes.size(), 1u);
    EXPECT_EQ (o.notes[0].note, 40);
    EXPECT_EQ (o.notes[0].velocity, 0.5f);
    EXPECT_EQ (o.notes[0].start, 0.25);
    EXPECT_EQ (o.notes[0].length, 1.5);
    EXPECT_EQ (o.tail, 2.0);
    EXPECT_EQ (o.rate, 44100.0);
    EXPECT_EQ (o.block, 64);
    EXPECT_EQ (o.channels, 1);
    EXPECT_TRUE (o.bench);
}

TEST (RenderOptions, DefaultsAndRefusals)
{
    const auto ok = render::parseRenderOptions ({ "--out", "a.wav" });
    EXPECT_TRUE (ok.error.isEmpty());
    EXPECT_EQ (ok.options.rate, 48000.0);
    EXPECT_EQ (ok.options.block, 512);
    EXPECT_EQ (ok.options.channels, 2);
    EXPECT_EQ (ok.options.tail, 1.0);
    EXPECT_EQ (ok.options.maxSeconds, 600.0);
    EXPECT_EQ (render::parseRenderOptions ({ "--out", "a.wav", "--max-seconds", "7201", "--seconds", "7000" }).options.maxSeconds, 7201.0);

    for (const auto& bad : std::vector<juce::StringArray> {
             {},
             { "--out" },
             { "--out", "a.wav", "--note", "69:1:0" },
             { "--out", "a.wav", "--note", "128:1:0:1" },
             { "--out", "a.wav", "--note", "60:1.5:0:1" },
             { "--out", "a.wav", "--note", "60:1:-1:1" },
             { "--out", "a.wav", "--note", "60:1:0:0" },
             { "--out", "a.wav", "--note", "sixty:1:0:1" },
             { "--out", "a.wav", "--set", "drive" },
             { "--out", "a.wav", "--set", "drive=loud" },
             { "--out", "a.wav", "--set", "drive=nan" },
             { "--out", "a.wav", "--rate", "0" },
             { "--out", "a.wav", "--rate", "1000000" },
             { "--out", "a.wav", "--block", "0" },
             { "--out", "a.wav", "--block", "12.5" },
             { "--out", "a.wav", "--channels", "3" },
             { "--out", "a.wav", "--tail", "-1" },
             { "--out", "a.wav", "--max-seconds", "0" },
             { "--out", "a.wav", "--max-seconds", "1e8" },
             { "--out", "a.wav", "--max-seconds", "long" },
             { "--out", "a.wav", "--frobnicate" } })
    {
        const auto r = render::parseRenderOptions (bad);
        EXPECT_FALSE (r.error.isEmpty()) << bad.joinIntoString (" ");
        EXPECT_FALSE (r.error.containsChar ('\n'));
    }
}

TEST (RenderTool, RendersA440HzToneAtTheDefaultLevel)
{
    TempDir tmp;
    const auto out = tmp.path ("a.wav");
    const auto run = runRenderer ({ "--note", "69:1:0:1", "--out", out });
    ASSERT_EQ (run.exitCode, 0) << run.output();

    auto reader = openWav (out);
    ASSERT_NE (reader, nullptr);
    EXPECT_EQ (reader->sampleRate, 48000.0);
    EXPECT_EQ (reader->numChannels, 2u);
    EXPECT_EQ (reader->bitsPerSample, 32u);
    EXPECT_TRUE (reader->usesFloatingPointData);
    EXPECT_EQ (reader->lengthInSamples, 96000); // the note's end plus the default 1 s tail

    const auto audio = readAll (*reader);
    EXPECT_NEAR (zeroCrossingFrequency (audio.getReadPointer (0) + 4800, 38400, 48000.0), 440.0, 0.05);
    EXPECT_NEAR (peak (audio.getReadPointer (0) + 4800, 38400), 0.5f, 0.01f);
    EXPECT_EQ (peak (audio.getReadPointer (1) + 60000, 36000), 0.0f); // released and silent
}

TEST (RenderTool, SettingsPresetChannelsAndLength)
{
    TempDir tmp;
    const auto preset = tmp.write ("p.xml",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<PARAMS>\n  <PARAM id=\"octave\" value=\"1\"/>\n"
        "  <PARAM id=\"outputGain\" value=\"-12.0\"/>\n  <PARAM id=\"unknownId\" value=\"3\"/>\n</PARAMS>\n");
    const auto out = tmp.path ("m.wav");
    // The preset sets -12 dB; the later --set wins with -20 dB.
    juce::StringArray args { "--preset", preset, "--set", "outputGain=-20", "--note", "69:1:0:0.5",
                             "--channels", "1", "--seconds", "0.75", "--rate", "44100", "--block", "100" };
    EXPECT_EQ (runRenderer (args).exitCode, 2); // no --out
    args.addArray ({ "--out", out });
    const auto run = runRenderer (args);
    ASSERT_EQ (run.exitCode, 0) << run.output();

    auto reader = openWav (out);
    ASSERT_NE (reader, nullptr);
    EXPECT_EQ (reader->numChannels, 1u);
    EXPECT_EQ (reader->lengthInSamples, (juce::int64) std::llround (0.75 * 44100));
    const auto audio = readAll (*reader);
    const float* x = audio.getReadPointer (0) + 4410;
    EXPECT_NEAR (zeroCrossingFrequency (x, 13000, 44100.0), 220.0, 0.1); // octave "-1" from the preset
    // Mono sum of two equal sides at -20 dB.
    EXPECT_NEAR (peak (x, 13000), 0.1f * 2.0f * 0.7071068f, 0.003f);
}

TEST (RenderTool, MidiFileTempoMapIsHonoured)
{
    TempDir tmp;
    // 480 ticks per beat; 120 BPM for the first beat, then 60 BPM. A note at beat 2 starts at
    // 0.5 s + 1 s = 1.5 s.
    juce::MidiMessageSequence track;
    track.addEvent (juce::MidiMessage::tempoMetaEvent (500000), 0);
    track.addEvent (juce::MidiMessage::tempoMetaEvent (1000000), 480);
    track.addEvent (juce::MidiMessage::noteOn (1, 57, (juce::uint8) 100), 960);
    track.addEvent (juce::MidiMessage::noteOff (1, 57), 1200);
    juce::MidiMessageSequence second;
    second.addEvent (juce::MidiMessage::noteOn (2, 60, (juce::uint8) 100), 1440);
    second.addEvent (juce::MidiMessage::noteOff (2, 60), 1500);
    const auto mid = tmp.path ("song.mid");
    ASSERT_TRUE (writeMidi (mid, { track, second }));

    const auto out = tmp.path ("song.wav");
    const auto run = runRenderer ({ "--midi", mid, "--out", out, "--tail", "0.5" });
    ASSERT_EQ (run.exitCode, 0) << run.output();
    auto reader = openWav (out);
    ASSERT_NE (reader, nullptr);
    const auto audio = readAll (*reader);
    // Last event: the second track's note-off at beat 3.125, 2.5 s + 0.125 s.
    EXPECT_EQ (audio.getNumSamples(), (int) std::llround ((2.625 + 0.5) * 48000));
    const int first = firstSoundingSample (audio, 0);
    EXPECT_GE (first, 72000);
    EXPECT_LE (first, 72004); // the anti-click fade starts from 0 at the note's sample
}

TEST (RenderTool, BenchPrintsTheRealTimeFactor)
{
    TempDir tmp;
    const auto run = runRenderer ({ "--note", "40:1:0:0.5", "--out", tmp.path ("b.wav"), "--bench" });
    ASSERT_EQ (run.exitCode, 0) << run.output();
    const std::regex line (R"(rendered 1\.500 s of audio in [0-9.]+ s: [0-9.]+ x real time\s*)");
    EXPECT_TRUE (std::regex_match (run.output().toStdString(), line)) << run.output();
}

// A render past the length limit is refused before it starts, like any other bad input.
TEST (RenderTool, BadInputExitsTwoWithAMessageAndNoFile)
{
    TempDir tmp;
    const auto out = tmp.path ("bad.wav");
    const auto notXml = tmp.write ("broken.xml", "<PARAMS><PARAM id="), wrongRoot = tmp.write ("root.xml", "<PRESET/>");
    const auto notMidi = tmp.write ("x.mid", "hello");
    // A damaged delta time puts the note-off two hours away: 14400 beats at 120 bpm.
    juce::MidiMessageSequence track;
    track.addEvent (juce::MidiMessage::noteOn (1, 40, (juce::uint8) 100), 0);
    track.addEvent (juce::MidiMessage::noteOff (1, 40), 480.0 * 14400);
    const auto mid = tmp.path ("long.mid");
    ASSERT_TRUE (writeMidi (mid, { track }));

    struct Case { juce::StringArray args; const char* says; };
    for (const auto& c : std::vector<Case> {
             { { "--set", "noSuchParameter=1" }, "" },
             { { "--set", "drive=abc" }, "" },
             { { "--note", "69:1:0" }, "" },
             { { "--rate", "5" }, "" },
             { { "--block", "0" }, "" },
             { { "--preset", tmp.path ("missing.xml") }, "" },
             { { "--preset", notXml }, "" },
             { { "--preset", wrongRoot }, "" },
             { { "--midi", notMidi }, "" },
             { { "--midi", tmp.path ("missing.mid") }, "" },
             { { "--midi", mid }, "'long.mid' asks for 7201.0 s of audio (last event at 7200.0 s plus 1.0 s of tail), "
                                  "more than the limit of 600.0 s; pass --max-seconds 7201 to allow it" },
             { { "--midi", mid, "--max-seconds", "7000" }, "more than the limit of 7000.0 s; pass --max-seconds 7201" },
             { { "--midi", mid, "--seconds", "700" }, "--seconds asks for 700.0 s of audio, more than the limit of 600.0 s; pass --max-seconds 700" },
             { { "--note", "40:1:0:30", "--max-seconds", "10" }, "the notes ask for 31.0 s of audio" } })
    {
        auto args = c.args;
        args.addArray ({ "--out", out });
        const auto run = runRenderer (args);
        SCOPED_TRACE (args.joinIntoString (" "));
        EXPECT_EQ (run.exitCode, 2) << run.output();
        EXPECT_TRUE (run.output().startsWith ("morvane-render: ")) << run.output();
        EXPECT_EQ (run.output().trim().indexOfChar ('\n'), -1) << "one line: " << run.output();
        EXPECT_TRUE (run.output().contains (c.says)) << run.output();
        EXPECT_FALSE (juce::File (out).exists());
    }

    // Within the limit it renders, and the events beyond the chosen length never sound.
    const auto run = runRenderer ({ "--midi", mid, "--seconds", "0.5", "--out", out });
    ASSERT_EQ (run.exitCode, 0) << run.output();
    auto reader = openWav (out);
    ASSERT_NE (reader, nullptr);
    EXPECT_EQ (reader->lengthInSamples, 24000);
    EXPECT_GT (peak (readAll (*reader).getReadPointer (0), 24000), 0.1f);
}

TEST (RenderTool, AFailedWriteExitsOneWithAMessageAndLeavesNoFile)
{
    TempDir tmp;
    // A file that cannot be opened, and one cut short: a file size limit of 100 kB stops the writes
    // part of the way through about 2 MB of audio.
    for (const auto& [out, before] : { std::pair { juce::String ("/proc/morvane-cannot-write-here.wav"), "" },
                                       { tmp.path ("cut.wav"), "trap '' XFSZ; ulimit -f 200; " } })
    {
        const auto run = runRenderer ({ "--note", "40:1:0:4", "--out", out }, before);
        EXPECT_EQ (run.exitCode, 1) << run.output();
        EXPECT_TRUE (run.output().startsWith ("morvane-render: cannot write '" + out + "'")) << run.output();
        EXPECT_EQ (run.output().trim().indexOfChar ('\n'), -1) << run.output();
        EXPECT_FALSE (juce::File (out).exists());
    }
}

TEST (RenderTool, APresetFileGivesTheIdentityOfAUserPreset)
{
    TempDir tmp;
    const auto named = tmp.write ("wobble.xml", "<PARAMS displayName=\"Wobble One\"><PARAM id=\"drive\" value=\"6\"/></PARAMS>");
    const auto unnamed = tmp.write ("Dark Sub.xml", "<PARAMS><PARAM id=\"drive\" value=\"3\"/></PARAMS>");

    struct Case { juce::String preset, name; juce::StringArray extra; const char* dirty; };
    for (const auto& c : std::vector<Case> { { named, "Wobble One", {}, "0" },
                                             { unnamed, "Dark Sub", {}, "0" },
                                             { named, "Wobble One", { "--set", "drive=12" }, "1" } })
    {
        const auto state = tmp.path ("s.state");
        juce::StringArray args { "--preset", c.preset, "--note", "40:1:0:0.1", "--out", tmp.path ("p.wav"), "--state-out", state };
        args.addArray (c.extra);
        const auto run = runRenderer (args);
        ASSERT_EQ (run.exitCode, 0) << run.output();

        const auto ui = uiStateIn (state);
        ASSERT_NE (ui, nullptr);
        EXPECT_EQ (ui->getStringAttribute ("presetName"), c.name);
        EXPECT_EQ (ui->getStringAttribute ("presetSource"), "user:" + c.preset);
        EXPECT_EQ (ui->getStringAttribute ("presetDirty"), c.dirty) << c.extra.joinIntoString (" ");
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

    TempDir tmp;
    const auto unknown = runRenderer ({ "--factory", "reese clasic", "--out", tmp.path ("never.wav") });
    EXPECT_EQ (unknown.exitCode, 2);
    EXPECT_TRUE (unknown.err.contains ("reese classic")) << unknown.err;
    EXPECT_FALSE (juce::File (tmp.path ("never.wav")).exists());
}

TEST (RenderFactory, ListsTheParametersInHostOrder)
{
    const auto list = runRenderer ({ "--list-parameters" });
    EXPECT_EQ (list.exitCode, 0);
    const auto lines = juce::StringArray::fromLines (list.out.trim());
    MorvaneAudioProcessor processor;
    const auto& parameters = processor.getParameters();
    ASSERT_EQ (lines.size(), parameters.size());
    EXPECT_EQ (lines.size(), 158);
    for (int i = 0; i < parameters.size(); ++i)
    {
        const auto* ranged = dynamic_cast<const juce::RangedAudioParameter*> (parameters[i]);
        ASSERT_NE (ranged, nullptr);
        EXPECT_EQ (lines[i], juce::String (i) + "\t" + ranged->getParameterID() + "\t" + ranged->getName (1024));
    }
}

TEST (RenderFactory, StateOutThenStateInReproducesTheRender)
{
    TempDir tmp;
    const auto state = tmp.path ("acid.state"), first = tmp.path ("first.wav"), second = tmp.path ("second.wav");
    const auto a = runRenderer ({ "--factory", "acid_diode_squelch.xml", "--set", "delayEnable=1", "--note", "45:1:0:0.5",
                                  "--out", first, "--state-out", state });
    ASSERT_EQ (a.exitCode, 0) << a.err;
    ASSERT_TRUE (juce::File (state).existsAsFile());
    const auto b = runRenderer ({ "--state-in", state, "--note", "45:1:0:0.5", "--out", second });
    ASSERT_EQ (b.exitCode, 0) << b.err;

    auto readerX = openWav (first), readerY = openWav (second);
    ASSERT_TRUE (readerX != nullptr && readerY != nullptr);
    const auto x = readAll (*readerX), y = readAll (*readerY);
    ASSERT_EQ (x.getNumSamples(), y.getNumSamples());
    for (int i = 0; i < x.getNumSamples(); ++i)
        ASSERT_EQ (x.getSample (0, i), y.getSample (0, i)) << i;

    const auto ui = uiStateIn (state);
    ASSERT_NE (ui, nullptr);
    EXPECT_EQ (ui->getStringAttribute ("presetName"), "acid diode squelch");
    EXPECT_EQ (ui->getStringAttribute ("presetSource"), "factory:acid_diode_squelch.xml");
    EXPECT_EQ (ui->getStringAttribute ("presetDirty"), "1"); // --set came after the preset

    EXPECT_EQ (runRenderer ({ "--state-in", tmp.write ("bad.state", "no state here"), "--out", second }).exitCode, 2);
}
