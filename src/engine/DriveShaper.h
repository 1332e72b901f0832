#pragma once

#include <limits>

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

    float process (float x) noexcept
    {
        // At 0 dB every mode is a wire; only the memory of the input moves.
        if (gain <= 1.000001f && fadeCounter == 0)
        {
            lastInput = x;
            return x;
        }
        return processDriven (x);
    }

    // The curve alone: p is the previous input, g the linear drive gain.
    static float shape (int mode, float x, float p, float g) noexcept;

    // An antiderivative's value at one point. Each sample's far end is the previous sample's near
    // end, so while the gain holds, half of the transcendental work is a lookup.
    struct Memo
    {
        float at = std::numeric_limits<float>::quiet_NaN();
        float value = 0.0f;
    };

    // The auto makeup of a mode for d dB of drive, as a linear gain.
    static float autoMakeup (int mode, float driveDb) noexcept;

private:
    struct Memos
    {
        Memo soft, fold, diodeScale;
    };
    Memos memos;

    float processDriven (float x) noexcept;

    static float shape (int mode, float x, float p, float g, Memos& memos) noexcept;
};
}
