// The editor's own load on the message thread: the real editor in a window, a note held, an
// audio thread running the processor in real time, for a number of seconds. Prints the CPU time
// the message thread spent, as a share of one core. Run it on a display (xvfb-run will do).
#include "audio/PluginProcessor.h"
#include "ui/Editor.h"

#include <sys/resource.h>

#include <atomic>
#include <iostream>
#include <thread>

namespace
{
double threadCpuSeconds()
{
    rusage usage {};
    getrusage (RUSAGE_THREAD, &usage);
    return (double) usage.ru_utime.tv_sec + (double) usage.ru_stime.tv_sec
           + ((double) usage.ru_utime.tv_usec + (double) usage.ru_stime.tv_usec) * 1.0e-6;
}

constexpr double rate = 48000.0;
constexpr int block = 512;

class EditorIdle : public juce::JUCEApplication, private juce::Timer
{
public:
    const juce::String getApplicationName() override { return "Morvane editor idle"; }
    const juce::String getApplicationVersion() override { return "1"; }

    void initialise (const juce::String& commandLine) override
    {
        seconds = juce::jlimit (1.0, 600.0, commandLine.trim().isEmpty() ? 10.0 : commandLine.trim().getDoubleValue());
        processor.setRateAndBufferSizeDetails (rate, block);
        processor.prepareToPlay (rate, block);
        processor.pushNoteOn (36, 0.9f);
        audio = std::thread ([this] { runAudio(); });

        window = std::make_unique<juce::DocumentWindow> ("Morvane", juce::Colours::black, juce::DocumentWindow::allButtons);
        window->setUsingNativeTitleBar (true);
        window->setContentOwned (new morvane::ui::Editor (processor, settings), true);
        window->setVisible (true);
        startTimer (1500); // the first paint and the settling of the window come first
    }

    void shutdown() override
    {
        window.reset();
        running = false;
        if (audio.joinable())
            audio.join();
        settings.deleteFile();
    }

    void systemRequestedQuit() override { quit(); }

private:
    void timerCallback() override
    {
        if (start < 0.0)
        {
            start = threadCpuSeconds();
            startTimer ((int) (seconds * 1000.0));
            return;
        }
        stopTimer();
        const double used = threadCpuSeconds() - start;
        std::cout << "editor open, idle, note held, " << seconds << " s: message thread "
                  << juce::String (100.0 * used / seconds, 2) << "% of a core" << std::endl;
        quit();
    }

    void runAudio()
    {
        juce::AudioBuffer<float> buffer (2, block);
        juce::MidiBuffer midi;
        auto next = std::chrono::steady_clock::now();
        while (running)
        {
            processor.processBlock (buffer, midi);
            next += std::chrono::microseconds ((long) (1.0e6 * block / rate));
            std::this_thread::sleep_until (next);
        }
    }

    const juce::File settings = juce::File::getSpecialLocation (juce::File::tempDirectory).getNonexistentChildFile ("morvane-idle", ".settings");
    morvane::MorvaneAudioProcessor processor;
    std::unique_ptr<juce::DocumentWindow> window;
    std::atomic<bool> running { true };
    std::thread audio;
    double seconds = 10.0, start = -1.0;
};
}

START_JUCE_APPLICATION (EditorIdle)
