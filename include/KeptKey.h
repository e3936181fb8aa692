#pragma once

#include <atomic>

#include <windows.h>

/// A key under HKEY_LOCAL_MACHINE that is queried again and again, and stays open meanwhile: opening it costs
/// twice as much as a query.
///
/// Any thread. A thread takes the handle out while it uses it, so that no other thread closes it. Another
/// thread that comes meanwhile opens the key for itself. Windows checks what a client may read, on a thread
/// that impersonates it, only when the key is opened.
class CKeptKey
{
public:
    /// The name is not copied.
    constexpr explicit CKeptKey(const WCHAR* szKey) noexcept : m_szKey(szKey) {}
    ~CKeptKey();
    CKeptKey(const CKeptKey&) = delete;
    CKeptKey& operator=(const CKeptKey&) = delete;

    /// Reads a value, whatever its type, which *pdwType tells; false when that fails. A key that was deleted,
    /// and perhaps made again, is opened anew.
    bool Query(const WCHAR* szValue, void* pData, DWORD* pcbData, DWORD* pdwType = nullptr) noexcept;

private:
    HKEY Open() const noexcept;

    const WCHAR* const m_szKey;
    std::atomic<HKEY> m_hKey = nullptr;
};

/// The library's own key, which is read with every statement and event. Closed when the library is unloaded,
/// after its DllMain.
extern constinit CKeptKey g_OwnKey;
