// The built plug-ins, loaded through the framework's VST3 and LV2 hosting as a DAW would load them,
// and held against the processor itself as rendered by morvane-render.
#include <juce_audio_processors/juce_audio_processors.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <set>
#include <cmath>
#include <cstring>
#include <thread>
#include <vector>

namespace
{
const juce::String lv2Uri (MORVANE_LV2_URI);
constexpr int instrumentParameters = 158;
constexpr int learnedController = 74;
const char* const learnedParameter = "filterCutoff";
const char* const factoryPreset = "acid_diode_squelch.xml";

juce::File vst3Bundle() { return juce::File (MORVANE_VST3_BINARY_DIR).getParentDirectory().getParentDirectory(); }
juce::File lv2Bundle() { return juce::File (MORVANE_LV2_BUNDLE); }

struct TempDir
{
    juce::File dir = juce::File::getSpecialLocation (juce::File::tempDirectory).getNonexistentChildFile ("morvane-hosting", "", false);
    TempDir() { dir.createDirectory(); }
    ~TempDir() { dir.deleteRecursively(); }
    juce::File file (const juce::String& name) const { return dir.getChildFile (name); }
};

struct Run
{
    int exitCode = -1;
    juce::String output;
};

Run runRenderer (const juce::StringArray& args)
{
    juce::StringArray command { MORVANE_RENDER_PATH };
    command.addArray (args);
    juce::ChildProcess process;
    Run run;
    if (! process.start (command, juce::ChildProcess::wantStdOut | juce::ChildProcess::wantStdErr))
        return run;
    run.output = process.readAllProcessOutput();
    process.waitForProcessToFinish (120000);
    run.exitCode = (int) process.getExitCode();
    return run;
}

// Reads the renderer's output: RIFF/WAVE, 32-bit IEEE float (plain or extensible), any chunks around.
juce::String readFloatWav (const juce::File& file, juce::AudioBuffer<float>& audio, double& rate)
{
    juce::MemoryBlock bytes;
    if (! file.loadFileAsData (bytes) || bytes.getSize() < 12)
        return "cannot read " + file.getFullPathName();
    const auto* d = static_cast<const unsigned char*> (bytes.getData());
    const size_t size = bytes.getSize();
    auto u32 = [d] (size_t at) { return (juce::uint32) d[at] | ((juce::uint32) d[at + 1] << 8) | ((juce::uint32) d[at + 2] << 16) | ((juce::uint32) d[at + 3] << 24); };
    auto u16 = [d] (size_t at) { return (int) (d[at] | (d[at + 1] << 8)); };
    if (std::memcmp (d, "RIFF", 4) != 0 || std::memcmp (d + 8, "WAVE", 4) != 0)
        return "not a RIFF/WAVE file";

    int channels = 0, bits = 0, format = 0;
    for (size_t at = 12; at + 8 <= size;)
    {
        const size_t length = u32 (at + 4), body = at + 8;
        if (body + length > size)
            return "a chunk runs past the end of the file";
        if (std::memcmp (d + at, "fmt ", 4) == 0 && length >= 16)
        {
            format = u16 (body);
            channels = u16 (body + 2);
            rate = (double) u32 (body + 4);
            bits = u16 (body + 14);
            if (format == 0xfffe && length >= 26)
                format = u16 (body + 24); // the sub-format GUID starts with the format code
        }
        else if (std::memcmp (d + at, "data", 4) == 0)
        {
            if (format != 3 || bits != 32 || channels < 1)
                return "not 32-bit float audio (format " + juce::String (format) + ", " + juce::String (bits) + " bits)";
            const int frames = (int) (length / (size_t) (4 * channels));
            audio.setSize (channels, frames);
            for (int i = 0; i < frames; ++i)
                for (int ch = 0; ch < channels; ++ch)
                {
                    float v;
                    std::memcpy (&v, d + body + 4 * ((size_t) i * (size_t) channels + (size_t) ch), 4);
                    audio.setSample (ch, i, v);
                }
            return {};
        }
        at = body + length + (length & 1);
    }
    return "no data chunk";
}

//==============================================================================
// The processor's own blob inside each format's host state.
constexpr const char* privateDataMagic = "JUCEPrivateData";

// VST3: the framework's host keeps the component state as base64 in an XML wrapper; the plug-in
// appends its wrapper's private data to the processor's blob.
juce::MemoryBlock processorBlobFromVst3 (const juce::MemoryBlock& hostState)
{
    const auto xml = juce::AudioProcessor::getXmlFromBinary (hostState.getData(), (int) hostState.getSize());
    if (xml == nullptr || xml->getChildByName ("IComponent") == nullptr)
        return {};
    juce::MemoryBlock component;
    component.fromBase64Encoding (xml->getChildByName ("IComponent")->getAllSubText());
    const auto magicLength = std::strlen (privateDataMagic);
    auto size = component.getSize();
    const auto* data = static_cast<const char*> (component.getData());
    if (size >= magicLength + 16 && std::memcmp (data + size - magicLength, privateDataMagic, magicLength) == 0)
    {
        juce::uint64 privateSize = 0;
        std::memcpy (&privateSize, data + size - magicLength - 8, 8);
        if (privateSize + magicLength + 16 > size)
            return {};
        size -= privateSize + magicLength + 16;
    }
    return juce::MemoryBlock (data, size);
}

juce::MemoryBlock vst3StateWithBlob (const juce::MemoryBlock& hostState, const juce::MemoryBlock& blob)
{
    auto xml = juce::AudioProcessor::getXmlFromBinary (hostState.getData(), (int) hostState.getSize());
    if (xml == nullptr || xml->getChildByName ("IComponent") == nullptr)
        return {};
    auto* component = xml->getChildByName ("IComponent");
    component->deleteAllTextElements();
    component->addTextElement (blob.toBase64Encoding());
    juce::MemoryBlock result;
    juce::AudioProcessor::copyXmlToBinary (*xml, result);
    return result;
}

// LV2: the host state is a Turtle document; the plug-in stores its blob, base64, as one string
// literal. Finds that literal's span.
juce::Range<int> lv2BlobLiteral (const juce::String& turtle)
{
    for (int start = turtle.indexOfChar ('"'); start >= 0; start = turtle.indexOfChar (start + 1, '"'))
    {
        const bool triple = turtle.substring (start, start + 3) == "\"\"\"";
        const int open = start + (triple ? 3 : 1);
        const int close = triple ? turtle.indexOf (open, "\"\"\"") : turtle.indexOfChar (open, '"');
        if (close < 0)
            break;
        const auto text = turtle.substring (open, close).trim();
        juce::MemoryBlock decoded;
        if (text.length() > 16 && decoded.fromBase64Encoding (text)
            && juce::AudioProcessor::getXmlFromBinary (decoded.getData(), (int) decoded.getSize()) != nullptr)
            return { open, close };
        start = close + (triple ? 2 : 0);
    }
    return {};
}

juce::MemoryBlock processorBlobFromLv2 (const juce::MemoryBlock& hostState)
{
    const auto turtle = hostState.toString();
    const auto span = lv2BlobLiteral (turtle);
    juce::MemoryBlock blob;
    if (! span.isEmpty())
        blob.fromBase64Encoding (turtle.substring (span.getStart(), span.getEnd()).trim());
    return blob;
}

juce::MemoryBlock lv2StateWithBlob (const juce::MemoryBlock& hostState, const juce::MemoryBlock& blob)
{
    const auto turtle = hostState.toString();
    const auto span = lv2BlobLiteral (turtle);
    if (span.isEmpty())
        return {};
    const auto replaced = turtle.replaceSection (span.getStart(), span.getLength(), blob.toBase64Encoding());
    return juce::MemoryBlock (replaced.toRawUTF8(), replaced.getNumBytesAsUTF8());
}

//==============================================================================
struct TimedEvent
{
    juce::int64 sample;
    juce::MidiMessage message;
};

// Notes that overlap (legato in a mono voice), and a learnt controller sweeping while they play,
// written at one tick a sample (rate / 100 ticks a quarter at 100 quarters a second).
// The framework's VST3 host turns a controller into a parameter change at the start of its block,
// so controllers sit on block boundaries (multiples of 512, hence of 64 and 1) and notes off them.
void writePhrase (const juce::File& file, double rate)
{
    juce::MidiMessageSequence track;
    auto at = [rate] (juce::MidiMessage m, double seconds) { m.setTimeStamp ((double) std::llround (seconds * rate) + 37.0); return m; };
    track.addEvent (juce::MidiMessage::tempoMetaEvent (10000));
    track.addEvent (at (juce::MidiMessage::noteOn (1, 45, (juce::uint8) 100), 0.0));
    track.addEvent (at (juce::MidiMessage::noteOff (1, 45), 0.30));
    track.addEvent (at (juce::MidiMessage::noteOn (1, 52, (juce::uint8) 64), 0.25));
    track.addEvent (at (juce::MidiMessage::noteOff (1, 52), 0.50));
    track.addEvent (at (juce::MidiMessage::noteOn (1, 40, (juce::uint8) 127), 0.55));
    track.addEvent (at (juce::MidiMessage::noteOff (1, 40), 0.72));
    for (int i = 0; i < 12; ++i)
    {
        auto cc = juce::MidiMessage::controllerEvent (1, learnedController, 10 + i * 10);
        cc.setTimeStamp (512.0 * (double) std::llround ((0.02 + i * 0.06) * rate / 512.0));
        track.addEvent (cc);
    }
    track.sort();
    juce::MidiFile midi;
    midi.setTicksPerQuarterNote ((int) std::lround (rate / 100.0));
    midi.addTrack (track);
    file.deleteFile();
    juce::FileOutputStream out (file);
    midi.writeTo (out);
}

// The events of a MIDI file at one rate, timed exactly as the renderer times them.
std::vector<TimedEvent> readPhrase (const juce::File& file, double rate)
{
    juce::FileInputStream in (file);
    juce::MidiFile midi;
    std::vector<TimedEvent> events;
    if (! in.openedOk() || ! midi.readFrom (in))
        return events;
    midi.convertTimestampTicksToSeconds();
    for (int t = 0; t < midi.getNumTracks(); ++t)
        for (const auto* holder : *midi.getTrack (t))
            if (! holder->message.isMetaEvent())
                events.push_back ({ (juce::int64) std::llround (std::max (0.0, holder->message.getTimeStamp()) * rate), holder->message });
    std::stable_sort (events.begin(), events.end(), [] (const TimedEvent& a, const TimedEvent& b) { return a.sample < b.sample; });
    return events;
}

juce::AudioBuffer<float> play (juce::AudioPluginInstance& plugin, const std::vector<TimedEvent>& events, int total, int blockSize)
{
    const int channels = plugin.getTotalNumOutputChannels();
    juce::AudioBuffer<float> output (channels, total), block (channels, blockSize);
    juce::MidiBuffer midi;
    size_t next = 0;
    for (int pos = 0; pos < total; pos += blockSize)
    {
        const int n = std::min (blockSize, total - pos);
        block.setSize (channels, n, false, false, true);
        block.clear();
        midi.clear();
        for (; next < events.size() && events[next].sample < pos + n; ++next)
            midi.addEvent (events[next].message, (int) std::max<juce::int64> (events[next].sample - pos, 0));
        plugin.processBlock (block, midi);
        for (int ch = 0; ch < channels; ++ch)
            output.copyFrom (ch, pos, block, ch, 0, n);
    }
    return output;
}

float peak (const juce::AudioBuffer<float>& b)
{
    float p = 0.0f;
    for (int ch = 0; ch < b.getNumChannels(); ++ch)
        p = std::max (p, b.getMagnitude (ch, 0, b.getNumSamples()));
    return p;
}

float largestDifference (const juce::AudioBuffer<float>& a, const juce::AudioBuffer<float>& b)
{
    float d = 0.0f;
    for (int ch = 0; ch < a.getNumChannels(); ++ch)
        for (int i = 0; i < a.getNumSamples(); ++i)
            d = std::max (d, std::abs (a.getSample (ch, i) - b.getSample (ch, i)));
    return d;
}

//==============================================================================
class Hosting : public ::testing::TestWithParam<const char*>
{
protected:
    void SetUp() override
    {
        manager.addDefaultFormats();
        for (auto* f : manager.getFormats())
            if (f->getName() == GetParam())
                format = f;
        ASSERT_NE (format, nullptr) << "the framework was built without its " << GetParam() << " host";
    }

