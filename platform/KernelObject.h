#pragma once

#include <memory>

#include <windows.h>

namespace Native {

/// Something behind a handle. It lives until its last handle is closed and no call uses it any more.
class CKernelObject
{
public:
    virtual ~CKernelObject() = default;

    /// The name by which an injected failure can be restricted to this object; null if it has none.
    virtual LPCWSTR GetName() const noexcept { return nullptr; }
};

/// The handles of the process, for objects of all kinds. No value is given out twice, so the use of a closed
/// handle is always noticed. Any thread may use it.
namespace HandleTable {

HANDLE Add(std::shared_ptr<CKernelObject> pObject);

/// Null when there is no such handle.
std::shared_ptr<CKernelObject> Find(HANDLE hObject) noexcept;

/// Null when there is no such handle, or when it is of another kind.
template <typename Object>
std::shared_ptr<Object> Find(HANDLE hObject) noexcept
{
    return std::dynamic_pointer_cast<Object>(Find(hObject));
}

/// False when there is no such handle.
bool Close(HANDLE hObject) noexcept;

} // namespace HandleTable

} // namespace Native
