#include "AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace morvane::test
{
std::atomic<long>& AllocationCounter::count()
{
    static std::atomic<long> c { 0 };
    return c;
}

bool& AllocationCounter::counting()
{
    static thread_local bool on = false;
    return on;
}
}

namespace
{
void* allocate (std::size_t size)
{
    if (morvane::test::AllocationCounter::counting())
        morvane::test::AllocationCounter::count().fetch_add (1, std::memory_order_relaxed);
    if (void* p = std::malloc (size == 0 ? 1 : size))
        return p;
    throw std::bad_alloc();
}

void* allocateAligned (std::size_t size, std::align_val_t align)
{
    if (morvane::test::AllocationCounter::counting())
        morvane::test::AllocationCounter::count().fetch_add (1, std::memory_order_relaxed);
    const auto a = (std::size_t) align;
    if (void* p = std::aligned_alloc (a, (size + a - 1) / a * a))
        return p;
    throw std::bad_alloc();
}
}

void* operator new (std::size_t size) { return allocate (size); }
void* operator new[] (std::size_t size) { return allocate (size); }
void* operator new (std::size_t size, const std::nothrow_t&) noexcept
{
    try { return allocate (size); } catch (...) { return nullptr; }
}
void* operator new[] (std::size_t size, const std::nothrow_t&) noexcept
{
    try { return allocate (size); } catch (...) { return nullptr; }
}
void* operator new (std::size_t size, std::align_val_t a) { return allocateAligned (size, a); }
void* operator new[] (std::size_t size, std::align_val_t a) { return allocateAligned (size, a); }
void operator delete (void* p) noexcept { std::free (p); }
void operator delete[] (void* p) noexcept { std::free (p); }
void operator delete (void* p, std::size_t) noexcept { std::free (p); }
void operator delete[] (void* p, std::size_t) noexcept { std::free (p); }
void operator delete (void* p, std::align_val_t) noexcept { std::free (p); }
void operator delete[] (void* p, std::align_val_t) noexcept { std::free (p); }
void operator delete (void* p, std::size_t, std::align_val_t) noexcept { std::free (p); }
void operator delete[] (void* p, std::size_t, std::align_val_t) noexcept { std::free (p); }