    bool isVst3() const { return juce::String (GetParam()) == "VST3"; }

    // The description, found the way a host's scan finds it: by searching the folder it lies in.
    std::unique_ptr<juce::PluginDescription> describe()
    {
        const auto bundle = isVst3() ? vst3Bundle() : lv2Bundle();
        const auto found = format->searchPathsForPlugins (juce::FileSearchPath (bundle.getParentDirectory().getFullPathName()), false, false);
        const auto identifier = isVst3() ? bundle.getFullPathName() : lv2Uri;
        EXPECT_TRUE (found.contains (identifier)) << "search found: " << found.joinIntoString (", ");
        juce::OwnedArray<juce::PluginDescription> types;
        format->findAllTypesForFile (types, identifier);
        if (types.size() != 1)
        {
            ADD_FAILURE() << types.size() << " plug-ins described at " << identifier;
            return nullptr;
        }
        return std::make_unique<juce::PluginDescription> (*types[0]);
    }

    std::unique_ptr<juce::AudioPluginInstance> instantiate (double rate, int block)
    {
        const auto description = describe();
        if (description == nullptr)
            return nullptr;
        juce::String error;
        auto plugin = manager.createPluginInstance (*description, rate, block, error);
        EXPECT_NE (plugin, nullptr) << error;
        return plugin;
    }

