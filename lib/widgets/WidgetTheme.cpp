#include "WidgetTheme.h"

namespace ostrel::widgets
{
namespace
{
constexpr juce::uint32 defaults[paletteSize] = {
    0xff0b0b0a, 0xff131617, 0xff070808, 0xff1c2122, 0xff556266, 0xffd7ff37,
    0xfff2f4e8, 0xff97a4ad, 0xff586264, 0xffc8f500, 0xff0b0b0a, 0xff55b9ff,
    0xff273132, 0xff55b9ff, 0xffff7a2f, 0xffff3c77, 0xffffb23e, 0xffff5e6c,
};

constexpr const char* names[paletteSize] = {
    "surface.base", "surface.raised", "surface.panel", "surface.overlay", "border.subtle",
    "border.focus", "text.primary", "text.muted", "text.disabled", "accent.primary",
    "accent.primaryText", "accent.secondary", "accent.selection", "accent.modRing",
    "accent.ember", "accent.live", "semantic.warn", "semantic.error",
};

WidgetTheme& currentStorage()
{
    static WidgetTheme theme = WidgetTheme::makeDefault();
    return theme;
}
} // namespace

juce::Colour WidgetTheme::defaultColour(int index)
{
    return index >= 0 && index < paletteSize ? juce::Colour(defaults[index]) : juce::Colour(defaults[0]);
}

const char* WidgetTheme::paletteName(int index)
{
    return index >= 0 && index < paletteSize ? names[index] : "";
}

juce::Colour WidgetTheme::colour(int index) const
{
    const auto it = palette.find(index);
    return it != palette.end() ? it->second : defaultColour(index);
}

WidgetTheme WidgetTheme::makeDefault()
{
    WidgetTheme theme;
    theme.id = "ostrel.dark";
    theme.displayName = "Ostrel Dark";
    theme.dark = true;
    for (int i = 0; i < paletteSize; ++i)
        theme.palette[i] = juce::Colour(defaults[i]);
    return theme;
}

const WidgetTheme& WidgetTheme::current() { return currentStorage(); }

void WidgetTheme::setCurrent(WidgetTheme theme) { currentStorage() = std::move(theme); }

} // namespace ostrel::widgets
