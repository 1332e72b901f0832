#include "presets/PresetLibrary.h"

#include "audio/PluginProcessor.h"
#include "audio/SafeXml.h"

#include <locale>

namespace morvane::presets
{
namespace
{
juce::File appDataFolder (const char* sub)
{
    return juce::File::getSpecialLocation (juce::File::userApplicationDataDirectory).getChildFile ("Morvane").getChildFile (sub);
}

// Letters and digits of every script count, whatever locale the host process runs in.
bool isLetterOrDigit (juce::juce_wchar c)
{
    static const std::locale unicode = []
    {
        for (const char* name : { "C.UTF-8", "C.utf8", "en_US.UTF-8", "" })
        {
            try { return std::locale (name); }
            catch (...) {}
        }
        return std::locale::classic();
    }();
    return std::isalnum ((wchar_t) c, unicode);
}
}

juce::File userPresetFolder() { return appDataFolder ("User"); }
juce::File themesFolder() { return appDataFolder ("Themes"); }

juce::String presetFileStem (const juce::String& name)
{
    const auto trimmed = name.trim();
    if (trimmed.isEmpty())
        return "preset";
    juce::String stem;
    for (auto p = trimmed.getCharPointer(); ! p.isEmpty(); ++p)
    {
        const auto c = *p;
        const bool keep = isLetterOrDigit (c) || c == ' ' || c == '-' || c == '.' || c == '_';
        stem += keep ? c : (juce::juce_wchar) '_';
    }
    return stem;
}

juce::File userPresetFile (const juce::File& folder, const juce::String& name)
{
    return folder.getChildFile (presetFileStem (name) + ".xml");
}

void writeUserPreset (MorvaneAudioProcessor& processor, const juce::String& name, const juce::File& folder)
{
    folder.createDirectory();
    const auto file = userPresetFile (folder, name);
    auto xml = processor.createStateXml();
    if (xml == nullptr)
        return;
    xml->setAttribute ("displayName", name);
    file.replaceWithText (xml->toString(), false, false, "\r\n");
    processor.setPresetIdentity (name, "user:" + file.getFullPathName());
}

bool loadPresetFile (MorvaneAudioProcessor& processor, const juce::File& file)
{
    const auto text = readWellFormedTextFile (file);
    if (! text)
        return false;
    auto xml = parseXmlSafely (*text);
    if (xml == nullptr)
        return false;
    // Any root passes: a document that names no parameter leaves every value as it is.
    xml->setTagName ("PARAMS");
    processor.applyPresetXml (*xml);
    const auto name = xml->hasAttribute ("displayName") ? xml->getStringAttribute ("displayName")
                                                        : file.getFileNameWithoutExtension();
    processor.setPresetIdentity (name, "user:" + file.getFullPathName());
    return true;
}

int positionOfXml (const Catalogue& catalogue, const juce::String& xml)
{
    const auto flat = flatEntries (catalogue);
    for (size_t i = 0; i < flat.size(); ++i)
        if (flat[i]->xml == xml)
            return (int) i + 1;
    return 0;
}

int positionOfSource (const Catalogue& catalogue, const juce::String& source)
{
    if (! source.startsWith ("factory:"))
        return 1;
    const auto position = positionOfXml (catalogue, source.substring (8));
    return position > 0 ? position : 1;
}

int loadFactoryPosition (MorvaneAudioProcessor& processor, const Catalogue& catalogue, int position, int current)
{
    const auto flat = flatEntries (catalogue);
    const int n = (int) flat.size();
    if (n < 1)
        return current;
    position = juce::jlimit (1, n, position);
    const auto& entry = *flat[(size_t) position - 1];
    if (entry.available)
    {
        if (const auto document = loadFactoryDocument (entry.xml))
        {
            processor.applyPresetXml (*document);
            processor.setPresetIdentity (entry.displayName, "factory:" + entry.xml);
            return position;
        }
    }
    processor.setPresetIdentity ({}, {});
    return position;
}

juce::String presetDisplayName (const MorvaneAudioProcessor& processor, const Catalogue& catalogue, int position)
{
    auto name = processor.getPresetName();
    if (name.isEmpty())
    {
        const auto flat = flatEntries (catalogue);
        if (position >= 1 && position <= (int) flat.size())
            name = flat[(size_t) position - 1]->displayName;
    }
    if (processor.isPresetDirty() && name.isNotEmpty())
        name << " *";
    return name;
}
}
