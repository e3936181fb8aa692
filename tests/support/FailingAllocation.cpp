#include "FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

// Counts down to the allocation that fails; none fails below zero.
thread_local int g_nBefore = -1;
thread_local CFailingAllocation::Kind g_kind = CFailingAllocation::Kind::Any;

void* Allocate(std::size_t cb, CFailingAllocation::Kind kind) noexcept
{
    const bool bCounts = g_kind == CFailingAllocation::Kind::Any || g_kind == kind;
    if (bCounts && g_nBefore >= 0 && g_nBefore-- == 0) {
        return nullptr;
    }
    return std::malloc(cb != 0 ? cb : 1);
}

void* AllocateOrThrow(std::size_t cb)
{
    void* pMemory = Allocate(cb, CFailingAllocation::Kind::Any);
    if (pMemory == nullptr) {
        throw std::bad_alloc();
    }
    return pMemory;
}

} // namespace

CFailingAllocation::CFailingAllocation(int nBefore, Kind kind)
{
    g_kind = kind;
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
    return Allocate(cb, CFailingAllocation::Kind::Nothrow);
}

void* operator new[](std::size_t cb, const std::nothrow_t&) noexcept
{
    return Allocate(cb, CFailingAllocation::Kind::Nothrow);
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

void operator delete(void* pMemory, const std::nothrow_t&) noexcept
{
    std::free(pMemory);
}

void operator delete[](void* pMemory, const std::nothrow_t&) noexcept
{
    std::free(pMemory);
}
