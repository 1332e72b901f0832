#include "TestHelpers.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <pty.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <regex>
#include <vector>

// How the renderer behaves on long renders: flat memory, and progress only on a terminal.
namespace
{
struct Finished
{
    int exitCode = -1;
    long maxResidentKb = 0;
    juce::String err;
};

// Runs the renderer with stderr caught in a file, and its own peak memory from wait4.
Finished runMeasured (const juce::StringArray& args)
{
    const auto errFile = juce::File::createTempFile (".err");
    std::vector<std::string> strings { MORVANE_RENDER_PATH };
    for (const auto& a : args)
        strings.push_back (a.toStdString());
    std::vector<char*> argv;
    for (auto& s : strings)
        argv.push_back (s.data());
    argv.push_back (nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init (&actions);
    posix_spawn_file_actions_addopen (&actions, 2, errFile.getFullPathName().toRawUTF8(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    Finished f;
    pid_t pid = 0;
    if (posix_spawn (&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0)
    {
        int status = 0;
        rusage usage {};
        if (wait4 (pid, &status, 0, &usage) == pid && WIFEXITED (status))
            f.exitCode = WEXITSTATUS (status);
        f.maxResidentKb = usage.ru_maxrss;
    }
    posix_spawn_file_actions_destroy (&actions);
    f.err = errFile.loadFileAsString();
    errFile.deleteFile();
    return f;
}

// Runs the renderer with a pseudo-terminal as its stderr and returns what it drew there.
juce::String runOnTerminal (const juce::StringArray& args, int& exitCode)
{
    std::vector<std::string> strings { MORVANE_RENDER_PATH };
    for (const auto& a : args)
        strings.push_back (a.toStdString());
    std::vector<char*> argv;
    for (auto& s : strings)
        argv.push_back (s.data());
    argv.push_back (nullptr);

    int master = -1;
    const pid_t pid = forkpty (&master, nullptr, nullptr, nullptr);
    if (pid == 0)
    {
        execv (argv[0], argv.data());
        _exit (127);
    }
    juce::MemoryOutputStream seen;
    if (pid > 0)
    {
        char chunk[4096];
        for (ssize_t n; (n = read (master, chunk, sizeof (chunk))) > 0;)
            seen.write (chunk, (size_t) n);
        int status = 0;
        waitpid (pid, &status, 0);
        exitCode = WIFEXITED (status) ? WEXITSTATUS (status) : -1;
        close (master);
    }
    return seen.toString();
}

juce::File tempWav (const char* name)
{
    return morvane::test::uniqueTempFile (name, ".wav");
}
}

TEST (RenderStreaming, MemoryStaysFlatWhateverTheLength)
{
    const auto out = tempWav ("morvane-flat");
    const auto shortRun = runMeasured ({ "--note", "40:1:0:1", "--seconds", "2", "--out", out.getFullPathName() });
    ASSERT_EQ (shortRun.exitCode, 0) << shortRun.err;
    // Two minutes of stereo float audio is 46 MB: held in memory, it would show.
    const auto longRun = runMeasured ({ "--note", "40:1:0:100", "--seconds", "120", "--out", out.getFullPathName() });
    ASSERT_EQ (longRun.exitCode, 0) << longRun.err;
    juce::WavAudioFormat wav;
    std::unique_ptr<juce::AudioFormatReader> reader (wav.createReaderFor (out.createInputStream().release(), true));
    ASSERT_NE (reader, nullptr);
    EXPECT_EQ (reader->lengthInSamples, 120 * 48000);
    reader.reset();
    EXPECT_LT (longRun.maxResidentKb - shortRun.maxResidentKb, 16 * 1024)
        << shortRun.maxResidentKb << " kB for 2 s, " << longRun.maxResidentKb << " kB for 120 s";
    std::printf ("peak memory: %ld kB for 2 s, %ld kB for 120 s\n", shortRun.maxResidentKb, longRun.maxResidentKb);
    EXPECT_TRUE (longRun.err.isEmpty()) << "nothing on stderr when it is not a terminal: " << longRun.err;
    out.deleteFile();
}

TEST (RenderStreaming, ALongRenderShowsProgressOnATerminal)
{
    const auto out = tempWav ("morvane-progress");
    int exitCode = -1;
    // A high rate and every heavy stage make the render slow enough to pass the half second of
    // quiet on a fast machine (the default patch alone renders a minute at 96 kHz in about that).
    const auto drawn = runOnTerminal ({ "--note", "40:1:0:60", "--seconds", "60", "--rate", "96000", "--set", "drive=12",
                                        "--set", "mbdEnable=1", "--set", "modFxEnable=1", "--set", "delayEnable=1",
                                        "--set", "reverbEnable=1", "--out", out.getFullPathName() },
                                      exitCode);
    EXPECT_EQ (exitCode, 0) << drawn;
    // Redrawn in place, then ended once at 100 %.
    auto drawnLines = juce::StringArray::fromTokens (drawn, "\r\n", "");
    drawnLines.trim();
    drawnLines.removeEmptyStrings();
    ASSERT_FALSE (drawnLines.isEmpty()) << drawn;
    for (const auto& l : drawnLines)
        EXPECT_TRUE (std::regex_match (l.toStdString(), std::regex (R"(morvane-render: +\d+% \([0-9.]+ of 60\.0 s\), [0-9.]+x real time)")))
            << l;
    EXPECT_TRUE (drawnLines.strings.getLast().contains ("100% (60.0 of 60.0 s)")) << drawn;
    EXPECT_EQ (drawn.trimEnd().indexOfChar ('\n'), -1) << "one updating line: " << drawn.quoted();
    out.deleteFile();
}
