#include "ui/theme/Tokens.h"

#include <array>

namespace morvane::ui
{
namespace
{
constexpr std::array<TokenInfo, tokenCount> infos { {
    { "bg", "ground", true }, { "bg", "surface", true }, { "bg", "surface2", true }, { "bg", "panel", true },
    { "border", "hair", true }, { "border", "focus", true },
    { "text", "primary", true }, { "text", "secondary", true }, { "text", "tertiary", true }, { "text", "disabled", true },
    { "accent", "primary", true }, { "accent", "primaryText", true }, { "accent", "hero", true },
    { "accent", "selection", true }, { "accent", "modRing", true }, { "accent", "ember", true }, { "accent", "live", true },
    { "semantic", "warn", true }, { "semantic", "error", true },
    { "source", "velocity", false }, { "source", "key", false }, { "source", "modwheel", false },
    { "source", "aftertouch", false }, { "source", "lfo1", false }, { "source", "dcw1", false }, { "source", "dcw2", false },
    { "control", "fill", true }, { "control", "fillActive", true }, { "control", "border", true },
    { "control", "borderHover", true }, { "control", "text", true }, { "control", "value", true },
} };

// The values of "dark", so that a paint before any theme still has colours.
std::array<juce::Colour, tokenCount> values { {
    juce::Colour (0xff0b0b0a), juce::Colour (0xff131617), juce::Colour (0xff1c2122), juce::Colour (0xff070808),
    juce::Colour (0xff556266), juce::Colour (0xffd7ff37),
    juce::Colour (0xfff2f4e8), juce::Colour (0xffc5cdd3), juce::Colour (0xff97a4ad), juce::Colour (0xff586264),
    juce::Colour (0xffc8f500), juce::Colour (0xffedff77), juce::Colour (0xffd7ff37), juce::Colour (0xff1a2700),
    juce::Colour (0xff55b9ff), juce::Colour (0xffff7a1a), juce::Colour (0xffff3c77),
    juce::Colour (0xffffb23e), juce::Colour (0xffff5e6c),
    juce::Colour (0xfff2f4e8), juce::Colour (0xffa8b2be), juce::Colour (0xff39d4ff), juce::Colour (0xffff6ac1),
    juce::Colour (0xffc8f500), juce::Colour (0xff7ab8ff), juce::Colour (0xffb98cff),
    juce::Colour (0xff1c2122), juce::Colour (0xff263032), juce::Colour (0xff7a898e), juce::Colour (0xffc8f500),
    juce::Colour (0xfff2f4e8), juce::Colour (0xffc8f500),
} };

const juce::Colour startupText = values[(size_t) Token::textPrimary];

// Group order of tokenName: text, bg, border, accent, semantic, control.
constexpr const char* nameSearchGroups[] = { "text", "bg", "border", "accent", "semantic", "control" };
}

const TokenInfo& tokenInfo (int index) noexcept
{
    return infos[(size_t) juce::jlimit (0, tokenCount - 1, index)];
}

juce::String tokenDottedName (int index)
{
    const auto& info = tokenInfo (index);
    return juce::String (info.group) + "." + info.key;
}

juce::Colour token (Token t) noexcept { return values[(size_t) t]; }

juce::Colour token (int index) noexcept
{
    return index >= 0 && index < tokenCount ? values[(size_t) index] : juce::Colour();
}

void setToken (int index, juce::Colour colour) noexcept
{
    if (index >= 0 && index < tokenCount)
        values[(size_t) index] = colour;
}

juce::Colour tokenByName (const juce::String& name, juce::Colour fallback)
{
    if (name == "transparent")
        return juce::Colours::transparentBlack;
    for (int i = 0; i < tokenCount; ++i)
        if (infos[(size_t) i].byName && tokenDottedName (i) == name)
            return values[(size_t) i];
    return fallback;
}

juce::String tokenName (juce::Colour colour)
{
    for (auto* group : nameSearchGroups)
        for (int i = 0; i < tokenCount; ++i)
            if (infos[(size_t) i].byName && juce::String (infos[(size_t) i].group) == group
                && values[(size_t) i].getARGB() == colour.getARGB())
                return tokenDottedName (i);
    return {};
}

void setThemeProperty (juce::Component& component, const juce::Identifier& property, juce::Colour colour)
{
    const auto name = tokenName (colour);
    if (name.isNotEmpty())
        component.getProperties().set (property, name);
}

void styleTextEditor (juce::TextEditor& editor, const juce::String& bg, const juce::String& outline, const juce::String& focus,
                      const juce::String& text, float highlightAlpha)
{
    auto& props = editor.getProperties();
    props.set (themeProperty::editorBg, bg);
    props.set (themeProperty::editorOutline, outline);
    props.set (themeProperty::editorFocus, focus);
    props.set (themeProperty::editorText, text);
    const auto none = juce::Colours::transparentBlack;
    editor.setColour (juce::TextEditor::backgroundColourId, tokenByName (bg, none));
    editor.setColour (juce::TextEditor::outlineColourId, tokenByName (outline, none));
    editor.setColour (juce::TextEditor::focusedOutlineColourId, tokenByName (focus, none));
    editor.setColour (juce::CaretComponent::caretColourId, tokenByName (focus, none));
    editor.setColour (juce::TextEditor::textColourId, tokenByName (text, none));
    editor.setColour (juce::TextEditor::highlightedTextColourId, tokenByName (text, none));
    editor.setColour (juce::TextEditor::highlightColourId, token (Token::accentPrimary).withAlpha (highlightAlpha));
}

juce::Colour startupTextPrimary() noexcept { return startupText; }
}
