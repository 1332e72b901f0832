#pragma once

#include <juce_audio_processors/juce_audio_processors.h>
#include <juce_gui_basics/juce_gui_basics.h>

#include "TestHelpers.h"
#include "ui/theme/Themes.h"

#include <initializer_list>
#include <type_traits>
#include <utility>
#include <vector>

namespace morvane::test
{
// A settings file of its own for an editor under test; the dark theme is put back afterwards.
struct TempSettings
{
    juce::File dir = morvane::test::uniqueTempFile ("morvane-editor");
    juce::File file = dir.getChildFile ("Morvane.settings");
    TempSettings() { dir.createDirectory(); }
    ~TempSettings()
    {
        dir.deleteRecursively();
        ui::applyThemeEntry (ui::darkTheme());
        ui::publishWidgetTheme();
    }
    std::unique_ptr<juce::PropertiesFile> read() const
    {
        juce::PropertiesFile::Options o;
        o.storageFormat = juce::PropertiesFile::storeAsXML;
        return std::make_unique<juce::PropertiesFile> (file, o);
    }
    void write (const juce::StringPairArray& values) const
    {
        auto props = read();
        for (const auto& key : values.getAllKeys())
            props->setValue (key, values[key]);
        props->saveIfNeeded();
    }
};

// A mouse event on c at p, built by hand so that the editor's components can be driven without
// a display.
template <typename T, typename = std::enable_if_t<std::is_floating_point_v<T>>>
juce::MouseEvent mouseAt (juce::Component& c, juce::Point<T> p, juce::ModifierKeys mods = {}, int clicks = 1)
{
    const auto now = juce::Time::getCurrentTime();
    return { juce::Desktop::getInstance().getMainMouseSource(), p, mods, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, &c, &c, now, p, now,
             clicks, false };
}

// Whole pixels, and braced lists of them.
inline juce::MouseEvent mouseAt (juce::Component& c, juce::Point<int> p, juce::ModifierKeys mods = {}, int clicks = 1)
{
    return mouseAt (c, p.toFloat(), mods, clicks);
}

// Down at the first point, dragged through the path, up at its end.
inline void drag (juce::Component& c, juce::Point<int> from, std::initializer_list<juce::Point<int>> path)
{
    c.mouseDown (mouseAt (c, from));
    juce::Point<int> last = from;
    for (auto p : path)
        c.mouseDrag (mouseAt (c, last = p));
    c.mouseUp (mouseAt (c, last));
}

// Lets timers and posted updates run, as the message loop would between two events.
inline void settle (int milliseconds = 20) { juce::MessageManager::getInstance()->runDispatchLoopUntil (milliseconds); }

// The typographic minus the value texts use, and the level text at the floor.
inline const juce::String minus { juce::CharPointer_UTF8 ("\xe2\x88\x92") };
inline const juce::String minusInfinityDb = minus + juce::String (juce::CharPointer_UTF8 ("\xe2\x88\x9e dB"));

// A parameter in its own units: what the audio thread reads, and a write through the host path.
inline float real (juce::AudioProcessorValueTreeState& s, const char* id) { return s.getRawParameterValue (id)->load(); }
inline void setReal (juce::AudioProcessorValueTreeState& s, const char* id, float v)
{
    auto* p = s.getParameter (id);
    p->setValueNotifyingHost (p->convertTo0to1 (v));
}

// A preset document as applyPresetXml takes it.
inline juce::XmlElement presetXml (std::initializer_list<std::pair<const char*, juce::var>> values)
{
    juce::XmlElement xml ("PARAMS");
    for (const auto& [id, value] : values)
    {
        auto* e = xml.createNewChildElement ("PARAM");
        e->setAttribute ("id", id);
        e->setAttribute ("value", value.toString());
    }
    return xml;
}

// c and its children painted into an image of c's size, as the screen would show them.
inline juce::Image render (juce::Component& c)
{
    juce::Image image (juce::Image::ARGB, c.getWidth(), c.getHeight(), true);
    juce::Graphics g (image);
    c.paintEntireComponent (g, false);
    return image;
}

// What a host sees of some parameters while this lives: gestures begun and ended, and changes.
struct HostView : juce::AudioProcessorParameter::Listener
{
    explicit HostView (juce::AudioProcessorParameter* p) : HostView (std::vector<juce::AudioProcessorParameter*> { p }) {}
    HostView (juce::AudioProcessorValueTreeState& state, const juce::StringArray& ids)
    {
        for (auto& id : ids)
            parameters.push_back (state.getParameter (id));
        listen();
    }
    explicit HostView (std::vector<juce::AudioProcessorParameter*> ps) : parameters (std::move (ps)) { listen(); }
    ~HostView() override
    {
        for (auto* p : parameters)
            p->removeListener (this);
    }

    void parameterValueChanged (int, float) override { ++changes; }
    void parameterGestureChanged (int, bool starting) override { ++(starting ? begins : ends); }

    // "begins/ends", so that a failure shows both counts.
    juce::String gestures() const { return juce::String (begins) + "/" + juce::String (ends); }

    std::vector<juce::AudioProcessorParameter*> parameters;
    int begins = 0, ends = 0, changes = 0;

private:
    void listen()
    {
        for (auto* p : parameters)
            p->addListener (this);
    }
};
}
