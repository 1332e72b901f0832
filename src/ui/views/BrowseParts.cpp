#include "ui/views/BrowseParts.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui::views
{
namespace
{
juce::Font kernedRole6()
{
    auto font = fontForTypeRole (6);
    font.setExtraKerningFactor (0.12f);
    return font;
}
}

void fillChip (juce::Graphics& g, juce::Rectangle<float> box, bool flag)
{
    g.setColour (flag ? token (Token::accentPrimary).withAlpha (0.18f) : token (Token::bgSurface2));
    g.fillRoundedRectangle (box, 2.0f);
    g.setColour (flag ? token (Token::accentPrimary) : token (Token::borderHair));
    g.drawRoundedRectangle (box.reduced (0.5f), 2.0f, 1.0f);
}

//==============================================================================
BrowserButton::BrowserButton (int k, const juce::String& text) : juce::Button (text), kind (k)
{
    setWantsKeyboardFocus (true);
    setMouseCursor (juce::MouseCursor::PointingHandCursor);
    if (kind == 2)
    {
        setClickingTogglesState (true);
        setTooltip ("Favourite preset");
        setTitle ("Favourite preset");
    }
    else
    {
        setTooltip (text);
    }
}

void BrowserButton::paintButton (juce::Graphics& g, bool over, bool down)
{
    const auto bounds = getLocalBounds().toFloat();
    if (kind == 1)
    {
        auto fill = token (Token::accentPrimary);
        fill = down ? fill.darker (0.15f) : over ? fill.brighter (0.05f) : fill;
        g.setColour (fill);
        g.fillRoundedRectangle (bounds, 2.0f);
        const bool focused = hasKeyboardFocus (false);
        g.setColour (focused ? token (Token::borderFocus) : token (Token::accentPrimary));
        g.drawRoundedRectangle (bounds.reduced (0.5f), 2.0f, focused ? 2.0f : 1.5f);
        drawTypeText (g, 2, getButtonText(), getLocalBounds(), token (isEnabled() ? Token::bgGround : Token::textDisabled),
                      juce::Justification::centred);
        return;
    }

    drawControlSurface (g, bounds, over, down, kind == 2 && getToggleState(), hasKeyboardFocus (false), isEnabled(), 0);
    if (kind == 0)
    {
        drawTypeText (g, 6, getButtonText(), getLocalBounds(),
                      token (! isEnabled() ? Token::textDisabled : over ? Token::textPrimary : Token::textSecondary),
                      juce::Justification::centred);
        return;
    }
    juce::Path star;
    const auto centre = bounds.getCentre();
    for (int i = 0; i < 10; ++i)
    {
        const float radius = i % 2 == 0 ? 10.0f : 4.0f;
        const float angle = ((float) i * 0.2f - 0.5f) * juce::MathConstants<float>::pi;
        const juce::Point<float> v (centre.x + radius * std::cos (angle), centre.y + radius * std::sin (angle));
        i == 0 ? star.startNewSubPath (v) : star.lineTo (v);
    }
    star.closeSubPath();
    const bool on = getToggleState();
    g.setColour (token (! isEnabled() ? Token::textDisabled : on ? Token::accentPrimary : over ? Token::textPrimary : Token::textSecondary));
    if (on)
        g.fillPath (star);
    else
        g.strokePath (star, juce::PathStrokeType (1.0f));
}

//==============================================================================
Sidebar::Sidebar (const presets::Catalogue& catalogue)
{
    Row all { "__all__", "ALL", 0, {} };
    for (const auto* e : presets::flatEntries (catalogue))
        all.entries.push_back (e);
    all.count = (int) all.entries.size();
    rows.push_back (std::move (all));
    // Filled from the stars by the page, which owns the settings.
    rows.push_back ({ "__favourites__", "FAVOURITES", 0, {} });
    for (const auto& c : catalogue.categories)
    {
        Row row { c.id, c.name, (int) c.entries.size(), {} };
        for (const auto& e : c.entries)
            row.entries.push_back (&e);
        rows.push_back (std::move (row));
    }
    setMouseClickGrabsKeyboardFocus (false);
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i].id == "reese-jungle-dnb")
            selected = (int) i;
}

