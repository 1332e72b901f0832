#include "ui/primitives/canonical/LabeledChipButton.h"
#include "ui/theme/LookAndFeel.h"
#include "ui/theme/Surfaces.h"
#include "ui/theme/Themes.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

#include <gtest/gtest.h>

using namespace morvane::ui;

TEST (LookAndFeel, SixEmbeddedFacesAndTheTypeRoles)
{
    for (int i = 0; i < 6; ++i)
        EXPECT_NE (embeddedTypeface (i), nullptr) << i;
    EXPECT_EQ (embeddedTypeface (6), nullptr);
    EXPECT_EQ (embeddedTypeface (-1), nullptr);
    EXPECT_NE (embeddedTypeface (0)->getName(), embeddedTypeface (4)->getName()) << "body and read-out faces differ";

    struct Role { int role; float height; float kerning; };
    const Role roles[] = { { 0, 20, 0 }, { 1, 18, 0 }, { 2, 13, 0.5f / 13 }, { 3, 14, 0 }, { 4, 11, 0 }, { 5, 11, 0 },
                           { 6, 10, 0.12f }, { 7, 9, 0.12f }, { 8, 10, 0.12f }, { 9, 28, 0 }, { 42, 14, 0 }, { -1, 14, 0 } };
    for (const auto& r : roles)
    {
        const auto font = fontForTypeRole (r.role);
        EXPECT_FLOAT_EQ (font.getHeight(), r.height) << r.role;
        EXPECT_NEAR (font.getExtraKerningFactor(), r.kerning, 1e-6) << r.role;
    }
    EXPECT_EQ (fontForTypeRole (5).getTypefaceName(), embeddedTypeface (4)->getName());
}

TEST (LookAndFeel, TextButtonRolesByHeightAndText)
{
    struct Case { const char* text; int height; int role; };
    const Case cases[] = { { "OK", 44, 6 }, { "Go", 44, 6 }, { "Import theme", 44, 3 }, { "Import theme", 24, 6 },
                           { "SAVE", 30, 6 }, { "SAVEAS", 30, 3 }, { "Save", 30, 3 } };
    for (const auto& c : cases)
        EXPECT_EQ (LookAndFeel::textButtonRole (c.text, c.height), c.role) << c.text << " " << c.height;

    LookAndFeel lnf;
    juce::TextButton small ("Import theme");
    EXPECT_FLOAT_EQ (lnf.getTextButtonFont (small, 16).getHeight(), 8.0f);
    EXPECT_FLOAT_EQ (lnf.getTextButtonFont (small, 19).getHeight(), 11.0f);
}

TEST (LookAndFeel, SurfaceVariantsAndPlateStates)
{
    juce::TextButton button;
    juce::ComboBox box;
    EXPECT_EQ (surfaceVariantOf (button, 0), 0);
    EXPECT_EQ (surfaceVariantOf (box, 1), 1);
    button.getProperties().set (surfaceVariantProperty, "commandButton");
    box.getProperties().set (surfaceVariantProperty, "commandButton");
    EXPECT_EQ (surfaceVariantOf (button, 0), 0);
    EXPECT_EQ (surfaceVariantOf (box, 1), 1);
    box.getProperties().set (surfaceVariantProperty, "statusChip");
    EXPECT_EQ (surfaceVariantOf (box, 1), 8);
    EXPECT_FLOAT_EQ (surfaceVariant (42).radius, surfaceVariant (4).radius);

    for (int level = 0; level <= 4; ++level)
    {
        const auto rest = plateRecord (level, SurfaceState::rest);
        const auto pressed = plateRecord (level, SurfaceState::pressed);
        EXPECT_EQ (pressed.shadowOffset, 0) << level;
        EXPECT_TRUE (pressed.inset) << level;
        EXPECT_EQ (pressed.topEdge, rest.bottomEdge.withAlpha (0.78f)) << level;
        EXPECT_TRUE (plateRecord (level, SurfaceState::disabled).shadow.isTransparent()) << level;
        EXPECT_EQ (plateRecord (level, 99).fill, rest.fill) << "a state outside the table changes nothing";
    }
    EXPECT_TRUE (plateRecord (5, 0).fill.isTransparent());
    EXPECT_EQ (plateRecord (1, SurfaceState::focused).outline, token (Token::borderFocus));
}

namespace
{
juce::Image paintSurface (bool toggled, bool focused, bool enabled)
{
    juce::Image image (juce::Image::ARGB, 60, 30, true);
    juce::Graphics g (image);
    drawControlSurface (g, { 0, 0, 60, 30 }, false, false, toggled, focused, enabled, 0);
    return image;
}
}

TEST (LookAndFeel, ControlSurfacePixels)
{
    applyThemeEntry (darkTheme());
    // A toggled control carries its accent bar along the top, even when disabled (then shaded).
    const auto toggled = paintSurface (true, false, true);
    const auto bar = toggled.getPixelAt (30, 1);
    EXPECT_GT (bar.getGreen(), 150) << "accent.primary bar";
    const auto disabledToggled = paintSurface (true, false, false);
    EXPECT_LT (disabledToggled.getPixelAt (30, 1).getGreen(), bar.getGreen());
    EXPECT_GT (disabledToggled.getPixelAt (30, 1).getGreen(), 60) << "the bar still shows under the shade";

    // A focused control draws the focus ring, not its own outline.
    const auto focused = paintSurface (false, true, true);
    const auto edge = focused.getPixelAt (30, 0);
    EXPECT_GT (edge.getGreen(), 150);
    EXPECT_GT (edge.getRed(), 120);
}

TEST (LookAndFeel, ChipButtonPaintsItsCaptionInTheRoleCase)
{
    applyThemeEntry (darkTheme());
    primitives::canonical::LabeledChipButton chip ("browse", 6, 0);
    chip.setSize (96, 36);
    EXPECT_TRUE (chip.getWantsKeyboardFocus());
    juce::Image image (juce::Image::ARGB, 96, 36, true);
    juce::Graphics g (image);
    chip.paintEntireComponent (g, false);
    int bright = 0;
    for (int y = 10; y < 26; ++y)
        for (int x = 20; x < 76; ++x)
            bright += image.getPixelAt (x, y).getBrightness() > 0.5f ? 1 : 0;
    EXPECT_GT (bright, 20) << "caption drawn in text.secondary over the plate";
}