    juce::MemoryBlock hostState (juce::AudioPluginInstance& plugin)
    {
        juce::MemoryBlock state;
        plugin.getStateInformation (state);
        return state;
    }

    juce::MemoryBlock processorBlob (const juce::MemoryBlock& state) const
    {
        return isVst3() ? processorBlobFromVst3 (state) : processorBlobFromLv2 (state);
    }

    // Gives the plug-in a processor blob the way a host restores a session.
    void restore (juce::AudioPluginInstance& plugin, const juce::MemoryBlock& blob)
    {
        const auto current = hostState (plugin);
        const auto state = isVst3() ? vst3StateWithBlob (current, blob) : lv2StateWithBlob (current, blob);
        ASSERT_GT (state.getSize(), 0u) << "the host state holds no processor blob";
        plugin.setStateInformation (state.getData(), (int) state.getSize());
    }

    // The patch: a factory preset, one setting, a controller learnt; written by the processor itself.
    juce::MemoryBlock makePatch (const TempDir& temp, bool withLearning = true)
    {
        const auto file = temp.file ("patch.state");
        const auto run = runRenderer ({ "--factory", factoryPreset, "--set", "delayEnable=1", "--seconds", "0.01", "--out",
                                        temp.file ("unused.wav").getFullPathName(), "--state-out", file.getFullPathName() });
        EXPECT_EQ (run.exitCode, 0) << run.output;
        juce::MemoryBlock blob;
        file.loadFileAsData (blob);
        auto xml = juce::AudioProcessor::getXmlFromBinary (blob.getData(), (int) blob.getSize());
        if (xml == nullptr)
        {
            ADD_FAILURE() << "the renderer wrote no state";
            return {};
        }
        if (withLearning)
        {
            auto learn = std::make_unique<juce::XmlElement> ("MIDILEARN");
            auto* map = learn->createNewChildElement ("MAP");
            map->setAttribute ("cc", learnedController);
            map->setAttribute ("param", learnedParameter);
            xml->insertChildElement (learn.release(), xml->getNumChildElements() - 1); // before UISTATE, where the processor writes it
        }
        blob.reset();
        juce::AudioProcessor::copyXmlToBinary (*xml, blob);
        file.replaceWithData (blob.getData(), blob.getSize());
        return blob;
    }

