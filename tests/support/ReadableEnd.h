#pragma once

#include <windows.h>

#ifndef _WIN32
#include <sys/mman.h>
#endif

/// A page of memory with one behind it that cannot be read.
class CReadableEnd
{
public:
#ifdef _WIN32
    CReadableEnd() : m_pPages(static_cast<BYTE*>(VirtualAlloc(nullptr, 2 * PAGE, MEM_RESERVE, PAGE_NOACCESS)))
    {
        VirtualAlloc(m_pPages, PAGE, MEM_COMMIT, PAGE_READWRITE);
    }
    ~CReadableEnd()
    {
        VirtualFree(m_pPages, 0, MEM_RELEASE);
    }
#else
    CReadableEnd()
        : m_pPages(static_cast<BYTE*>(mmap(nullptr, 2 * PAGE, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        mprotect(m_pPages, PAGE, PROT_READ | PROT_WRITE);
    }
    ~CReadableEnd()
    {
        munmap(m_pPages, 2 * PAGE);
    }
#endif
    CReadableEnd(const CReadableEnd&) = delete;
    CReadableEnd& operator=(const CReadableEnd&) = delete;

    void* GetEnd() const
    {
        return m_pPages + PAGE;
    }

private:
    static constexpr SIZE_T PAGE = 4096;

    BYTE* m_pPages;
};
