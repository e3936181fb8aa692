#pragma once

#include <atomic>

#include <windows.h>

/// A key under HKEY_LOCAL_MACHINE that is queried again and again, and stays open meanwhile: to open it costs
/// twice as much as to query it.
///
/// Any thread. A thread takes the handle out while it uses it, so that nobody closes it there; another one
/// that comes then opens the key for itself. What a client may read, on a thread that impersonates one, is
/// asked at an opening only.
class CKeptKey
{
public:
    /// The name is not copied.
    constexpr explicit CKeptKey(const WCHAR* szKey) noexcept : m_szKey(szKey) {}
    ~CKeptKey();
    CKeptKey(const CKeptKey&) = delete;
    CKeptKey& operator=(const CKeptKey&) = delete;

    /// Reads a value, whatever its type. A key that was deleted, and perhaps made again, is opened anew.
    /// False when that fails.
    bool Query(const WCHAR* szValue, void* pData, DWORD* pcbData) noexcept;

private:
    HKEY Open() const noexcept;

    const WCHAR* const m_szKey;
    std::atomic<HKEY> m_hKey = nullptr;
};