    // A host hears of parameter values that a state set once audio has run (an LV2 plug-in reports
    // them from its run call) and its message thread has turned.
    static void runBriefly (juce::AudioPluginInstance& plugin)
    {
        plugin.prepareToPlay (48000.0, 512);
        juce::AudioBuffer<float> buffer (plugin.getTotalNumOutputChannels(), 512);
        juce::MidiBuffer midi;
        for (int i = 0; i < 4; ++i)
            plugin.processBlock (buffer, midi);
        plugin.releaseResources();
        juce::MessageManager::getInstance()->runDispatchLoopUntil (100);
    }

    juce::AudioPluginFormatManager manager;
    juce::AudioPluginFormat* format = nullptr;
};

std::string formatName (const ::testing::TestParamInfo<const char*>& info) { return info.param; }
}

TEST_P (Hosting, FindsAndDescribesTheBundle)
{
    const auto description = describe();
    ASSERT_NE (description, nullptr);
    EXPECT_EQ (description->name, "Morvane");
    EXPECT_EQ (description->manufacturerName, "Morvane");
    EXPECT_EQ (description->pluginFormatName, GetParam());
    EXPECT_TRUE (description->isInstrument);
    EXPECT_EQ (description->numInputChannels, 0);
    EXPECT_EQ (description->numOutputChannels, 2);
}

