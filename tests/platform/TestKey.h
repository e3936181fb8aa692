#pragma once

#include <windows.h>

/// A key of HKEY_LOCAL_MACHINE that a test has for itself: it is not there before, and gone afterwards with
/// all that is below it.
class CTestKey
{
public:
    explicit CTestKey(const WCHAR* szKey);
    ~CTestKey();
    CTestKey(const CTestKey&) = delete;
    CTestKey& operator=(const CTestKey&) = delete;

private:
    const WCHAR* m_szKey;
};
