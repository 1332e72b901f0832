#pragma once

#include <cstdint>

namespace morvane
{
// One slot of the lock-free ring from the editor to the audio thread.
struct UiCommand
{
    enum Type : std::uint8_t { noteOn = 0, noteOff = 1, pitchBend = 2, modWheel = 3, aftertouch = 4, panic = 5 };

    std::uint8_t type = panic;
    std::int32_t note = 0;
    float value = 0.0f;
};

static_assert (sizeof (UiCommand) == 12);

// One key of the last-note stack.
struct HeldNote
{
    std::int32_t note = 0;
    float velocity = 0.0f;
};
}