TEST_P (Hosting, ExposesEveryParameterWithTheProcessorsNames)
{
    const auto list = runRenderer ({ "--list-parameters" });
    ASSERT_EQ (list.exitCode, 0) << list.output;
    const auto lines = juce::StringArray::fromLines (list.output.trim());
    ASSERT_EQ (lines.size(), instrumentParameters);

    auto plugin = instantiate (48000.0, 512);
    ASSERT_NE (plugin, nullptr);
    const auto& parameters = plugin->getParameters();
    std::map<juce::String, juce::String> names; // id -> name, as the processor has them
    for (const auto& line : lines)
    {
        const auto fields = juce::StringArray::fromTokens (line, "\t", "");
        ASSERT_EQ (fields.size(), 3) << line;
        names[fields[1]] = fields[2];
    }
    ASSERT_EQ ((int) names.size(), instrumentParameters);

    if (isVst3())
    {
        // The processor's parameters in its own order (their VST3 ids are hashes), then what the
        // framework's VST3 wrapper adds: a bypass switch, and one hidden, non-automatable parameter per
        // MIDI controller on each of 16 channels (VST3 has no controller events; this is how they arrive).
        ASSERT_GE (parameters.size(), instrumentParameters);
        for (int i = 0; i < instrumentParameters; ++i)
        {
            const auto fields = juce::StringArray::fromTokens (lines[i], "\t", "");
            EXPECT_EQ (parameters[i]->getName (1024), fields[2]) << "parameter " << i << " (" << fields[1] << ")";
            EXPECT_TRUE (parameters[i]->isAutomatable()) << fields[1];
        }
        int bypass = 0, controllers = 0;
        for (int i = instrumentParameters; i < parameters.size(); ++i)
        {
            auto* p = parameters[i];
            if (p == plugin->getBypassParameter())
                ++bypass;
            else if (p->getName (64).startsWith ("MIDI CC ") && ! p->isAutomatable())
                ++controllers;
            else
                ADD_FAILURE() << "unexpected parameter " << p->getName (64);
        }
        EXPECT_EQ (bypass, 1);
        EXPECT_EQ (controllers, 16 * 130);
    }
    else
    {
        // LV2 parameters are identified by URI (the plug-in's URI, a colon, the parameter id; the
        // framework's host puts a prefix of its own before it) and listed in the host's own order.
        std::set<juce::String> seen;
        for (auto* p : parameters)
        {
            if (p == plugin->getBypassParameter())
                continue;
            auto* hosted = dynamic_cast<juce::HostedAudioProcessorParameter*> (p);
            ASSERT_NE (hosted, nullptr);
            const auto uri = hosted->getParameterID();
            ASSERT_TRUE (uri.contains (lv2Uri + ":")) << uri;
            const auto id = uri.fromFirstOccurrenceOf (lv2Uri + ":", false, false);
            ASSERT_EQ (names.count (id), 1u) << "unknown parameter " << uri;
            EXPECT_EQ (p->getName (1024), names[id]) << id;
            seen.insert (id);
        }
        EXPECT_EQ ((int) seen.size(), instrumentParameters);
        EXPECT_LE (parameters.size(), instrumentParameters + 1) << "more than a bypass switch added";
        if (auto* bypass = plugin->getBypassParameter())
            std::printf ("LV2 host's bypass parameter: %s\n", bypass->getName (64).toRawUTF8());
    }
}

TEST_P (Hosting, PlaysLikeTheProcessorRenderedDirectly)
{
    TempDir temp;
    const auto patch = makePatch (temp);
    ASSERT_GT (patch.getSize(), 0u);
    constexpr double seconds = 0.9;

    for (const double rate : { 44100.0, 48000.0, 96000.0 })
        for (const int block : { 1, 64, 512 })
        {
            const auto phrase = temp.file ("phrase.mid");
            writePhrase (phrase, rate);
            SCOPED_TRACE (juce::String (rate) + " Hz, blocks of " + juce::String (block));
            const auto wav = temp.file ("direct.wav");
            const auto run = runRenderer ({ "--state-in", temp.file ("patch.state").getFullPathName(), "--midi", phrase.getFullPathName(),
                                            "--seconds", juce::String (seconds), "--rate", juce::String (rate), "--block", juce::String (block),
                                            "--out", wav.getFullPathName() });
            ASSERT_EQ (run.exitCode, 0) << run.output;
            juce::AudioBuffer<float> direct;
            double wavRate = 0.0;
            const auto error = readFloatWav (wav, direct, wavRate);
            ASSERT_TRUE (error.isEmpty()) << error;
            ASSERT_EQ (wavRate, rate);
            ASSERT_GT (peak (direct), 0.05f) << "the direct render is (nearly) silent: nothing to compare";

            auto plugin = instantiate (rate, block);
            ASSERT_NE (plugin, nullptr);
            restore (*plugin, patch);
            plugin->prepareToPlay (rate, block);
            const auto hosted = play (*plugin, readPhrase (phrase, rate), direct.getNumSamples(), block);
            plugin->releaseResources();

            ASSERT_EQ (hosted.getNumChannels(), direct.getNumChannels());
            EXPECT_LE (largestDifference (hosted, direct), 1.0e-6f);
        }
}

