#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvane::ui
{
// The 32 colour tokens, in the order of every theme table and of theme files.
enum class Token : int
{
    bgGround, bgSurface, bgSurface2, bgPanel,
    borderHair, borderFocus,
    textPrimary, textSecondary, textTertiary, textDisabled,
    accentPrimary, accentPrimaryText, accentHero, accentSelection, accentModRing, accentEmber, accentLive,
    semanticWarn, semanticError,
    sourceVelocity, sourceKey, sourceModWheel, sourceAftertouch, sourceLfo, sourceDcw1, sourceDcw2,
    controlFill, controlFillActive, controlBorder, controlBorderHover, controlText, controlValue
};

constexpr int tokenCount = 32;

struct TokenInfo
{
    const char* group;
    const char* key;
    bool byName; // the source colours can't be asked for by name
};

const TokenInfo& tokenInfo (int index) noexcept;
// "bg.ground"; the dotted name of a source token is still group.key, though it isn't looked up.
juce::String tokenDottedName (int index);

// Process-wide values, read by paint routines at paint time (message thread only).
juce::Colour token (Token t) noexcept;
juce::Colour token (int index) noexcept;
void setToken (int index, juce::Colour colour) noexcept;

// The 25 named tokens and "transparent"; the fallback for anything else.
juce::Colour tokenByName (const juce::String& name, juce::Colour fallback);
// The first token, in the order text, bg, border, accent, semantic, control, equal to the colour.
juce::String tokenName (juce::Colour colour);
void setThemeProperty (juce::Component& component, const juce::Identifier& property, juce::Colour colour);

// Colours that belong to no theme.
namespace overlay
{
    const juce::Colour hover = juce::Colour::fromFloatRGBA (1.0f, 1.0f, 1.0f, 0.07f);
    const juce::Colour selected = juce::Colour::fromFloatRGBA (0.78f, 0.96f, 0.0f, 0.12f);
    const juce::Colour shadeLight = juce::Colour::fromFloatRGBA (0.0f, 0.0f, 0.0f, 0.24f);
    const juce::Colour shadeHeavy = juce::Colour::fromFloatRGBA (0.0f, 0.0f, 0.0f, 0.40f);
    const juce::Colour gridCyan { 0xff32e6ff };
    const juce::Colour gridPink { 0xffff499a };
    const juce::Colour gridYellow { 0xffffd24a };
}

// A text editor made for a moment: its four theme properties (token names) and the colours they
// stand for now, with the selection in accent.primary at the given alpha.
void styleTextEditor (juce::TextEditor& editor, const juce::String& bg, const juce::String& outline, const juce::String& focus,
                      const juce::String& text, float highlightAlpha);

// text.primary as it stood at start-up, before any theme: the debug grid's numbers.
juce::Colour startupTextPrimary() noexcept;

// Component properties by which cached colours are refreshed after a theme change.
namespace themeProperty
{
    const juce::Identifier label { "morvane.theme.label" };
    const juce::Identifier editorBg { "morvane.theme.editor.bg" };
    const juce::Identifier editorOutline { "morvane.theme.editor.outline" };
    const juce::Identifier editorFocus { "morvane.theme.editor.focus" };
    const juce::Identifier editorText { "morvane.theme.editor.text" };
}
}
