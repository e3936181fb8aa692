#pragma once

#include <cpuid.h>

namespace FaultGuard {

/// How the processor computes: rounding, masked exceptions and pending flags, of both its floating-point
/// units.
///
/// Guards save it with each call into a DLL. The C library could do it too, but on Windows its functions ask
/// the processor each time whether it has SSE, and a virtual machine leaves itself to answer that.
class CFloatingPoint
{
public:
    /// Saves the state of this thread.
    CFloatingPoint() noexcept
    {
        // Saving masks the exceptions.
        asm volatile("fnstenv %0\n\tfldcw %0" : "=m"(m_X87));
        if (s_bSSE) {
            asm volatile("stmxcsr %0" : "=m"(m_nSSE));
        }
    }

    /// Makes it the state of this thread again, whatever exception is pending.
    void Restore() const noexcept
    {
        asm volatile("fninit\n\tfldenv %0" : : "m"(m_X87));
        if (s_bSSE) {
            asm volatile("ldmxcsr %0" : : "m"(m_nSSE));
        }
    }

private:
    static bool HasSSE() noexcept
    {
        unsigned int nModel = 0, nBrand = 0, nExtensions = 0, nFeatures = 0;
        return __get_cpuid(1, &nModel, &nBrand, &nExtensions, &nFeatures) != 0 && (nFeatures & bit_SSE) != 0;
    }

    static inline const bool s_bSSE = HasSSE();

    struct
    {
        unsigned int fields[7];
    } m_X87;
    unsigned int m_nSSE = 0x1F80; // as a processor starts
};

} // namespace FaultGuard
