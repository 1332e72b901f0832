#pragma once

#include "ui/widgets/RoutingRow.h"
#include "widgets/SectionFrame.h"

#include <array>
#include <functional>
#include <memory>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::widgets
{
// The eight modulation slots as routing rows, over the lower part of the canvas.
class MatrixSlideOut : public ostrel::widgets::SectionFrame
{
public:
    explicit MatrixSlideOut (MorvaneAudioProcessor& processor);
    ~MatrixSlideOut() override;

    std::function<void()> onClose;

    void paint (juce::Graphics&) override;
    void resized() override;

    // Marks the rows that route to a destination (none for 0).
    void markDestination (int destination);
    RoutingRow& getRow (int slot) { return *rows[(size_t) juce::jlimit (1, 8, slot) - 1]; }
    juce::TextButton& getCloseButton() noexcept { return closeButton; }

private:
    MorvaneAudioProcessor& processor;
    juce::Label titleLabel;
    juce::TextButton closeButton;
    std::array<std::unique_ptr<RoutingRow>, 8> rows;
};

// The plate both slide-outs stand on, with its accent bar at the top left.
void paintSlideOutPlate (juce::Graphics& g, juce::Rectangle<float> bounds);
}
