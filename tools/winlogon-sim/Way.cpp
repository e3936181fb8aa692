#include "Way.h"

#include <algorithm>

namespace {

std::string ToLower(std::string text)
{
    for (char& ch : text) {
        ch = static_cast<char>(ch >= 'A' && ch <= 'Z' ? ch | 0x20 : ch);
    }
    return text;
}

} // namespace

std::string CWay::Describe() const
{
    std::string text;
    std::size_t nDeepest = 0;
    for (const CHop& hop : m_hops) {
        text += text.empty() ? "" : hop.nDepth > nDeepest ? " > " : ", ";
        text += GetShortName(hop.dll);
        nDeepest = hop.nDepth;
    }
    return text;
}

const CHop* CWay::GetAnswering() const
{
    if (!IsPassedOn() || !m_hops.front().bReturned) {
        return nullptr;
    }
    return Descend(
        [](const CHop& hop, const CHop& called) { return called.bReturned && called.result == hop.result; });
}

const CHop* CWay::GetFailed() const
{
    // Objects that are called one after the other: the library gives up with the first that fails.
    if (IsKnown() && !IsPassedOn()) {
        return m_hops.back().bReturned ? nullptr : &m_hops.back();
    }
    if (!IsKnown() || m_hops.front().bReturned) {
        return nullptr;
    }
    return Descend([](const CHop&, const CHop& called) { return !called.bReturned; });
}

bool CWay::IsPassedOn() const
{
    return std::count_if(m_hops.begin(), m_hops.end(), [](const CHop& hop) { return hop.nDepth == 0; }) == 1;
}

const CHop* CWay::GetCalled(std::size_t nIndex) const
{
    const CHop* pCalled = nullptr;
    const std::size_t nDepth = m_hops[nIndex].nDepth;
    while (++nIndex < m_hops.size() && m_hops[nIndex].nDepth > nDepth) {
        pCalled = m_hops[nIndex].nDepth == nDepth + 1 ? &m_hops[nIndex] : pCalled;
    }
    return pCalled;
}

template <typename GoOn>
const CHop* CWay::Descend(GoOn goOn) const
{
    const CHop* pHop = &m_hops.front();
    const CHop* pCalled = GetCalled(0);
    while (pCalled != nullptr && goOn(*pHop, *pCalled)) {
        pHop = pCalled;
        pCalled = GetCalled(static_cast<std::size_t>(pHop - m_hops.data()));
    }
    return pHop;
}

std::string GetShortName(const std::string& dll)
{
    const std::size_t nDot = dll.size() > 4 ? dll.size() - 4 : dll.size();
    return ToLower(dll.substr(nDot)) == ".dll" ? dll.substr(0, nDot) : dll;
}

bool IsSameDLL(const std::string& left, const std::string& right)
{
    return ToLower(GetShortName(left)) == ToLower(GetShortName(right));
}
