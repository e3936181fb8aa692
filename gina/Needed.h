#pragma once

#include <stdexcept>

/// A member that an operation of the host cannot do without. What this throws ends the operation as any
/// unexpected exception does.
template <typename T>
T& Needed(T* pMember)
{
    if (pMember == nullptr) {
        throw std::logic_error("the host was left without this member");
    }
    return *pMember;
}
