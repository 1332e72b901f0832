#include "ui/theme/Themes.h"
#include "ui/theme/Typography.h"

#include "widgets/SectionFrame.h"
#include "widgets/WidgetTheme.h"

namespace morvane::ui
{
namespace
{
bool readHexColour (const juce::var& value, juce::Colour& out)
{
    auto text = value.toString().trim();
    if (text.startsWithChar ('#'))
        text = text.substring (1);
    if (text.length() == 6)
    {
        out = juce::Colour (0xff000000u | ((juce::uint32) text.getHexValue32() & 0x00ffffffu));
        return true;
    }
    if (text.length() == 8)
    {
        out = juce::Colour ((juce::uint32) text.getHexValue32());
        return true;
    }
    return false;
}

juce::String hexOf (juce::Colour c) { return "#" + c.toDisplayString (false).toLowerCase(); }
}

bool applyThemeJson (const juce::var& json, juce::String* error)
{
    // The framework counts an array as an object too.
    if (! json.isObject() || json.isArray())
    {
        if (error != nullptr)
            *error = "Theme JSON must be an object.";
        return false;
    }

    applyThemeEntry (darkTheme());
    for (int i = 0; i < tokenCount; ++i)
    {
        const auto& info = tokenInfo (i);
        const auto group = json.getProperty (info.group, {});
        if (! group.isObject() || ! group.hasProperty (info.key))
            continue;
        juce::Colour colour;
        if (readHexColour (group[info.key], colour))
            setToken (i, colour);
    }
    return true;
}

juce::String customThemeTemplate()
{
    juce::StringArray lines { "{", "  \"name\": \"Custom\"," };
    const auto& dark = darkTheme();
    juce::String currentGroup, line;
    for (int i = 0; i <= tokenCount; ++i)
    {
        const bool flush = i == tokenCount || currentGroup != tokenInfo (i).group;
        if (flush && currentGroup.isNotEmpty())
            lines.add ("  \"" + currentGroup + "\": { " + line + " }" + (i == tokenCount ? "" : ","));
        if (i == tokenCount)
            break;
        const auto& info = tokenInfo (i);
        if (flush)
        {
            currentGroup = info.group;
            line.clear();
        }
        else
        {
            line << ", ";
        }
        line << "\"" << info.key << "\": \"" << hexOf (juce::Colour (0xff000000u | dark.colours[(size_t) i])) << "\"";
    }
    lines.add ("}");
    return lines.joinIntoString ("\n") + "\n";
}

void publishWidgetTheme()
{
    using namespace ostrel::widgets;
    static constexpr Token sources[paletteSize] = {
        Token::bgGround, Token::bgSurface, Token::bgPanel, Token::bgSurface2, Token::borderHair, Token::borderFocus,
        Token::textPrimary, Token::textTertiary, Token::textDisabled, Token::accentPrimary, Token::accentPrimaryText,
        Token::accentModRing, Token::accentSelection, Token::accentModRing, Token::accentEmber, Token::accentLive,
        Token::semanticWarn, Token::semanticError,
    };
    auto theme = WidgetTheme::makeDefault();
    for (int i = 0; i < paletteSize; ++i)
        theme.palette[i] = token (sources[i]);
    // Widgets that pick shadows or washes by the ground's lightness need to know.
    theme.dark = token (Token::bgGround).getPerceivedBrightness() < 0.5f;
    theme.regularFace = embeddedTypeface (0);
    theme.boldFace = embeddedTypeface (2);
    WidgetTheme::setCurrent (std::move (theme));
}

void recolourComponents (juce::Component& component)
{
    const auto& props = component.getProperties();
    if (auto* label = dynamic_cast<juce::Label*> (&component))
    {
        if (props.contains (themeProperty::label))
        {
            const auto current = label->findColour (juce::Label::textColourId);
            label->setColour (juce::Label::textColourId, tokenByName (props[themeProperty::label].toString(), current));
        }
        else
        {
            const auto text = label->getText().trim();
            label->setColour (juce::Label::textColourId,
                              token (text == text.toUpperCase() ? Token::textSecondary : Token::textTertiary));
        }
    }
    else if (auto* editor = dynamic_cast<juce::TextEditor*> (&component))
    {
        auto apply = [&] (const juce::Identifier& property, std::initializer_list<int> ids)
        {
            if (! props.contains (property))
                return;
            for (auto id : ids)
                editor->setColour (id, tokenByName (props[property].toString(), editor->findColour (id)));
        };
        apply (themeProperty::editorBg, { juce::TextEditor::backgroundColourId });
        apply (themeProperty::editorOutline, { juce::TextEditor::outlineColourId });
        apply (themeProperty::editorFocus, { juce::TextEditor::focusedOutlineColourId });
        apply (themeProperty::editorText, { juce::TextEditor::textColourId, juce::TextEditor::highlightedTextColourId });
        apply (themeProperty::editorFocus, { juce::CaretComponent::caretColourId });
    }

    else if (auto* frame = dynamic_cast<ostrel::widgets::SectionFrame*> (&component))
    {
        frame->setFillIndex (ostrel::widgets::surfaceRaised);
        frame->setOutlineIndex (ostrel::widgets::borderSubtle);
    }

    for (auto* child : component.getChildren())
        recolourComponents (*child);
}
}
