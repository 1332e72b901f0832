#include <juce_gui_basics/juce_gui_basics.h>

#include <gtest/gtest.h>

namespace
{
// The tests run inside a JUCE application, as in any JUCE host: the framework then sets up Xlib for
// threads and its X error handlers, which plug-ins running their own message thread rely on.
class HostTestApplication : public juce::JUCEApplication
{
public:
    const juce::String getApplicationName() override { return "morvane-host-tests"; }
    const juce::String getApplicationVersion() override { return "1"; }
    bool moreThanOneInstanceAllowed() override { return true; }
    void initialise (const juce::String&) override
    {
        setApplicationReturnValue (RUN_ALL_TESTS());
        quit();
    }
    void shutdown() override {}
};

juce::JUCEApplicationBase* createApplication() { return new HostTestApplication(); }
}

int main (int argc, char** argv)
{
    ::testing::InitGoogleTest (&argc, argv);
    juce::JUCEApplicationBase::createInstance = &createApplication;
    return juce::JUCEApplicationBase::main (argc, const_cast<const char**> (argv));
}
