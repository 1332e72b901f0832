#pragma once

#include "ui/theme/Tokens.h"

#include <array>

namespace morvane::ui
{
struct ThemeEntry
{
    const char* id;
    const char* displayName;
    std::array<juce::uint32, tokenCount> colours; // 24-bit RGB, opaque, in token order
};

constexpr int builtInThemeCount = 18;

// The built-in themes in menu order; "dark" is first, the default and the base of custom themes.
const std::array<ThemeEntry, builtInThemeCount>& builtInThemes() noexcept;
const ThemeEntry& darkTheme() noexcept;
const ThemeEntry* findTheme (const juce::String& id) noexcept;

void applyThemeEntry (const ThemeEntry& entry) noexcept;
// Exact id; "untitled", an older name, counts as velvetReactor. False leaves the tokens alone.
bool applyThemeById (const juce::String& id) noexcept;

// Parsed theme file: "dark" first, then every token the file gives as 6 or 8 hex digits.
bool applyThemeJson (const juce::var& json, juce::String* error = nullptr);
// The text written as custom-theme-template.json ("\n" line ends; the writer converts them).
juce::String customThemeTemplate();

// Derive the widget library's palette from the tokens and make it current.
void publishWidgetTheme();
// Refresh the colours that labels, text editors and section frames cache, depth first.
void recolourComponents (juce::Component& root);
}
