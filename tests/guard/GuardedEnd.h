#pragma once

#include <stdexcept>

#include "guard/FaultGuard.h"

/// Stands for an exception of the host.
class CHostError : public std::runtime_error
{
public:
    explicit CHostError(int nNumber) : std::runtime_error("host"), m_nNumber(nNumber) { ++s_nAlive; }
    CHostError(const CHostError& other) : std::runtime_error(other), m_nNumber(other.m_nNumber)
    {
        ++s_nAlive;
    }
    ~CHostError() override { --s_nAlive; }

    inline static int s_nAlive = 0;

    int m_nNumber;
};

/// How a call ended: all zeros when it returned.
struct CEnd
{
    int nHostError = 0;
    DWORD dwFault = 0;

    bool operator==(const CEnd&) const = default;
};

/// Runs call() as it is.
template <typename Call>
CEnd GetEnd(Call call)
{
    try {
        call();
    } catch (const CHostError& error) {
        return {error.m_nNumber, 0};
    } catch (const CForeignFault& fault) {
        return {0, fault.GetCode()};
    }
    return {};
}

/// Runs call() in a guard.
template <typename Call>
CEnd GetGuardedEnd(Call call)
{
    return GetEnd([&] { CallIntoDLL(call); });
}
