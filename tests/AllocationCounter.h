#pragma once

#include <atomic>

namespace morvane::test
{
// Counts operator new calls made on this thread while it lives (replacement operators in
// AllocationCounter.cpp). Only this thread's: the editor's and the framework's own threads may
// allocate meanwhile, and the audio thread is the one under test.
struct AllocationCounter
{
    static std::atomic<long>& count();
    static bool& counting();

    AllocationCounter() { count() = 0; counting() = true; }
    ~AllocationCounter() { counting() = false; }
    long allocations() const { return count().load(); }
};
}
