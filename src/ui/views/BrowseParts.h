#pragma once

#include "presets/Catalogue.h"
#include "ui/views/BrowseView.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <vector>

namespace morvane::ui::views
{
// The pieces of the browser's page; nothing outside the browser uses them.
class BrowserButton : public juce::Button
{
public:
    BrowserButton (int kind, const juce::String& text);
    const int kind;

protected:
    void paintButton (juce::Graphics&, bool over, bool down) override;
};

class Sidebar : public juce::Component
{
public:
    struct Row
    {
        juce::String id, name;
        int count = 0;
        std::vector<const presets::Entry*> entries;
    };

    explicit Sidebar (const presets::Catalogue& catalogue);

    std::function<void (int)> onCategoryChosen;
    std::vector<Row> rows;
    int selected = 0;
    int hover = -1;

    static constexpr int favouritesRow = 1;
    static juce::Rectangle<int> rowBox (int i) { return { 24, 84 + 44 * i, 156, 44 }; }
    int rowAt (juce::Point<int> p) const;

    void mouseMove (const juce::MouseEvent&) override;
    void mouseExit (const juce::MouseEvent&) override;
    void mouseDown (const juce::MouseEvent&) override;
    juce::MouseCursor getMouseCursor() override;
    void paint (juce::Graphics&) override;
};

class PresetList : public juce::Component
{
public:
    PresetList();

    std::function<void (int)> onRowSelected, onRowDoubleClicked, onAudition;
    std::function<void (juce::String)> onSearchChanged;
    std::function<void()> onSortClicked;

    std::vector<const presets::Entry*> rows;
    int selectedRow = -1, auditionRow = -1, hoverAudition = -1, hoverRow = -1;
    int scrollY = 0;

    struct SearchField : juce::TextEditor
    {
        // Arrows, Return and Escape belong to the page, not to the field.
        bool keyPressed (const juce::KeyPress& key) override;
    };
    SearchField searchEditor;
    BrowserButton sortButton { 0, {} };
    // The sort button's text, which is also its tooltip.
    void setSortText (const juce::String& text);

    int rowTop (int i) const { return 96 * i - scrollY + 84; }
    int rowAt (juce::Point<int> p) const;
    bool inAudition (int row, juce::Point<int> p) const;
    void pressAudition (int row);

    void mouseMove (const juce::MouseEvent&) override;
    void mouseExit (const juce::MouseEvent&) override;
    void mouseDown (const juce::MouseEvent&) override;
    void mouseDoubleClick (const juce::MouseEvent&) override;
    void mouseWheelMove (const juce::MouseEvent&, const juce::MouseWheelDetails&) override;
    juce::MouseCursor getMouseCursor() override;
    void paint (juce::Graphics&) override;
    void resized() override;
};

class DetailPanel : public juce::Component
{
public:
    DetailPanel();

    std::function<void()> onLoad, onFavourite;
    const presets::Entry* entry = nullptr;
    juce::String categoryName;
    juce::Image previewImage;
    BrowserButton loadButton { 1, "LOAD" };
    BrowserButton favouriteButton { 2, "favourite" };

    void setEntry (const presets::Entry* e, const juce::String& category);
    void paint (juce::Graphics&) override;
    void resized() override;
};

class BrowseView::Impl : public juce::Component
{
public:
    Impl (BrowseView& owner, MorvaneAudioProcessor& processor, const presets::Catalogue& catalogue, juce::PropertiesFile* favourites);
    ~Impl() override;

    void refreshList();
    void updateDetail();
    void loadRow (int row);
    void moveSelection (int delta);
    void applyEntry (const presets::Entry& entry);
    void toggleFavourite();
    bool isFavourite (const presets::Entry& entry) const;
    void refreshFavourites();

    // Audition: the entry plays on C1 while its mark is on. The patch from before the first
    // audition comes back when the browser is left without a load.
    void audition (int row);
    void releaseAuditionNote();
    void leave();
    bool isAuditionNoteHeld() const noexcept { return auditionNoteHeld; }
    static constexpr int auditionNote = 24;
    static constexpr float auditionVelocity = 85.0f / 127.0f;

    void paint (juce::Graphics&) override;
    void resized() override;

    BrowseView& owner;
    MorvaneAudioProcessor& processor;
    const presets::Catalogue& catalogue;
    Sidebar sidebar;
    PresetList list;
    DetailPanel detail;
    juce::String searchText;
    bool sortAlphabetic = true;
    const presets::Entry* selectedEntry = nullptr;
    juce::PropertiesFile* favourites;
    std::unique_ptr<juce::MemoryBlock> stateBeforeAudition;
    bool auditionNoteHeld = false;
};

void fillChip (juce::Graphics& g, juce::Rectangle<float> box, bool flag);
}
