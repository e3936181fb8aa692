#pragma once

#include "KernelObject.h"
#include "RegistryTree.h"

namespace Native {

/// An open key: what a handle of RegOpenKeyExW stands for.
class CKeyObject : public CKernelObject
{
public:
    CKeyObject(std::shared_ptr<CTreeKey> pKey, REGSAM samDesired);

    const std::shared_ptr<CTreeKey>& GetKey() const noexcept { return m_pKey; }
    bool Allows(REGSAM samNeeded) const noexcept { return (m_samGranted & samNeeded) == samNeeded; }

    /// The object behind a handle, the predefined ones included; null when there is none.
    static std::shared_ptr<CKeyObject> FromHandle(HKEY hKey);

private:
    std::shared_ptr<CTreeKey> m_pKey;
    REGSAM m_samGranted;
};

/// Runs body(key) on the key behind a handle, with the tree locked. Returns the error code of body, or that
/// of a bad handle.
template <typename Body>
LONG WithKey(HKEY hKey, REGSAM samNeeded, Body body)
{
    const std::shared_ptr<CKeyObject> pObject = CKeyObject::FromHandle(hKey);
    if (pObject == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    const std::lock_guard lock(RegistryTree::g_mutex);
    if (pObject->GetKey()->bDeleted) {
        return ERROR_KEY_DELETED;
    }
    return pObject->Allows(samNeeded) ? body(pObject->GetKey()) : ERROR_ACCESS_DENIED;
}

} // namespace Native
