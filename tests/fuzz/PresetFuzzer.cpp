// libFuzzer target: bytes read as a preset document and as the preset manifest.
#include "FuzzHarness.h"

#include "audio/SafeXml.h"
#include "presets/Catalogue.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput (const uint8_t* data, size_t size)
{
    auto& h = morvane::fuzz::Harness::get();
    const auto* text = reinterpret_cast<const char*> (data);
    if (auto xml = morvane::parseXmlSafely (text, (int) size))
    {
        h.processor.applyPresetXml (*xml);
        h.checkStillPlays();
    }

    // The manifest is only ever read as the UTF-8 text it was built from.
    if (morvane::isWellFormedUtf8 (text, (int) size) && std::memchr (text, 0, size) == nullptr)
    {
        const auto catalogue = morvane::presets::parseCatalogue (juce::String::fromUTF8 (text, (int) size));
        if ((int) morvane::presets::flatEntries (catalogue).size() != morvane::presets::totalEntries (catalogue))
            morvane::fuzz::Harness::fail ("the catalogue's flat list disagrees with its count");
    }
    return 0;
}
