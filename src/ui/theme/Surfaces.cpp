#include "ui/theme/Surfaces.h"

#include "ui/theme/Tokens.h"

#include <array>

namespace morvane::ui
{
namespace
{
constexpr std::array<SurfaceVariant, 9> variants { {
    { "", (int) Token::borderHair, (int) Token::accentPrimary, 4.0f, false },
    { "choiceField", (int) Token::borderHair, (int) Token::textPrimary, 2.0f, true },
    { "stepper", (int) Token::borderHair, (int) Token::accentPrimary, 2.0f, false },
    { "toggle", (int) Token::borderHair, (int) Token::textPrimary, 4.0f, true },
    { "valueField", (int) Token::controlBorder, (int) Token::controlValue, 2.0f, false },
    { "iconButton", (int) Token::borderHair, (int) Token::accentPrimary, 2.0f, false },
    { "waveCell", (int) Token::borderHair, (int) Token::textPrimary, 2.0f, true },
    { "plotPanel", (int) Token::borderHair, (int) Token::accentPrimary, 4.0f, false },
    { "statusChip", (int) Token::borderHair, (int) Token::accentPrimary, 2.0f, true },
} };

void fillRounded (juce::Graphics& g, juce::Rectangle<float> r, float radius, juce::Colour c)
{
    g.setColour (c);
    g.fillRoundedRectangle (r, radius);
}

juce::Rectangle<float> outlineRect (juce::Rectangle<float> b)
{
    return { b.getX() + 0.5f, b.getY() + 0.5f, juce::jmax (0.0f, b.getWidth() - 1.0f), juce::jmax (0.0f, b.getHeight() - 1.0f) };
}
}

PlateRecord plateRecord (int level, int state)
{
    PlateRecord p;
    const auto black = juce::Colours::black;
    switch (level)
    {
        case 0:
            p = { token (Token::bgSurface), token (Token::bgSurface).brighter (0.08f), token (Token::bgSurface).darker (0.46f),
                  token (Token::borderHair).withAlpha (0.42f), black.withAlpha (0.16f), 8, 2, 2, false };
            break;
        case 1:
            p = { token (Token::bgSurface2), token (Token::bgSurface2).brighter (0.12f), token (Token::bgSurface2).darker (0.5f),
                  token (Token::borderHair), black.withAlpha (0.24f), 4, 1, 1, false };
            break;
        case 2:
            p = { token (Token::bgPanel), token (Token::bgPanel).darker (0.4f), token (Token::bgSurface).brighter (0.1f),
                  token (Token::borderHair).withAlpha (0.7f), black.withAlpha (0.34f), 4, 0, 0, true };
            break;
        case 3:
            p = { token (Token::bgSurface), token (Token::bgSurface2).brighter (0.06f), token (Token::bgPanel),
                  token (Token::borderHair), black.withAlpha (0.3f), 8, 6, 4, false };
            break;
        case 4:
            p = { token (Token::bgSurface2), token (Token::accentModRing).withAlpha (0.72f), token (Token::bgPanel),
                  token (Token::accentModRing), token (Token::accentModRing).withAlpha (0.32f), 4, 4, 3, false };
            break;
        default:
            return p;
    }

    switch (state)
    {
        case hover: p.fill = p.fill.brighter (0.07f); break;
        case pressed:
            p.fill = p.fill.darker (0.28f);
            p.topEdge = p.bottomEdge.withAlpha (0.78f);
            p.shadowOffset = 0;
            p.inset = true;
            break;
        case selected:
            p.fill = token (Token::accentSelection);
            p.topEdge = token (Token::accentPrimary).withAlpha (0.54f);
            break;
        case focused: p.outline = token (Token::borderFocus); break;
        case disabled:
            p.fill = p.fill.darker (0.32f);
            p.topEdge = p.topEdge.withAlpha (0.22f);
            p.bottomEdge = p.bottomEdge.withAlpha (0.22f);
            p.outline = p.outline.withAlpha (0.28f);
            p.shadow = juce::Colours::transparentBlack;
            break;
        case modulated:
            p.outline = token (Token::accentModRing);
            p.shadow = token (Token::accentModRing).withAlpha (0.28f);
            break;
        case live:
            p.outline = token (Token::accentLive);
            p.shadow = token (Token::accentLive).withAlpha (0.24f);
            break;
        default: break;
    }
    return p;
}

void drawSurface (juce::Graphics& g, juce::Rectangle<float> b, int level, int state)
{
    const auto p = plateRecord (level, state);
    const auto radius = (float) p.radius;
    if (! p.inset && ! p.shadow.isTransparent() && p.shadowSpread > 0)
    {
        const auto s = (float) p.shadowSpread;
        fillRounded (g, { b.getX() - s, b.getY() + (float) p.shadowOffset - s, juce::jmax (0.0f, b.getWidth() + 2 * s),
                          juce::jmax (0.0f, b.getHeight() + 2 * s) }, radius, p.shadow);
    }
    fillRounded (g, b, radius, p.fill);
    {
        // The edge lines follow the plate's corners instead of running square past them.
        juce::Graphics::ScopedSaveState saved (g);
        juce::Path shape;
        shape.addRoundedRectangle (b, radius);
        g.reduceClipRegion (shape);
        if (p.inset)
            fillRounded (g, b.withHeight (2.0f), radius, juce::Colours::black.withAlpha (0.3f));
        fillRounded (g, b.withHeight (1.0f), radius, p.topEdge);
        fillRounded (g, b.withY (b.getBottom() - 1.0f).withHeight (1.0f), radius, p.bottomEdge);
    }
    g.setColour (p.outline);
    g.drawRoundedRectangle (outlineRect (b), radius, 1.0f);
    if (state == focused)
    {
        g.setColour (token (Token::borderFocus));
        g.drawRoundedRectangle (outlineRect (b), radius, 2.0f);
    }
}

void drawControlSurface (juce::Graphics& g, juce::Rectangle<float> b, bool over, bool down, bool toggled,
                         bool focused, bool enabled, int variant)
{
    const auto& v = surfaceVariant (variant);
    const int state = ! enabled ? disabled : focused ? SurfaceState::focused : down ? pressed
                    : toggled ? selected : over ? hover : rest;
    drawSurface (g, b, 1, state);

    if (toggled)
    {
        fillRounded (g, b, v.radius, overlay::selected);
        auto bar = v.barInset ? juce::Rectangle<float> (b.getX() + 1.0f, b.getY() + 1.0f, juce::jmax (0.0f, b.getWidth() - 2.0f), 2.0f)
                              : b.withHeight (2.0f);
        g.setColour (token (v.barToken));
        g.fillRect (bar);
    }
    if (over)
        fillRounded (g, b, v.radius, overlay::hover);
    if (down)
        fillRounded (g, b, v.radius, overlay::shadeLight);
    if (! enabled)
        fillRounded (g, b, v.radius, overlay::shadeHeavy);
    if (! focused)
    {
        const auto colour = token (v.outlineToken);
        g.setColour (enabled ? colour : colour.withAlpha (0.28f));
        g.drawRoundedRectangle (outlineRect (b), v.radius, 1.0f);
    }
}

const SurfaceVariant& surfaceVariant (int variant) noexcept
{
    return variants[(size_t) (variant >= 0 && variant < (int) variants.size() ? variant : 4)];
}

int surfaceVariantOf (const juce::Component& component, int fallback)
{
    const auto* value = component.getProperties().getVarPointer (surfaceVariantProperty);
    if (value == nullptr)
        return fallback;
    const auto word = value->toString();
    for (int i = 1; i < (int) variants.size(); ++i)
        if (word == variants[(size_t) i].word)
            return i;
    return fallback;
}
}