int Sidebar::rowAt (juce::Point<int> p) const
{
    for (int i = 0; i < (int) rows.size(); ++i)
        if (p.x >= 24 && p.x < 180 && p.y >= 84 + 44 * i && p.y < 128 + 44 * i)
            return i;
    return -1;
}

void Sidebar::mouseMove (const juce::MouseEvent& e)
{
    if (const int row = rowAt (e.getPosition()); row != hover)
    {
        hover = row;
        repaint();
    }
}

void Sidebar::mouseExit (const juce::MouseEvent&)
{
    if (hover != -1)
    {
        hover = -1;
        repaint();
    }
}

void Sidebar::mouseDown (const juce::MouseEvent& e)
{
    if (auto* page = findParentComponentOfClass<BrowseView>())
        page->grabKeyboardFocus();
    const int row = rowAt (e.getPosition());
    if (row < 0 || row == selected)
        return;
    selected = row;
    repaint();
    if (onCategoryChosen)
        onCategoryChosen (row);
}

juce::MouseCursor Sidebar::getMouseCursor()
{
    return rowAt (getMouseXYRelative()) >= 0 ? juce::MouseCursor::PointingHandCursor : juce::MouseCursor::NormalCursor;
}

void Sidebar::paint (juce::Graphics& g)
{
    g.fillAll (token (Token::bgGround));
    g.setFont (kernedRole6());
    g.setColour (token (Token::textTertiary));
    g.drawText ("CATEGORY", 24, 35, 156, 22, juce::Justification::centredLeft);
    g.setColour (token (Token::borderHair));
    g.fillRect (0, 68, getWidth(), 1);
    for (int i = 0; i < (int) rows.size(); ++i)
    {
        const auto box = rowBox (i);
        auto nameColour = token (Token::textSecondary);
        if (i == selected)
        {
            g.setColour (token (Token::bgSurface));
            g.fillRect (box);
            g.setColour (token (Token::accentSelection));
            g.fillRect (24, box.getY(), 4, 44);
            nameColour = token (Token::textPrimary);
        }
        else if (i == hover)
        {
            g.setColour (overlay::hover);
            g.fillRect (box);
            nameColour = token (Token::textPrimary);
        }
        // Category names are long; the count keeps to the row's right end so the name has room.
        drawTypeText (g, 6, rows[(size_t) i].name, juce::Rectangle<int> (36, box.getY(), 108, 44), nameColour, juce::Justification::centredLeft);
        drawTypeText (g, 5, juce::String (rows[(size_t) i].count), juce::Rectangle<int> (144, box.getY(), 28, 44),
                      token (i == selected ? Token::textSecondary : Token::textTertiary), juce::Justification::centredRight);
    }
}

//==============================================================================
bool PresetList::SearchField::keyPressed (const juce::KeyPress& key)
{
    if (key == juce::KeyPress::upKey || key == juce::KeyPress::downKey || key == juce::KeyPress::returnKey
        || key == juce::KeyPress::escapeKey)
        return false;
    return juce::TextEditor::keyPressed (key);
}

PresetList::PresetList()
{
    searchEditor.setTextToShowWhenEmpty (juce::String (juce::CharPointer_UTF8 ("search presets\xe2\x80\xa6")), token (Token::textTertiary));
    searchEditor.setFont (fontForTypeRole (3));
    styleTextEditor (searchEditor, "bg.surface", "border.hair", "accent.primary", "text.primary", 0.3f);
    searchEditor.setIndents (12, 8);
    searchEditor.setTitle ("Search presets");
    searchEditor.onTextChange = [this] { if (onSearchChanged) onSearchChanged (searchEditor.getText()); };
    setSortText (juce::String (juce::CharPointer_UTF8 ("SORT \xc2\xb7 A\xe2\x86\x92Z")));
    // A click on a row keeps the keyboard on the page (arrows, Return), not in the search field.
    setMouseClickGrabsKeyboardFocus (false);
    sortButton.onClick = [this] { if (onSortClicked) onSortClicked(); };
    addAndMakeVisible (searchEditor);
    addAndMakeVisible (sortButton);
}

