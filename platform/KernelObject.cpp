#include "KernelObject.h"

#include <mutex>
#include <unordered_map>

#include "Call.h"

namespace Native {
namespace {

std::mutex g_mutex;
ULONG_PTR g_lastHandle;

/// Never destroyed: handles may be in use until the process is gone.
auto& GetObjects()
{
    static auto& objects = *new std::unordered_map<HANDLE, std::shared_ptr<CKernelObject>>;
    return objects;
}

} // namespace

HANDLE HandleTable::Add(std::shared_ptr<CKernelObject> pObject)
{
    const std::lock_guard lock(g_mutex);
    // Windows' handles are multiples of 4 as well.
    const HANDLE hObject = reinterpret_cast<HANDLE>(g_lastHandle + 4);
    GetObjects().emplace(hObject, std::move(pObject));
    g_lastHandle += 4;
    return hObject;
}

std::shared_ptr<CKernelObject> HandleTable::Find(HANDLE hObject) noexcept
{
    const std::lock_guard lock(g_mutex);
    const auto found = GetObjects().find(hObject);
    return found != GetObjects().end() ? found->second : nullptr;
}

bool HandleTable::Close(HANDLE hObject) noexcept
{
    // The object may go with its handle. It is destroyed after the lock is released.
    std::shared_ptr<CKernelObject> pObject;
    const std::lock_guard lock(g_mutex);
    const auto found = GetObjects().find(hObject);
    if (found == GetObjects().end()) {
        return false;
    }
    pObject = std::move(found->second);
    GetObjects().erase(found);
    return true;
}

} // namespace Native

using namespace Native;

BOOL WINAPI CloseHandle(HANDLE hObject) noexcept
{
    const std::shared_ptr<CKernelObject> pObject = HandleTable::Find(hObject);
    const LPCWSTR szName = pObject != nullptr ? pObject->GetName() : nullptr;
    return LastErrorCall(PlatformCall::CloseHandle, szName, FALSE, [&] {
        // INVALID_HANDLE_VALUE is also the handle of the process itself, which closes without effect.
        Require(hObject == INVALID_HANDLE_VALUE || HandleTable::Close(hObject), ERROR_INVALID_HANDLE);
        return TRUE;
    });
}