TEST_P (Hosting, TheLearntControllerShapesTheSound)
{
    // The comparison above means something only if the learnt controller is live in both.
    TempDir temp;
    const auto learnt = makePatch (temp, true);
    const auto plain = makePatch (temp, false);
    const auto phrase = temp.file ("phrase.mid");
    writePhrase (phrase, 48000.0);
    const auto events = readPhrase (phrase, 48000.0);
    ASSERT_EQ (events.size(), 18u);
    for (const auto& e : events)
        if (e.message.isController())
            ASSERT_EQ (e.sample % 512, 0);
    juce::AudioBuffer<float> outputs[2];
    for (int i = 0; i < 2; ++i)
    {
        auto plugin = instantiate (48000.0, 512);
        ASSERT_NE (plugin, nullptr);
        restore (*plugin, i == 0 ? learnt : plain);
        plugin->prepareToPlay (48000.0, 512);
        outputs[i] = play (*plugin, events, 43200, 512);
    }
    EXPECT_GT (largestDifference (outputs[0], outputs[1]), 0.01f);
}

TEST_P (Hosting, StateRoundTripsThroughTheHost)
{
    TempDir temp;
    const auto patch = makePatch (temp);
    ASSERT_GT (patch.getSize(), 0u);

    auto first = instantiate (48000.0, 512);
    ASSERT_NE (first, nullptr);
    const auto defaults = hostState (*first);
    std::vector<float> defaultValues;
    for (auto* p : first->getParameters())
        defaultValues.push_back (p->getValue());

    restore (*first, patch);
    runBriefly (*first);
    const auto saved = hostState (*first);
    const auto blob = processorBlob (saved);
    EXPECT_TRUE (blob == patch) << "the plug-in gave back a different blob:\n" << blob.toString() << "\nexpected:\n" << patch.toString();

    // What a session holds: every parameter, the learnt controller and the preset's identity.
    const auto xml = juce::AudioProcessor::getXmlFromBinary (blob.getData(), (int) blob.getSize());
    ASSERT_NE (xml, nullptr);
    EXPECT_EQ (xml->getNumChildElements() - 2, instrumentParameters);
    const auto* learn = xml->getChildByName ("MIDILEARN");
    ASSERT_NE (learn, nullptr);
    ASSERT_NE (learn->getChildByName ("MAP"), nullptr);
    EXPECT_EQ (learn->getChildByName ("MAP")->getIntAttribute ("cc"), learnedController);
    EXPECT_EQ (learn->getChildByName ("MAP")->getStringAttribute ("param"), learnedParameter);
    const auto* ui = xml->getChildByName ("UISTATE");
    ASSERT_NE (ui, nullptr);
    EXPECT_EQ (ui->getStringAttribute ("presetName"), "acid diode squelch");
    EXPECT_EQ (ui->getStringAttribute ("presetSource"), juce::String ("factory:") + factoryPreset);

    // A new instance given the host's saved state: same blob, same parameter values as seen by the host.
    auto second = instantiate (44100.0, 64);
    ASSERT_NE (second, nullptr);
    second->setStateInformation (saved.getData(), (int) saved.getSize());
    runBriefly (*second);
    EXPECT_TRUE (processorBlob (hostState (*second)) == patch);
    int moved = 0;
    for (int i = 0; i < instrumentParameters; ++i)
    {
        const float value = second->getParameters()[i]->getValue();
        EXPECT_NEAR (value, first->getParameters()[i]->getValue(), 1.0e-6f) << second->getParameters()[i]->getName (64);
        moved += std::abs (value - defaultValues[(size_t) i]) > 1.0e-4f ? 1 : 0;
    }
    EXPECT_GT (moved, 5) << "the preset moved hardly any parameter as the host sees them";

    // And the defaults come back as they were.
    second->setStateInformation (defaults.getData(), (int) defaults.getSize());
    EXPECT_TRUE (processorBlob (hostState (*second)) == processorBlob (defaults));
}