void PresetList::setSortText (const juce::String& text)
{
    sortButton.setButtonText (text);
    sortButton.setTooltip (text);
}

int PresetList::rowAt (juce::Point<int> p) const
{
    if (p.x < 24 || p.x >= 636 || p.y < 84)
        return -1;
    const int row = (p.y - 84 + scrollY) / 96;
    return row >= 0 && row < (int) rows.size() ? row : -1;
}

bool PresetList::inAudition (int row, juce::Point<int> p) const
{
    const int t = rowTop (row);
    return p.x >= 482 && p.x < 578 && p.y >= t + 26 && p.y < t + 70;
}

void PresetList::pressAudition (int row)
{
    auditionRow = auditionRow == row ? -1 : row;
    repaint();
    if (onAudition)
        onAudition (row);
}

void PresetList::mouseMove (const juce::MouseEvent& e)
{
    const int row = rowAt (e.getPosition());
    const int audition = row >= 0 && inAudition (row, e.getPosition()) ? row : -1;
    if (row != hoverRow || audition != hoverAudition)
    {
        hoverRow = row;
        hoverAudition = audition;
        repaint();
    }
}

void PresetList::mouseExit (const juce::MouseEvent&)
{
    hoverRow = hoverAudition = -1;
    repaint();
}

void PresetList::mouseDown (const juce::MouseEvent& e)
{
    if (auto* page = findParentComponentOfClass<BrowseView>())
        page->grabKeyboardFocus();
    const int row = rowAt (e.getPosition());
    if (row < 0)
        return;
    if (inAudition (row, e.getPosition()))
    {
        pressAudition (row);
        return;
    }
    if (row != selectedRow)
    {
        selectedRow = row;
        repaint();
        if (onRowSelected)
            onRowSelected (row);
    }
}

void PresetList::mouseDoubleClick (const juce::MouseEvent& e)
{
    const int row = rowAt (e.getPosition());
    if (row >= 0 && ! inAudition (row, e.getPosition()) && onRowDoubleClicked)
        onRowDoubleClicked (row);
}

void PresetList::mouseWheelMove (const juce::MouseEvent&, const juce::MouseWheelDetails& wheel)
{
    // The keyboard reaches every row; the wheel is there because a hand expects it.
    const int page = juce::jmax (0, (int) rows.size() * 96 - (getHeight() - 128));
    const int next = juce::jlimit (0, page, scrollY - juce::roundToInt (wheel.deltaY * 240.0f));
    if (next != scrollY)
    {
        scrollY = next;
        repaint();
    }
}

juce::MouseCursor PresetList::getMouseCursor()
{
    return rowAt (getMouseXYRelative()) >= 0 ? juce::MouseCursor::PointingHandCursor : juce::MouseCursor::NormalCursor;
}

void PresetList::resized()
{
    searchEditor.setBounds (24, 24, 508, 44);
    sortButton.setBounds (540, 24, 96, 44);
}

