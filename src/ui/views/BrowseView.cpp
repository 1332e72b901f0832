#include "ui/views/BrowseView.h"

#include "audio/PluginProcessor.h"
#include "ui/theme/Tokens.h"
#include "ui/views/BrowseParts.h"

#include <algorithm>

namespace morvane::ui::views
{
juce::StringArray derivePresetTags (const presets::Entry& entry)
{
    static const std::pair<const char*, const char*> keywords[] = {
        { "reese", "REESE" }, { "sub", "SUB" },     { "clean", "CLEAN" }, { "drive", "DIRTY" },     { "diode", "DIRTY" },
        { "fold", "FOLD" },   { "wide", "WIDE" },   { "stereo", "WIDE" }, { "glide", "GLIDE" },     { "lfo", "MOVE" },
        { "s&h", "STEP" },    { "random", "RAND" }, { "pluck", "SHORT" }, { "short", "SHORT" },     { "drone", "DRONE" },
        { "sustain", "SUSTAIN" }, { "acid", "ACID" }, { "noise", "NOISE" },
    };
    const auto text = (entry.displayName + " " + entry.description + " " + entry.xml).toLowerCase();
    juce::StringArray tags;
    for (auto [keyword, tag] : keywords)
        if (text.contains (keyword))
            tags.addIfNotAlreadyThere (tag);
    if (entry.flagship)
        tags.insert (0, "FLAG");
    while (tags.size() > 4)
        tags.remove (4);
    return tags;
}

juce::File findPreviewFile (const juce::String& src)
{
    if (src.isEmpty())
        return {};
    auto walk = [&src] (juce::File dir, int steps) -> juce::File
    {
        for (int i = 0; i < steps; ++i)
        {
            if (! dir.exists())
                break;
            const auto candidate = dir.getChildFile ("presets/previews").getChildFile (src);
            if (candidate.existsAsFile())
                return candidate;
            dir = dir.getParentDirectory();
        }
        return {};
    };
    if (auto f = walk (juce::File::getCurrentWorkingDirectory(), 6); f != juce::File())
        return f;
    return walk (juce::File::getSpecialLocation (juce::File::currentExecutableFile), 8);
}

BrowseView::Impl::Impl (BrowseView& o, MorvaneAudioProcessor& p, const presets::Catalogue& c, juce::PropertiesFile* f)
    : owner (o), processor (p), catalogue (c), sidebar (c), favourites (f)
{
    addAndMakeVisible (sidebar);
    addAndMakeVisible (list);
    addAndMakeVisible (detail);
    sidebar.onCategoryChosen = [this] (int) { refreshList(); };
    list.onRowSelected = [this] (int row) { list.selectedRow = row; updateDetail(); };
    list.onRowDoubleClicked = [this] (int row) { loadRow (row); };
    list.onAudition = [this] (int row) { audition (row); };
    list.onSearchChanged = [this] (juce::String text) { searchText = text; refreshList(); };
    list.onSortClicked = [this]
    {
        sortAlphabetic = ! sortAlphabetic;
        list.setSortText (juce::String (juce::CharPointer_UTF8 (sortAlphabetic ? "SORT \xc2\xb7 A\xe2\x86\x92Z"
                                                                                            : "SORT \xc2\xb7 RECENT")));
        refreshList();
    };
    detail.onLoad = [this] { if (list.selectedRow >= 0) loadRow (list.selectedRow); };
    detail.onFavourite = [this] { if (selectedEntry != nullptr) toggleFavourite(); };
    refreshFavourites();
    refreshList();
}

BrowseView::Impl::~Impl() { leave(); }

void BrowseView::Impl::audition (int row)
{
    if (row < 0 || row >= (int) list.rows.size() || ! list.rows[(size_t) row]->available)
        return;
    if (stateBeforeAudition == nullptr)
    {
        stateBeforeAudition = std::make_unique<juce::MemoryBlock>();
        processor.getStateInformation (*stateBeforeAudition);
    }
    applyEntry (*list.rows[(size_t) row]);
    releaseAuditionNote();
    if (list.auditionRow == row)
    {
        processor.pushNoteOn (auditionNote, auditionVelocity);
        auditionNoteHeld = true;
    }
}

void BrowseView::Impl::releaseAuditionNote()
{
    if (! auditionNoteHeld)
        return;
    processor.pushNoteOff (auditionNote);
    auditionNoteHeld = false;
}

void BrowseView::Impl::leave()
{
    releaseAuditionNote();
    if (list.auditionRow != -1)
    {
        list.auditionRow = -1;
        list.repaint();
    }
    if (stateBeforeAudition == nullptr)
        return;
    // The whole state, identity and dirty flag included, as it stood; the view isn't part of it.
    const auto block = std::move (stateBeforeAudition);
    const int view = processor.getActiveView();
    processor.setStateInformation (block->getData(), (int) block->getSize());
    processor.setActiveView (view);
}

void BrowseView::Impl::refreshFavourites()
{
    auto& row = sidebar.rows[(size_t) Sidebar::favouritesRow];
    row.entries.clear();
    for (const auto* e : sidebar.rows[0].entries)
        if (isFavourite (*e))
            row.entries.push_back (e);
    row.count = (int) row.entries.size();
    sidebar.repaint();
}

void BrowseView::Impl::applyEntry (const presets::Entry& entry)
{
    if (const auto document = presets::loadFactoryDocument (entry.xml))
        processor.applyPresetXml (*document);
}

void BrowseView::Impl::refreshList()
{
    const auto& source = sidebar.rows[(size_t) juce::jlimit (0, (int) sidebar.rows.size() - 1, sidebar.selected)].entries;
    const auto search = searchText.trim().toLowerCase();
    std::vector<const presets::Entry*> rows;
    for (const auto* e : source)
        if (search.isEmpty() || e->displayName.toLowerCase().contains (search) || e->description.toLowerCase().contains (search)
            || derivePresetTags (*e).joinIntoString (" ").toLowerCase().contains (search))
            rows.push_back (e);
    if (sortAlphabetic)
        std::stable_sort (rows.begin(), rows.end(), [] (auto* a, auto* b) { return a->displayName.compareNatural (b->displayName, false) < 0; });
    list.rows = std::move (rows);
    list.selectedRow = list.rows.empty() ? -1 : 0;
    list.auditionRow = -1;
    list.scrollY = 0;
    releaseAuditionNote();
    list.repaint();
    updateDetail();
}

void BrowseView::Impl::updateDetail()
{
    selectedEntry = list.selectedRow >= 0 && list.selectedRow < (int) list.rows.size() ? list.rows[(size_t) list.selectedRow] : nullptr;
    juce::String category;
    for (const auto& c : catalogue.categories)
        for (const auto& e : c.entries)
            if (&e == selectedEntry)
                category = c.name;
    detail.setEntry (selectedEntry, category);
    detail.favouriteButton.setToggleState (selectedEntry != nullptr && isFavourite (*selectedEntry), juce::dontSendNotification);
}

bool BrowseView::Impl::isFavourite (const presets::Entry& entry) const
{
    return favourites != nullptr && favourites->getBoolValue ("fav_" + entry.xml, false);
}

void BrowseView::Impl::toggleFavourite()
{
    const bool next = ! isFavourite (*selectedEntry);
    if (favourites != nullptr)
    {
        favourites->setValue ("fav_" + selectedEntry->xml, next);
        favourites->saveIfNeeded();
    }
    detail.favouriteButton.setToggleState (next, juce::dontSendNotification);

    refreshFavourites();
    if (sidebar.selected == Sidebar::favouritesRow)
    {
        // The list follows the stars; the selection stays where it was, as far as it can.
        const int keep = list.selectedRow;
        refreshList();
        if (! list.rows.empty())
            list.selectedRow = juce::jlimit (0, (int) list.rows.size() - 1, keep);
        updateDetail();
    }
}

void BrowseView::Impl::loadRow (int row)
{
    if (row < 0 || row >= (int) list.rows.size() || ! list.rows[(size_t) row]->available)
        return;
    const auto* entry = list.rows[(size_t) row];
    releaseAuditionNote();
    stateBeforeAudition.reset();
    applyEntry (*entry);
    list.auditionRow = -1;
    list.repaint();
    if (owner.onPresetChosen)
        owner.onPresetChosen (entry->xml);
    if (owner.onClose)
        owner.onClose();
}

void BrowseView::Impl::moveSelection (int delta)
{
    if (list.rows.empty())
        return;
    const int next = juce::jlimit (0, (int) list.rows.size() - 1, list.selectedRow + delta);
    if (next == list.selectedRow)
        return;
    list.selectedRow = next;
    const int top = next * 96;
    if (top < list.scrollY)
        list.scrollY = top;
    else if (top + 96 > list.scrollY + list.getHeight() - 128)
        list.scrollY = top + 96 - (list.getHeight() - 128);
    list.scrollY = juce::jmax (0, list.scrollY);
    list.repaint();
    updateDetail();
}

void BrowseView::Impl::paint (juce::Graphics& g) { g.fillAll (token (Token::bgGround)); }

void BrowseView::Impl::resized()
{
    sidebar.setBounds (0, 0, 204, getHeight());
    list.setBounds (204, 0, 660, getHeight());
    detail.setBounds (864, 0, 420, getHeight());
}

BrowseView::BrowseView (MorvaneAudioProcessor& processor, const presets::Catalogue& catalogue, juce::PropertiesFile* favourites)
    : impl (std::make_unique<Impl> (*this, processor, catalogue, favourites))
{
    setName ("BrowseView");
    setWantsKeyboardFocus (true);
    addAndMakeVisible (*impl);
}

BrowseView::~BrowseView() = default;

void BrowseView::paint (juce::Graphics& g) { g.fillAll (token (Token::bgGround)); }

bool BrowseView::keyPressed (const juce::KeyPress& key)
{
    if (key == juce::KeyPress::escapeKey)
    {
        if (onClose)
            onClose();
        return true;
    }
    if (key == juce::KeyPress::upKey || key == juce::KeyPress::downKey)
    {
        impl->moveSelection (key == juce::KeyPress::upKey ? -1 : +1);
        return true;
    }
    if (key == juce::KeyPress::returnKey)
    {
        if (impl->list.selectedRow >= 0)
            impl->loadRow (impl->list.selectedRow);
        return true;
    }
    return false;
}

void BrowseView::resized() { impl->setBounds (getLocalBounds()); }

void BrowseView::visibilityChanged()
{
    if (! isVisible())
        impl->leave();
}
}
