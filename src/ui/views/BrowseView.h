#pragma once

#include "presets/Catalogue.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <memory>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::views
{
// The preset browser: categories, a filterable list of the factory bank, and the chosen preset's
// detail. A click selects; a double-click, LOAD or Return loads and closes; AUDITION puts a preset
// on the engine without making it current; Escape leaves.
class BrowseView : public juce::Component
{
public:
    // Favourites live in the settings file; without one they are neither read nor kept.
    BrowseView (MorvaneAudioProcessor& processor, const presets::Catalogue& catalogue, juce::PropertiesFile* favourites);
    ~BrowseView() override;

    std::function<void()> onClose;
    std::function<void (juce::String)> onPresetChosen;

    void paint (juce::Graphics&) override;
    bool keyPressed (const juce::KeyPress&) override;
    void resized() override;
    // Leaving the browser ends an audition.
    void visibilityChanged() override;

    class Impl;
    Impl& getImpl() noexcept { return *impl; }

private:
    std::unique_ptr<Impl> impl;
};

// Up to four upper-case tags worked out from an entry's words; a flagship's first is "FLAG".
juce::StringArray derivePresetTags (const presets::Entry& entry);
// An optional picture under presets/previews/, looked for upwards from the working folder and
// from the program's folder.
juce::File findPreviewFile (const juce::String& src);
}