void PresetList::paint (juce::Graphics& g)
{
    g.fillAll (token (Token::bgGround));
    g.setColour (token (Token::borderHair));
    g.fillRect (0, 68, getWidth(), 1);
    if (rows.empty())
    {
        drawTypeText (g, 3, "No presets match the search.", getLocalBounds().withTrimmedTop (112).withHeight (22),
                      token (Token::textTertiary), juce::Justification::centredTop);
        return;
    }

    // Rows slide under the search row rather than over it.
    juce::Graphics::ScopedSaveState saved (g);
    g.reduceClipRegion (24, 69, 612, getHeight() - 69);
    for (int i = 0; i < (int) rows.size(); ++i)
    {
        const int t = rowTop (i);
        if (t + 96 < 85 || t >= getHeight() - 44)
            continue;
        const auto& entry = *rows[(size_t) i];
        const juce::Rectangle<int> box (24, t, 612, 96);
        if (i == selectedRow)
        {
            g.setColour (overlay::selected);
            g.fillRect (box);
            g.setColour (token (Token::accentSelection));
            g.drawRect (box, 1);
        }
        else if (i == hoverRow)
        {
            g.setColour (overlay::hover);
            g.fillRect (box);
        }
        drawTypeText (g, 6, juce::String::formatted ("%02d", i + 1), juce::Rectangle<int> (40, t + 33, 44, 22),
                      token (Token::textTertiary), juce::Justification::centredLeft);
        // Name and description end where the tag chips begin, so no chip covers a word.
        drawTypeText (g, 3, entry.displayName, juce::Rectangle<int> (92, t + 18, 278, 22),
                      token (entry.available ? Token::textPrimary : Token::textSecondary), juce::Justification::centredLeft);
        drawTypeText (g, 4, entry.description, juce::Rectangle<int> (92, t + 40, 278, 22), token (Token::textTertiary),
                      juce::Justification::centredLeft);

        const auto tags = derivePresetTags (entry);
        int x = 378;
        for (const auto& tag : tags)
        {
            if (x > 474)
                break;
            const bool flag = tag == "FLAG";
            const juce::Rectangle<int> chip (x, t + 33, flag ? 44 : 50, 22);
            fillChip (g, chip.toFloat(), flag);
            drawTypeText (g, 6, tag, chip, token (flag ? Token::accentPrimary : Token::textTertiary), juce::Justification::centred);
            x += chip.getWidth() + 4;
        }

        const juce::Rectangle<float> audition (482.0f, (float) t + 26.0f, 96.0f, 44.0f);
        const bool held = i == auditionRow, hovered = i == hoverAudition;
        g.setColour (held ? token (Token::accentPrimary).withAlpha (0.18f)
                          : hovered ? token (Token::bgSurface2).brighter (0.1f) : token (Token::bgSurface2));
        g.fillRoundedRectangle (audition, 2.0f);
        g.setColour (held ? token (Token::accentPrimary) : hovered ? token (Token::accentPrimary).withAlpha (0.4f) : token (Token::borderHair));
        g.drawRoundedRectangle (audition.reduced (0.5f), 2.0f, 1.0f);
        drawTypeText (g, 6, held ? "C1 HOLD" : "AUDITION", audition,
                      token (held ? Token::accentPrimary : hovered ? Token::textPrimary : Token::textSecondary), juce::Justification::centred);
    }
}

//==============================================================================
DetailPanel::DetailPanel()
{
    setMouseClickGrabsKeyboardFocus (false);
    loadButton.onClick = [this] { if (onLoad) onLoad(); };
    favouriteButton.onClick = [this] { if (onFavourite) onFavourite(); };
    addAndMakeVisible (loadButton);
    addAndMakeVisible (favouriteButton);
}

void DetailPanel::setEntry (const presets::Entry* e, const juce::String& category)
{
    entry = e;
    categoryName = category;
    previewImage = {};
    if (entry != nullptr)
        if (const auto file = findPreviewFile (entry->previewSrc); file != juce::File())
            previewImage = juce::ImageFileFormat::loadFrom (file);
    loadButton.setVisible (entry != nullptr);
    favouriteButton.setVisible (entry != nullptr);
    repaint();
}

void DetailPanel::resized()
{
    loadButton.setBounds (24, 436, 320, 44);
    favouriteButton.setBounds (352, 436, 44, 44);
}