TEST_P (Hosting, TheEditorOpensAndClosesWhileAudioRuns)
{
    TempDir temp;
    const auto patch = makePatch (temp);
    auto plugin = instantiate (48000.0, 256);
    ASSERT_NE (plugin, nullptr);
    restore (*plugin, patch);
    plugin->prepareToPlay (48000.0, 256);

    std::atomic<bool> stop { false };
    std::atomic<int> blocks { 0 };
    std::atomic<bool> finite { true };
    std::atomic<float> loudest { 0.0f };
    std::thread audio ([&]
    {
        juce::AudioBuffer<float> buffer (plugin->getTotalNumOutputChannels(), 256);
        juce::MidiBuffer midi;
        for (int n = 0; ! stop.load(); ++n)
        {
            buffer.clear();
            midi.clear();
            if (n % 40 == 0)
                midi.addEvent (juce::MidiMessage::noteOn (1, 36 + (n / 40) % 12, (juce::uint8) 110), 17);
            if (n % 40 == 30)
                midi.addEvent (juce::MidiMessage::noteOff (1, 36 + (n / 40) % 12), 3);
            if (n % 8 == 0)
                midi.addEvent (juce::MidiMessage::controllerEvent (1, learnedController, (n / 8) % 128), 100);
            plugin->processBlock (buffer, midi);
            for (int ch = 0; ch < buffer.getNumChannels(); ++ch)
                for (int i = 0; i < buffer.getNumSamples(); ++i)
                    if (! std::isfinite (buffer.getSample (ch, i)))
                        finite = false;
            loudest = std::max (loudest.load(), peak (buffer));
            ++blocks;
            std::this_thread::sleep_for (std::chrono::milliseconds (5)); // near real time: 256 samples are 5.3 ms
        }
    });

    for (int round = 0; round < 3; ++round)
    {
        SCOPED_TRACE ("round " + juce::String (round));
        ASSERT_TRUE (plugin->hasEditor());
        std::unique_ptr<juce::AudioProcessorEditor> editor (plugin->createEditorIfNeeded());
        ASSERT_NE (editor, nullptr);
        editor->setTopLeftPosition (40, 40);
        editor->addToDesktop (0);
        editor->setVisible (true);
        const int before = blocks.load();
        juce::MessageManager::getInstance()->runDispatchLoopUntil (1500);
        // The real editor's canvas at one of its four scales, not a host's generic panel.
        EXPECT_GE (editor->getWidth(), 999) << editor->getWidth() << " x " << editor->getHeight();
        EXPECT_GE (editor->getHeight(), 621);
        EXPECT_GT (blocks.load() - before, 20) << "audio stalled while the editor was open";
        editor.reset();
        juce::MessageManager::getInstance()->runDispatchLoopUntil (300);
    }

    stop = true;
    audio.join();
    plugin->releaseResources();
    EXPECT_TRUE (finite.load());
    EXPECT_GT (loudest.load(), 0.05f);
}

INSTANTIATE_TEST_SUITE_P (Formats, Hosting, ::testing::Values ("VST3", "LV2"), formatName);

// The host's own bypass, with a note held across the switch: a fade to silence without a click, and
// a clean start when it ends.
TEST_P (Hosting, HostBypassFadesTheHeldNoteAndReturnsClean)
{
    auto plugin = instantiate (48000.0, 128);
    ASSERT_NE (plugin, nullptr);
    auto* bypass = plugin->getBypassParameter();
    if (bypass == nullptr)
        GTEST_SKIP() << GetParam() << " offers the host no bypass";
    plugin->prepareToPlay (48000.0, 128);
    juce::AudioBuffer<float> buffer (plugin->getTotalNumOutputChannels(), 128);
    juce::MidiBuffer midi;
    float last = 0.0f;
    auto block = [&]
    {
        buffer.clear();
        plugin->processBlock (buffer, midi);
        midi.clear();
        float step = 0.0f;
        for (int i = 0; i < buffer.getNumSamples(); ++i)
        {
            step = std::max (step, std::abs (buffer.getSample (0, i) - last));
            last = buffer.getSample (0, i);
        }
        return step;
    };

    midi.addEvent (juce::MidiMessage::noteOn (1, 36, (juce::uint8) 127), 0);
    float playing = 0.0f;
    for (int b = 0; b < 60; ++b)
        playing = std::max (playing, block());
    ASSERT_GT (peak (buffer), 0.05f);

    bypass->setValueNotifyingHost (1.0f);
    float fading = 0.0f;
    for (int b = 0; b < 6; ++b)
        fading = std::max (fading, block());
    EXPECT_LE (fading, playing * 1.05f) << "no click";
    block();
    EXPECT_EQ (peak (buffer), 0.0f) << "silent while bypassed";
    for (int b = 0; b < 750; ++b)
        block();

    bypass->setValueNotifyingHost (0.0f);
    float returned = 0.0f;
    for (int b = 0; b < 10; ++b)
    {
        block();
        returned = std::max (returned, peak (buffer));
    }
    EXPECT_LT (returned, 1.0e-3f) << "the held note does not come back";
    plugin->releaseResources();
}

