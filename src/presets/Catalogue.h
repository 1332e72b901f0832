#pragma once

#include <juce_core/juce_core.h>

#include <memory>
#include <optional>
#include <vector>

namespace morvane::presets
{
struct SignaturePair
{
    juce::String label, value;
};

struct Entry
{
    juce::String xml;
    juce::String displayName;
    bool flagship = false;
    juce::String description;
    std::vector<SignaturePair> signature;
    juce::String previewSrc;
    bool available = false; // the embedded document exists and is not empty
};

struct Category
{
    juce::String id;
    juce::String name;
    int displayCount = 0;
    std::vector<Entry> entries;
};

// The factory manifest in memory, in manifest order. Immutable once loaded.
struct Catalogue
{
    std::vector<Category> categories;
};

// Never fails: an unusable manifest gives an empty catalogue, and every fault is logged.
Catalogue loadCatalogue();
// The same walk over any manifest text; the embedded table still decides `available`.
Catalogue parseCatalogue (const juce::String& manifestText);

int totalEntries (const Catalogue& catalogue);
std::vector<const Entry*> flatEntries (const Catalogue& catalogue);
const Entry* findEntryByXml (const Catalogue& catalogue, const juce::String& xml);

// The embedded document of a file name, or nothing if it is missing, empty or does not parse.
std::unique_ptr<juce::XmlElement> loadFactoryDocument (const juce::String& xml);

// A file name's resource name: every "." becomes "_".
juce::String resourceName (const juce::String& fileName);
// Pointer and size of an embedded resource; nullptr when missing.
const char* findResource (const juce::String& name, int& size);
}
