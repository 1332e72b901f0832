#pragma once

namespace morvane
{
// One waveshaper of the drive stages: "soft", "diode" or "fold", with antiderivative memory
// and an equal-power crossfade when the mode changes.
struct DriveShaper
{
    enum Mode { soft, diode, fold, numModes };

    int mode = soft;
    int previousMode = soft;
    float gain = 1.0f;
    float lastInput = 0.0f;
    int fadeLength = 1;
    int fadeCounter = 0;

    void prepare (double oversampledRate) noexcept;
    void setModeNow (int newMode) noexcept;
    void changeMode (int newMode) noexcept;
    void clearState() noexcept;

    float process (float x) noexcept;

    // The curve alone: p is the previous input, g the linear drive gain.
    static float shape (int mode, float x, float p, float g) noexcept;

    // The auto makeup of a mode for d dB of drive, as a linear gain.
    static float autoMakeup (int mode, float driveDb) noexcept;
};
}
