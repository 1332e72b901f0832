#pragma once

#include "widgets/Widgets.h"

#include "snapshot/ParameterOnlyProcessor.h"
#include <juce_audio_processors/juce_audio_processors.h>

#include <gtest/gtest.h>

namespace ostrel::widgets::test
{

// Mouse events built by hand, so that the controls can be driven without a display.
struct Mouse
{
    explicit Mouse(juce::Component& t) : target(t) {}

    juce::Component& target;
    juce::Point<float> downPosition;
    juce::Time downTime { juce::Time::getCurrentTime() };
    juce::ModifierKeys held;

    juce::MouseEvent event(juce::Point<float> at, juce::ModifierKeys mods, int clicks = 1, bool dragged = false) const
    {
        static juce::int64 tick = 0; // wheel events must differ in time to count
        return juce::MouseEvent(juce::Desktop::getInstance().getMainMouseSource(), at, mods, 1.0f, 0.0f, 0.0f,
                                0.0f, 0.0f, &target, &target, juce::Time(downTime.toMilliseconds() + (++tick)),
                                downPosition, downTime, clicks, dragged);
    }

    void down(juce::Point<float> at, juce::ModifierKeys mods = juce::ModifierKeys::leftButtonModifier)
    {
        downPosition = at;
        held = mods;
        target.mouseDown(event(at, mods));
    }
    void drag(juce::Point<float> to, juce::ModifierKeys extra = {})
    {
        target.mouseDrag(event(to, held.withFlags(extra.getRawFlags()), 1, true));
    }
    void up(juce::Point<float> at)
    {
        target.mouseUp(event(at, held.withoutMouseButtons(), 1, at != downPosition));
    }
    void click(juce::Point<float> at, juce::ModifierKeys mods = juce::ModifierKeys::leftButtonModifier)
    {
        down(at, mods);
        up(at);
    }
    void doubleClick(juce::Point<float> at)
    {
        click(at);
        down(at);
        target.mouseDoubleClick(event(at, juce::ModifierKeys::leftButtonModifier, 2));
        up(at);
    }
    void wheel(juce::Point<float> at, float deltaY, juce::ModifierKeys mods = {})
    {
        juce::MouseWheelDetails details { 0.0f, deltaY, false, false, false };
        target.mouseWheelMove(event(at, mods), details);
    }
    void move(juce::Point<float> at) { target.mouseMove(event(at, {})); }
    void exit(juce::Point<float> at, juce::ModifierKeys mods = {}) { target.mouseExit(event(at, mods)); }
};

inline const juce::ModifierKeys shift { juce::ModifierKeys::shiftModifier };
inline const juce::ModifierKeys left { juce::ModifierKeys::leftButtonModifier };
inline const juce::ModifierKeys right { juce::ModifierKeys::rightButtonModifier };
inline const juce::ModifierKeys alt { juce::ModifierKeys::altModifier };

// A processor that only holds a few parameters for the controls to bind to.
class ParameterHost : public ParameterOnlyProcessor
{
public:
    ParameterHost() : ParameterOnlyProcessor("HOST", layout()) {}

    static juce::AudioProcessorValueTreeState::ParameterLayout layout()
    {
        juce::AudioProcessorValueTreeState::ParameterLayout l;
        l.add(std::make_unique<juce::AudioParameterFloat>(juce::ParameterID { "amount", 1 }, "Amount",
                                                          juce::NormalisableRange<float>(-1.0f, 1.0f), 0.25f));
        l.add(std::make_unique<juce::AudioParameterFloat>(juce::ParameterID { "cutoff", 1 }, "Cutoff",
                                                          juce::NormalisableRange<float>(20.0f, 20000.0f), 1000.0f));
        l.add(std::make_unique<juce::AudioParameterChoice>(juce::ParameterID { "mode", 1 }, "Mode",
                                                           juce::StringArray { "Saw", "Square", "Pulse" }, 0));
        return l;
    }

    juce::AudioParameterChoice& mode() { return *dynamic_cast<juce::AudioParameterChoice*>(state.getParameter("mode")); }
    float raw(const char* id) { return state.getRawParameterValue(id)->load(); }
};

// The texts of a menu, submenus included; a separator reads "--".
inline juce::StringArray menuTexts(const juce::PopupMenu& menu)
{
    juce::StringArray texts;
    for (juce::PopupMenu::MenuItemIterator it(menu, true); it.next();)
        texts.add(it.getItem().isSeparator ? juce::String("--") : it.getItem().text);
    return texts;
}

// Lets queued messages (async clicks, parameter listeners) arrive.
inline void pump(int milliseconds) { juce::MessageManager::getInstance()->runDispatchLoopUntil(milliseconds); }

// Paints a component alone into an image of its own size.
inline juce::Image render(juce::Component& c, float scale = 1.0f)
{
    juce::Image image(juce::Image::ARGB, std::max(1, juce::roundToInt(c.getWidth() * scale)),
                      std::max(1, juce::roundToInt(c.getHeight() * scale)), true);
    juce::Graphics g(image);
    g.addTransform(juce::AffineTransform::scale(scale));
    c.paintEntireComponent(g, true);
    return image;
}

inline bool near(juce::Colour a, juce::Colour b, int tolerance = 3)
{
    return std::abs(a.getRed() - b.getRed()) <= tolerance && std::abs(a.getGreen() - b.getGreen()) <= tolerance
           && std::abs(a.getBlue() - b.getBlue()) <= tolerance;
}

// Restores the palette that a test changes.
struct ScopedTheme
{
    explicit ScopedTheme(WidgetTheme theme) : saved(WidgetTheme::current()) { WidgetTheme::setCurrent(std::move(theme)); }
    ~ScopedTheme() { WidgetTheme::setCurrent(saved); }
    WidgetTheme saved;
};

inline WidgetTheme lightTheme()
{
    WidgetTheme theme;
    theme.id = "test.light";
    theme.displayName = "Test Light";
    theme.dark = false;
    const std::pair<int, juce::uint32> colours[] = {
        { surfaceBase, 0xffe5dac0 },   { surfaceRaised, 0xffefe5c9 }, { surfacePanel, 0xfffaf6ea },
        { surfaceOverlay, 0xffddd2b5 }, { borderSubtle, 0xff8a7a55 },  { textPrimary, 0xff1f1b14 },
        { textMuted, 0xff7d6f4f },      { accentPrimary, 0xffa65a00 },
        // The rest of a light palette, so that no dark default shows through.
        { borderFocus, 0xffa65a00 },    { textDisabled, 0xffb3a784 },  { accentPrimaryText, 0xfffaf6ea },
        { accentSelection, 0xffd6c9a4 },
    };
    for (const auto& [index, argb] : colours)
        theme.palette[index] = juce::Colour(argb);
    return theme;
}

} // namespace ostrel::widgets::test