void DetailPanel::paint (juce::Graphics& g)
{
    g.fillAll (token (Token::bgGround));
    if (entry == nullptr)
    {
        drawTypeText (g, 6, "NO SELECTION", getLocalBounds(), token (Token::textTertiary), juce::Justification::centred);
        return;
    }
    const auto middleDot = juce::String (juce::CharPointer_UTF8 (" \xc2\xb7 "));
    drawTypeText (g, 6, entry->flagship ? "FLAGSHIP" + middleDot + categoryName : categoryName, juce::Rectangle<int> (24, 24, 232, 22),
                  token (entry->flagship ? Token::accentPrimary : Token::textSecondary), juce::Justification::centredLeft);
    drawTypeText (g, 9, entry->displayName, juce::Rectangle<int> (24, 62, 372, 44), token (Token::textPrimary),
                  juce::Justification::centredLeft);
    g.setFont (fontForTypeRole (3));
    g.setColour (token (Token::textSecondary));
    g.drawFittedText (entry->description, 24, 122, 372, 44, juce::Justification::topLeft, 2, 1.0f);

    juce::StringArray signature { categoryName };
    for (const auto& pair : entry->signature)
        if (pair.value.isNotEmpty() && signature.size() < 4)
            signature.add (pair.value);
    int x = 24;
    for (const auto& item : signature)
    {
        const int width = juce::jmin (juce::jmax (42, (item.length() + 2) * 7), 24 + 372 - x);
        if (width < 1)
            break;
        const juce::Rectangle<float> chip ((float) x, 168.0f, (float) width, 18.0f);
        g.setColour (token (Token::bgSurface2));
        g.fillRoundedRectangle (chip, 2.0f);
        g.setColour (token (Token::borderHair).withAlpha (0.55f));
        g.drawRoundedRectangle (chip.reduced (0.5f), 2.0f, 1.0f);
        drawTypeText (g, 7, item, chip, token (Token::textTertiary), juce::Justification::centred);
        x += width + 8;
    }

    x = 24;
    for (const auto& tag : derivePresetTags (*entry))
    {
        const bool flag = tag == "FLAG";
        const juce::Rectangle<int> chip (x, 192, flag ? 44 : 56, 22);
        if (chip.getRight() > 24 + 372)
            break;
        fillChip (g, chip.toFloat(), flag);
        drawTypeText (g, 7, tag, chip, token (flag ? Token::accentPrimary : Token::textSecondary), juce::Justification::centred);
        x += chip.getWidth() + 4;
    }

    drawSurface (g, { 24.0f, 224.0f, 372.0f, 96.0f }, 2, SurfaceState::rest);
    drawTypeText (g, 6, "SIGNAL PREVIEW", juce::Rectangle<int> (36, 232, 200, 22), token (Token::textTertiary), juce::Justification::centredLeft);
    drawTypeText (g, 6, "C1 / 85 VEL", juce::Rectangle<int> (300, 232, 84, 22), token (Token::textTertiary), juce::Justification::centredRight);
    const juce::Rectangle<float> picture (36.0f, 252.0f, 348.0f, 64.0f);
    if (previewImage.isValid())
        g.drawImage (previewImage, picture, juce::RectanglePlacement::centred | juce::RectanglePlacement::onlyReduceInSize);
    else
        drawTypeText (g, 6, "NO PREVIEW", picture, token (Token::textTertiary), juce::Justification::centred);

    const int n = (int) entry->signature.size();
    if (n > 0)
    {
        const int rowCount = (n + 1) / 2;
        const int rowHeight = juce::jmax (44, 96 / rowCount);
        for (int i = 0; i < n; ++i)
        {
            const int px = 24 + (i % 2) * 186, py = 336 + (i / 2) * rowHeight;
            g.setFont (kernedRole6());
            g.setColour (token (Token::textTertiary));
            g.drawFittedText (entry->signature[(size_t) i].label.toUpperCase(), px, py, 186, 22, juce::Justification::topLeft, 1);
            drawTypeText (g, 5, entry->signature[(size_t) i].value, juce::Rectangle<int> (px, py + 22, 186, juce::jmax (0, rowHeight - 22)),
                          token (Token::textPrimary), juce::Justification::topLeft);
        }
    }
}
}
