#pragma once

#include <atomic>

namespace morvane::test
{
// Counts operator new calls made while counting is on (replacement operators in AllocationCounter.cpp).
struct AllocationCounter
{
    static std::atomic<long>& count();
    static std::atomic<bool>& counting();

    AllocationCounter() { count() = 0; counting() = true; }
    ~AllocationCounter() { counting() = false; }
    long allocations() const { return count().load(); }
};
}
