#include "FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

// Counts down to the allocation that fails; none fails below zero.
thread_local int g_nBefore = -1;

void* Allocate(std::size_t cb) noexcept
{
    if (g_nBefore >= 0 && g_nBefore-- == 0) {
        return nullptr;
    }
    return std::malloc(cb != 0 ? cb : 1);
}

void* AllocateOrThrow(std::size_t cb)
{
    void* pMemory = Allocate(cb);
    if (pMemory == nullptr) {
        throw std::bad_alloc();
    }
    return pMemory;
}

} // namespace

CFailingAllocation::CFailingAllocation(int nBefore)
{
    g_nBefore = nBefore;
}

CFailingAllocation::~CFailingAllocation()
{
    g_nBefore = -1;
}

void* operator new(std::size_t cb)
{
    return AllocateOrThrow(cb);
}

void* operator new[](std::size_t cb)
{
    return AllocateOrThrow(cb);
}

void* operator new(std::size_t cb, const std::nothrow_t&) noexcept
{
    return Allocate(cb);
}

void* operator new[](std::size_t cb, const std::nothrow_t&) noexcept
{
    return Allocate(cb);
}

void operator delete(void* pMemory) noexcept
{
    std::free(pMemory);
}

void operator delete[](void* pMemory) noexcept
{
    std::free(pMemory);
}

void operator delete(void* pMemory, std::size_t) noexcept
{
    std::free(pMemory);
}

void operator delete[](void* pMemory, std::size_t) noexcept
{
    std::free(pMemory);
}
