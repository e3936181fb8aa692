#include "CallFrame.h"

#include <cstring>

#include "Winlogon.h"

CCallFrame::CCallFrame(const CStep& step, DWORD dwVersion) : m_step(step), m_call(*step.pCall)
{
    for (DWORD dwIndex = 0; dwIndex < STANDIN_MAX_ARGUMENTS; ++dwIndex) {
        if (m_call.arguments[dwIndex].szName != nullptr) {
            m_values[dwIndex] = Prepare(dwIndex, step, dwVersion);
        }
    }
}

ULONG_PTR CCallFrame::Prepare(DWORD dwIndex, const CStep& step, DWORD dwVersion)
{
    const CArgument& argument = m_call.arguments[dwIndex];
    if (argument.bText) {
        return PrepareText(dwIndex, step);
    }
    DWORD dwNumber = 0;
    if (argument.pCodes != nullptr) {
        const std::optional<DWORD> fallback =
            argument.szDefault != nullptr ? argument.pCodes->Parse(argument.szDefault) : dwVersion;
        dwNumber = step.passes.numbers[dwIndex].value_or(fallback.value_or(0));
    }
    if (argument.pOut != nullptr) {
        return PrepareOut(dwIndex, dwNumber);
    }
    return argument.pCodes != nullptr ? dwNumber : Winlogon::GetValue(argument.given);
}

ULONG_PTR CCallFrame::PrepareText(DWORD dwIndex, const CStep& step)
{
    const char* szDefault = m_call.arguments[dwIndex].szDefault;
    std::optional<WideText> text;
    if (step.passes.texts[dwIndex].has_value()) {
        text = *step.passes.texts[dwIndex];
    } else if (szDefault != nullptr) {
        text = ToWide(szDefault);
    }
    if (!text.has_value()) {
        return 0;
    }
    m_texts[dwIndex] = *text;
    return reinterpret_cast<ULONG_PTR>(m_texts[dwIndex].c_str());
}

ULONG_PTR CCallFrame::PrepareOut(DWORD dwIndex, DWORD dwInitial)
{
    const std::size_t nWords = m_call.arguments[dwIndex].pOut->cbStorage / sizeof(std::uint64_t) + 1;
    m_out[dwIndex] = std::make_unique<std::uint64_t[]>(nWords);
    std::memcpy(m_out[dwIndex].get(), &dwInitial, sizeof(dwInitial));
    return reinterpret_cast<ULONG_PTR>(m_out[dwIndex].get());
}

COutValue CCallFrame::GetOut(DWORD dwIndex) const
{
    return m_call.arguments[dwIndex].pOut->pfnRead(m_out[dwIndex].get());
}

void CCallFrame::ReleaseOut(DWORD dwIndex)
{
    const COutForm& form = *m_call.arguments[dwIndex].pOut;
    if (form.pfnRelease != nullptr) {
        form.pfnRelease(m_out[dwIndex].get());
    }
}