// Two instances in one host, both editors open and their timers running: the second plays exactly
// as it does alone while the first plays another patch beside it, and closing the first's editor
// leaves the second's whole.
TEST_P (Hosting, TwoInstancesWithOpenEditorsPlayAsEachWouldAlone)
{
    TempDir temp;
    const auto patch = makePatch (temp);
    const auto phrase = temp.file ("phrase.mid");
    writePhrase (phrase, 48000.0);
    const auto events = readPhrase (phrase, 48000.0);
    constexpr int total = 48000;

    auto alone = instantiate (48000.0, 256);
    ASSERT_NE (alone, nullptr);
    restore (*alone, patch);
    alone->prepareToPlay (48000.0, 256);
    const auto expected = play (*alone, events, total, 256);
    alone->releaseResources();
    alone.reset();

    auto first = instantiate (48000.0, 256);
    auto second = instantiate (48000.0, 256);
    ASSERT_TRUE (first != nullptr && second != nullptr);
    restore (*second, patch);
    std::unique_ptr<juce::AudioProcessorEditor> editors[] = { std::unique_ptr<juce::AudioProcessorEditor> (first->createEditorIfNeeded()),
                                                              std::unique_ptr<juce::AudioProcessorEditor> (second->createEditorIfNeeded()) };
    for (auto& editor : editors)
    {
        ASSERT_NE (editor, nullptr);
        editor->addToDesktop (0);
        editor->setVisible (true);
    }
    for (auto* p : { first.get(), second.get() })
        p->prepareToPlay (48000.0, 256);

    // The first plays its own line, its controllers moving; the message loop runs both editors'
    // timers between blocks.
    std::vector<TimedEvent> other;
    for (int n = 0; n < 8; ++n)
        other.push_back ({ (juce::int64) n * 6000, juce::MidiMessage::noteOn (1, 40 + n, (juce::uint8) 100) });
    juce::AudioBuffer<float> together (second->getTotalNumOutputChannels(), total), block (together.getNumChannels(), 256),
        otherBlock (first->getTotalNumOutputChannels(), 256);
    juce::MidiBuffer midi, otherMidi;
    size_t next = 0, nextOther = 0;
    for (int pos = 0; pos < total; pos += 256)
    {
        const int n = std::min (256, total - pos);
        block.setSize (block.getNumChannels(), n, false, false, true);
        otherBlock.setSize (otherBlock.getNumChannels(), n, false, false, true);
        block.clear();
        otherBlock.clear();
        midi.clear();
        otherMidi.clear();
        for (; next < events.size() && events[next].sample < pos + n; ++next)
            midi.addEvent (events[next].message, (int) std::max<juce::int64> (events[next].sample - pos, 0));
        for (; nextOther < other.size() && other[nextOther].sample < pos + n; ++nextOther)
            otherMidi.addEvent (other[nextOther].message, (int) (other[nextOther].sample - pos));
        otherMidi.addEvent (juce::MidiMessage::controllerEvent (1, 1, (pos / 256) % 128), 0);
        first->processBlock (otherBlock, otherMidi);
        second->processBlock (block, midi);
        for (int ch = 0; ch < together.getNumChannels(); ++ch)
            together.copyFrom (ch, pos, block, ch, 0, n);
        if (pos % 2560 == 0)
            juce::MessageManager::getInstance()->runDispatchLoopUntil (30);
        if (pos == 24064)
            editors[0].reset();
    }
    EXPECT_LE (largestDifference (together, expected), 1.0e-6f);
    editors[1].reset();
    juce::MessageManager::getInstance()->runDispatchLoopUntil (50);
    first->releaseResources();
    second->releaseResources();
}
