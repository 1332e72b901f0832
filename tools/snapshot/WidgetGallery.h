#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

// Every control of the widget library on one sheet: the library's demo page.
std::unique_ptr<juce::Component> createWidgetGallery();
