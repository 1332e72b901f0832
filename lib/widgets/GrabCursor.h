#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace ostrel::widgets
{

// An open hand over things that are dragged. The framework's own dragging hand is decoded from a
// GIF whose decoder reads outside its table on Linux, so the hand is drawn here instead.
juce::MouseCursor grabCursor();

} // namespace ostrel::widgets
