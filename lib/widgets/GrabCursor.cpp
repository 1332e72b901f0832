#include "GrabCursor.h"

namespace ostrel::widgets
{

juce::MouseCursor grabCursor()
{
    // Drawn at twice the 16-pixel size the desktop scales cursors from, outlined so that it reads
    // on light and dark grounds alike.
    constexpr int size = 32;
    juce::Image image(juce::Image::ARGB, size, size, true);
    juce::Graphics g(image);
    juce::Path hand;
    const float fingerW = 4.6f, gap = 0.6f, left = 8.0f;
    const float tops[] = { 7.0f, 4.0f, 5.0f, 8.0f };
    for (int i = 0; i < 4; ++i)
        hand.addRoundedRectangle(left + (float) i * (fingerW + gap), tops[i], fingerW, 16.0f - tops[i], fingerW * 0.5f);
    hand.addRoundedRectangle(left, 12.0f, 4.0f * fingerW + 3.0f * gap, 14.0f, 5.0f);
    juce::Path thumb;
    thumb.addRoundedRectangle(-2.2f, -7.0f, 4.4f, 11.0f, 2.2f);
    hand.addPath(thumb, juce::AffineTransform::rotation(-0.8f).translated(7.0f, 17.5f));
    g.setColour(juce::Colours::black);
    g.strokePath(hand, juce::PathStrokeType(2.4f, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));
    g.setColour(juce::Colours::white);
    g.fillPath(hand);
    return juce::MouseCursor(juce::ScaledImage(image, 2.0), { 8, 7 });
}

} // namespace ostrel::widgets
