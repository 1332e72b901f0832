#include "ui/views/SingleCanvasView.h"

#include "audio/PluginProcessor.h"
#include "engine/ModLabels.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"
#include "ui/widgets/ActiveRoutes.h"
#include "ui/widgets/AmpEnvelopePanel.h"
#include "ui/widgets/DetuneBar.h"
#include "ui/widgets/DriveCard.h"
#include "ui/widgets/LfoCard.h"
#include "ui/widgets/OscCard.h"
#include "ui/widgets/SourceUtilityStrip.h"
#include "ui/widgets/VoiceFilterPanel.h"

namespace morvane::ui::views
{
namespace
{
const juce::Rectangle<int> places[SingleCanvasView::panelCount] = {
    { 0, 0, 420, 312 },   { 432, 0, 204, 312 },   { 648, 0, 420, 312 },   { 1080, 0, 204, 312 },
    { 0, 324, 528, 312 }, { 540, 324, 312, 312 }, { 864, 324, 204, 312 }, { 1080, 324, 204, 312 },
};
}

// Each panel of the voice, built for the processor.
std::unique_ptr<juce::Component> SingleCanvasView::makePanel (Panel panel)
{
    switch (panel)
    {
        case osc1: return std::make_unique<widgets::OscCard> (processor, 1);
        case detune: return std::make_unique<widgets::DetuneBar> (processor.getParameterTree(), &processor);
        case osc2: return std::make_unique<widgets::OscCard> (processor, 2);
        case sources: return std::make_unique<widgets::SourceUtilityStrip> (processor);
        case filter: return std::make_unique<widgets::VoiceFilterPanel> (processor.getParameterTree(), processor);
        case amp: return std::make_unique<widgets::AmpEnvelopePanel> (processor.getParameterTree());
        case drive: return std::make_unique<widgets::DriveCard> (processor.getParameterTree(), processor);
        case lfo:
        case panelCount: break;
    }
    return std::make_unique<widgets::LfoCard> (processor.getParameterTree(), processor);
}

SingleCanvasView::SingleCanvasView (MorvaneAudioProcessor& p) : processor (p)
{
    setName ("SingleCanvasView");
    for (int i = 0; i < panelCount; ++i)
    {
        panels[(size_t) i] = makePanel ((Panel) i);
        addAndMakeVisible (*panels[(size_t) i]);
    }
}

SingleCanvasView::~SingleCanvasView() = default;

juce::Rectangle<int> SingleCanvasView::panelBounds (Panel p) { return places[(size_t) p]; }

SingleCanvasView::Panel SingleCanvasView::panelForDestination (int d) noexcept
{
    switch (d)
    {
        case 1: case 14: case 15: case 26: case 27: return filter;
        case 2: case 28: return drive;
        case 3: return amp;
        case 4: case 8: case 21: return osc1;
        case 5: case 9: case 10: case 11: case 12: case 22: return osc2;
        case 6: case 13: case 20: return sources;
        case 7: case 16: case 23: case 24: case 25: return detune;
        case 17: case 18: return lfo;
        default: return panelCount;
    }
}

void SingleCanvasView::setModulationBadges (bool on)
{
    if (on == modulationBadges)
        return;
    modulationBadges = on;
    repaint();
}

std::vector<SingleCanvasView::Badge> SingleCanvasView::badges() const
{
    // The oscillator cards name their own modulation, so they take none from here. The others get
    // a row of their own, badges running leftwards from the right edge: above the pictures, and
    // between the fields and the knobs on the oscillator link. The sources have no free row in the
    // part that the matrix leaves in view, so theirs, one, lies over the noise's first caption. A
    // badge never covers a visualiser, and what no longer fits is counted on the row's last badge.
    std::array<std::vector<widgets::Route>, panelCount> perPanel;
    for (const auto& route : widgets::activeRoutes (processor.getParameterTree()))
    {
        const auto panel = panelForDestination (route.destination);
        if (panel != panelCount && panel != osc1 && panel != osc2)
            perPanel[(size_t) panel].push_back (route);
    }
    std::vector<Badge> result;
    for (int p = 0; p < panelCount; ++p)
    {
        const auto& routes = perPanel[(size_t) p];
        const auto area = panelBounds ((Panel) p);
        const int top = p == detune ? 86 : 34;
        const int room = p == sources ? 1 : std::max ((area.getWidth() - 12) / 84, 1);
        for (int i = 0; i < (int) routes.size() && i < room; ++i)
        {
            const auto& route = routes[(size_t) i];
            const auto percent = juce::roundToInt (route.amount * 100.0f);
            const bool last = i == room - 1 && (int) routes.size() > room;
            const auto text = last ? "+" + juce::String ((int) routes.size() - i) + " MORE"
                                   : (shortSourceName (route.sourceName) + (percent >= 0 ? "+" : "") + juce::String (percent)).toUpperCase();
            result.push_back ({ { area.getRight() - 6 - 78 - 84 * i, area.getY() + top, 78, 18 }, text });
        }
    }
    return result;
}

void SingleCanvasView::paintOverChildren (juce::Graphics& g)
{
    if (! modulationBadges)
        return;
    for (const auto& badge : badges())
    {
        const auto r = badge.bounds.toFloat();
        g.setColour (token (Token::bgPanel).withAlpha (0.92f));
        g.fillRoundedRectangle (r, 2.0f);
        g.setColour (token (Token::accentModRing).withAlpha (0.8f));
        g.drawRoundedRectangle (r.reduced (0.5f), 2.0f, 1.0f);
        drawTypeText (g, 7, badge.text, badge.bounds, token (Token::textPrimary), juce::Justification::centred);
    }
}

void SingleCanvasView::resized()
{
    // The panels keep their design bounds; a view cut below one grid step lays out nothing.
    if (getWidth() / 8 * 8 < 1 || getHeight() / 8 * 8 < 1)
        return;
    for (int i = 0; i < panelCount; ++i)
        panels[(size_t) i]->setBounds (places[i]);
}
}
