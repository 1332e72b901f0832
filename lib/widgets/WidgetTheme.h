#pragma once

#include <juce_graphics/juce_graphics.h>
#include <map>

namespace ostrel::widgets
{

// Palette indices of the widget library. The library never reads the editor's tokens: it asks
// the current WidgetTheme at paint time, so a theme change needs nothing but a repaint.
enum PaletteIndex : int
{
    surfaceBase = 0,
    surfaceRaised = 1,
    surfacePanel = 2,
    surfaceOverlay = 3,
    borderSubtle = 4,
    borderFocus = 5,
    textPrimary = 6,
    textMuted = 7,
    textDisabled = 8,
    accentPrimary = 9,
    accentPrimaryText = 10,
    accentSecondary = 11,
    accentSelection = 12,
    accentModRing = 13,
    accentEmber = 14,
    accentLive = 15,
    semanticWarn = 16,
    semanticError = 17,
    paletteSize = 18
};

using WidgetPalette = std::map<int, juce::Colour>;

struct WidgetTheme
{
    juce::String id;
    juce::String displayName;
    bool dark = true;
    WidgetPalette palette;
    // The faces of the library's text; none means the framework's default sans-serif. A host
    // that embeds its own faces hands them over so that all text on screen is one family.
    juce::Typeface::Ptr regularFace, boldFace;

    // An index the palette lacks falls back to the default table.
    juce::Colour colour(int index) const;

    static WidgetTheme makeDefault();
    static juce::Colour defaultColour(int index);
    static const char* paletteName(int index);

    // The current theme lives in one lazily built static object; read it at paint time only.
    static const WidgetTheme& current();
    static void setCurrent(WidgetTheme theme);
};

// Shorthand for paint routines.
inline juce::Colour paletteColour(int index) { return WidgetTheme::current().colour(index); }

} // namespace ostrel::widgets
