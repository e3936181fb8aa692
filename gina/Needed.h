#pragma once

#include <exception>

/// Thrown when the host was left without a member that an operation needs.
struct CMissingMember : std::exception
{
    const char* what() const noexcept override { return "the host was left without this member"; }
};

/// Returns a member that an operation of the host cannot do without. Throws if it is null, which ends the
/// operation as any unexpected exception does.
template <typename T>
T& Needed(T* pMember)
{
    if (pMember == nullptr) {
        throw CMissingMember();
    }
    return *pMember;
}
