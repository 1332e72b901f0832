#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

// The widget library's demo sheet: every control, in its states, drawn from the current theme.
std::unique_ptr<juce::Component> createWidgetGallery();
