#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <memory>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::views
{
// The eight panels of the voice on one grid of 108 with gaps of 12, and the badges that show
// which panels a modulation route reaches while an overlay view is open.
class SingleCanvasView : public juce::Component
{
public:
    enum Panel { osc1, detune, osc2, sources, filter, amp, drive, lfo, panelCount };

    explicit SingleCanvasView (MorvaneAudioProcessor& processor);
    ~SingleCanvasView() override;

    void setModulationBadges (bool on);
    bool getModulationBadges() const noexcept { return modulationBadges; }
    juce::Component* getPanel (Panel p) const { return panels[(size_t) p].get(); }
    static juce::Rectangle<int> panelBounds (Panel p);
    // The panel a modulation destination's badge goes on; panelCount where there is none.
    static Panel panelForDestination (int destination) noexcept;

    struct Badge
    {
        juce::Rectangle<int> bounds;
        juce::String text;
    };
    std::vector<Badge> badges() const;

    void paintOverChildren (juce::Graphics&) override;
    void resized() override;

private:
    std::unique_ptr<juce::Component> makePanel (Panel panel);

    MorvaneAudioProcessor& processor;
    std::array<std::unique_ptr<juce::Component>, panelCount> panels;
    bool modulationBadges = false;
};
}
