#include "audio/PluginProcessor.h"
#include "presets/Catalogue.h"
#include "render/AudioMeasures.h"
#include "render/RenderSession.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace morvane::render
{
namespace
{
    int editDistance (const juce::String& a, const juce::String& b)
    {
        std::vector<int> row ((size_t) b.length() + 1);
        for (int j = 0; j <= b.length(); ++j)
            row[(size_t) j] = j;
        for (int i = 1; i <= a.length(); ++i)
        {
            int diagonal = row[0];
            row[0] = i;
            for (int j = 1; j <= b.length(); ++j)
            {
                const int above = row[(size_t) j];
                row[(size_t) j] = std::min ({ above + 1, row[(size_t) j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1) });
                diagonal = above;
            }
        }
        return row[(size_t) b.length()];
    }

    // Names that share a word with the query or are a few edits from it, closest first.
    juce::StringArray closeNames (const presets::Catalogue& catalogue, const juce::String& query)
    {
        const auto q = query.toLowerCase().trim();
        std::vector<std::pair<int, juce::String>> scored;
        for (const auto* e : presets::flatEntries (catalogue))
        {
            const auto name = e->displayName.toLowerCase();
            int score = editDistance (q, name);
            for (const auto& word : juce::StringArray::fromTokens (q, " _.", ""))
                if (word.length() > 2 && name.contains (word))
                    score = std::min (score, 3);
            if (score <= std::max (3, q.length() / 3))
                scored.push_back ({ score, e->displayName });
        }
        std::stable_sort (scored.begin(), scored.end(), [] (auto& a, auto& b) { return a.first < b.first; });
        juce::StringArray out;
        for (size_t i = 0; i < scored.size() && i < 5; ++i)
            out.add (scored[i].second);
        return out;
    }

    const presets::Entry* findByNameOrXml (const presets::Catalogue& catalogue, const juce::String& name)
    {
        if (const auto* e = presets::findEntryByXml (catalogue, name))
            return e;
        for (const auto* e : presets::flatEntries (catalogue))
            if (e->displayName.equalsIgnoreCase (name.trim()))
                return e;
        return nullptr;
    }

}

// A bass phrase at 120 bpm over two bars, low and mid notes at full velocity, with a held end.
std::vector<TimedEvent> auditionPhrase (double rate)
{
    struct Step { int note; double start, length; };
    const Step steps[] = { { 36, 0.0, 0.2 }, { 36, 0.25, 0.2 }, { 48, 0.5, 0.2 }, { 43, 0.75, 0.45 },
                           { 39, 1.25, 0.2 }, { 41, 1.5, 0.2 }, { 46, 1.75, 0.2 }, { 36, 2.0, 1.5 } };
    std::vector<TimedEvent> events;
    for (const auto& s : steps)
    {
        events.push_back ({ (juce::int64) (s.start * rate), juce::MidiMessage::noteOn (1, s.note, (juce::uint8) 127) });
        events.push_back ({ (juce::int64) ((s.start + s.length) * rate), juce::MidiMessage::noteOff (1, s.note) });
    }
    sortEvents (events);
    return events;
}

juce::AudioBuffer<float> renderAudition (const juce::String& xml, double rate, int block)
{
    MorvaneAudioProcessor processor;
    if (! applyFactoryPreset (processor, xml))
        return {};
    processor.setRateAndBufferSizeDetails (rate, block);
    processor.prepareToPlay (rate, block);
    return renderEvents (processor, auditionPhrase (rate), (int) (4.5 * rate), block);
}

bool applyFactoryPreset (MorvaneAudioProcessor& processor, const juce::String& name)
{
    const auto catalogue = presets::loadCatalogue();
    const auto* entry = findByNameOrXml (catalogue, name);
    if (entry == nullptr || ! entry->available)
    {
        const auto close = closeNames (catalogue, name);
        fail ("no factory preset named '" + name + "'"
              + (close.isEmpty() ? juce::String (" (see --list-factory)") : "; close names: " + close.joinIntoString (", ")));
        return false;
    }
    const auto document = presets::loadFactoryDocument (entry->xml);
    if (document == nullptr)
    {
        fail ("factory preset '" + entry->displayName + "' could not be read");
        return false;
    }
    processor.applyPresetXml (*document);
    processor.setPresetIdentity (entry->displayName, "factory:" + entry->xml);
    return true;
}

int listFactory()
{
    const auto catalogue = presets::loadCatalogue();
    for (const auto& category : catalogue.categories)
        for (const auto& e : category.entries)
            std::cout << category.name << "\t" << e.displayName << "\t" << e.xml << (e.flagship ? "\t*" : "") << "\n";
    return presets::totalEntries (catalogue) > 0 ? exitOk : exitWriteFailed;
}

int runAudition (const juce::File& directory, double rate, int block)
{
    if (! directory.createDirectory())
    {
        fail ("cannot create '" + directory.getFullPathName() + "'");
        return exitWriteFailed;
    }
    const auto catalogue = presets::loadCatalogue();
    const auto entries = presets::flatEntries (catalogue);

    std::printf ("%-22s %8s %8s %10s %8s\n", "preset", "peak dB", "rms dB", "centroid", "LUFS");
    int index = 0;
    for (const auto* e : entries)
    {
        ++index;
        std::cerr << "[" << index << "/" << entries.size() << "] " << e->displayName << std::endl;
        const auto audio = renderAudition (e->xml, rate, block);
        if (audio.getNumSamples() == 0)
            return exitBadInput;
        const auto file = directory.getChildFile (e->xml.upToLastOccurrenceOf (".", false, false) + ".wav");
        if (! writeWav (file, audio, rate))
            return exitWriteFailed;
        const auto m = measureAudio (audio, rate);
        std::printf ("%-22s %8.1f %8.1f %10.0f %8.1f\n", e->displayName.toRawUTF8(), m.peakDb, m.rmsDb, m.centroidHz, m.loudnessLufs);
    }
    return exitOk;
}
}
