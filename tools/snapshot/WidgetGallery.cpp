#include "snapshot/WidgetGallery.h"

std::unique_ptr<juce::Component> createWidgetGallery()
{
    auto sheet = std::make_unique<juce::Component>();
    sheet->setSize (1332, 828);
    return sheet;
}
