#include "presets/Catalogue.h"

#include "BinaryData.h"
#include "audio/SafeXml.h"

namespace morvane::presets
{
namespace
{
    void log (const juce::String& text) { juce::Logger::writeToLog (text); }

    Entry parseEntry (const juce::XmlElement& e)
    {
        Entry entry;
        entry.xml = e.getStringAttribute ("xml");
        entry.displayName = e.getStringAttribute ("displayName");
        entry.flagship = e.getBoolAttribute ("flagship", false);
        if (entry.xml.isEmpty())
            log ("preset manifest: entry '" + entry.displayName + "' missing xml attribute");
        if (entry.displayName.isEmpty())
            log ("preset manifest: entry with xml='" + entry.xml + "' missing displayName attribute");

        if (auto* description = e.getChildByName ("description"))
            entry.description = description->getAllSubText().trim();

        if (auto* signature = e.getChildByName ("signature"))
        {
            for (auto* pair : signature->getChildWithTagNameIterator ("pair"))
                entry.signature.push_back ({ pair->getStringAttribute ("label"), pair->getStringAttribute ("value") });
            const auto count = entry.signature.size();
            if (count != 0 && count != 6)
                log ("preset manifest: '" + entry.displayName + "' has " + juce::String ((int) count)
                     + " signature pairs (expected 0 or " + juce::String (6) + ")");
        }

        if (auto* preview = e.getChildByName ("preview"))
            entry.previewSrc = preview->getStringAttribute ("src");

        if (entry.xml.isNotEmpty())
        {
            int size = 0;
            entry.available = findResource (resourceName (entry.xml), size) != nullptr && size > 0;
        }
        if (! entry.available)
            log ("preset manifest: referenced xml '" + entry.xml + "' not available " + juce::String (juce::CharPointer_UTF8 ("\xe2\x80\x94"))
                 + " entry '" + entry.displayName + "' marked unavailable");
        return entry;
    }
}

juce::String resourceName (const juce::String& fileName)
{
    return fileName.replaceCharacter ('.', '_');
}

const char* findResource (const juce::String& name, int& size)
{
    size = 0;
    if (name.isEmpty())
        return nullptr;
    return BinaryData::getNamedResource (name.toRawUTF8(), size);
}

Catalogue parseCatalogue (const juce::String& manifestText)
{
    Catalogue catalogue;
    const auto root = parseXmlSafely (manifestText);
    if (root == nullptr)
    {
        log ("preset manifest: failed to parse embedded manifest_xml");
        return catalogue;
    }
    if (! root->hasTagName ("presetManifest"))
    {
        log ("preset manifest: root element is '" + root->getTagName() + "', expected 'presetManifest'");
        return catalogue;
    }

    for (auto* c : root->getChildWithTagNameIterator ("category"))
    {
        Category category;
        category.id = c->getStringAttribute ("id");
        category.name = c->getStringAttribute ("name");
        category.displayCount = c->getIntAttribute ("displayCount", 0);
        if (category.id.isEmpty())
            log ("preset manifest: category missing id");
        if (category.name.isEmpty())
            log ("preset manifest: category '" + category.id + "' missing name");
        for (auto* p : c->getChildWithTagNameIterator ("preset"))
            category.entries.push_back (parseEntry (*p));
        catalogue.categories.push_back (std::move (category));
    }
    return catalogue;
}

Catalogue loadCatalogue()
{
    int size = 0;
    const char* data = findResource ("manifest_xml", size);
    if (data == nullptr || size <= 0)
    {
        log ("preset manifest: manifest_xml not embedded in BinaryData");
        return {};
    }
    return parseCatalogue (juce::String::fromUTF8 (data, size));
}

int totalEntries (const Catalogue& catalogue)
{
    int n = 0;
    for (const auto& c : catalogue.categories)
        n += (int) c.entries.size();
    return n;
}

std::vector<const Entry*> flatEntries (const Catalogue& catalogue)
{
    std::vector<const Entry*> out;
    out.reserve ((size_t) totalEntries (catalogue));
    for (const auto& c : catalogue.categories)
        for (const auto& e : c.entries)
            out.push_back (&e);
    return out;
}

const Entry* findEntryByXml (const Catalogue& catalogue, const juce::String& xml)
{
    for (const auto& c : catalogue.categories)
        for (const auto& e : c.entries)
            if (e.xml == xml)
                return &e;
    return nullptr;
}

std::unique_ptr<juce::XmlElement> loadFactoryDocument (const juce::String& xml)
{
    if (xml.isEmpty())
        return nullptr;
    int size = 0;
    const char* data = findResource (resourceName (xml), size);
    if (data == nullptr || size <= 0)
        return nullptr;
    return parseXmlSafely (data, size);
}
}
