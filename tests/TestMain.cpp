#include <juce_events/juce_events.h>

#include <gtest/gtest.h>

int main (int argc, char** argv)
{
    // Processors start timers and parameter trees post messages: both want a message manager.
    juce::ScopedJuceInitialiser_GUI juce;
    ::testing::InitGoogleTest (&argc, argv);
    return RUN_ALL_TESTS();
}
