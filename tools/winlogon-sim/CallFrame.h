#pragma once

#include <memory>

#include "DayFile.h"

/// The arguments of one call as Winlogon pushes them, with the storage behind its out-pointers.
class CCallFrame
{
public:
    /// The step is not copied. dwVersion is the interface version that Winlogon offers where the step does
    /// not say.
    CCallFrame(const CStep& step, DWORD dwVersion);

    const CStep& GetStep() const { return m_step; }
    const CWlxCall& GetCall() const { return m_call; }
    const ULONG_PTR* GetValues() const { return m_values; }

    /// The text that Winlogon passes; empty for a null pointer and for arguments that are no texts.
    const WideText& GetText(DWORD dwIndex) const { return m_texts[dwIndex]; }
    /// What is now behind an out-pointer.
    COutValue GetOut(DWORD dwIndex) const;

    /// Releases what a GINA allocated for its caller behind an out-pointer. Only for a value that is known
    /// to be the GINA's own.
    void ReleaseOut(DWORD dwIndex);

private:
    ULONG_PTR Prepare(DWORD dwIndex, const CStep& step, DWORD dwVersion);
    ULONG_PTR PrepareText(DWORD dwIndex, const CStep& step);
    ULONG_PTR PrepareOut(DWORD dwIndex, DWORD dwInitial);

    const CStep& m_step;
    const CWlxCall& m_call;
    ULONG_PTR m_values[STANDIN_MAX_ARGUMENTS] = {};
    WideText m_texts[STANDIN_MAX_ARGUMENTS];
    std::unique_ptr<std::uint64_t[]> m_out[STANDIN_MAX_ARGUMENTS];
};
