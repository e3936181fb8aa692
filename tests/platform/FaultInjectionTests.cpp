#include <functional>
#include <iterator>

#include <gtest/gtest.h>

#include "FailingAllocation.h"
#include "platform/FaultInjection.h"
#include "machine/MachineRegistry.h"

namespace {

constexpr WCHAR KEY[] = TEXT("SOFTWARE\\ORX\\FaultTest");

LONG SetNumber(const WCHAR* szValue, DWORD dwNumber)
{
    HKEY hKey = nullptr;
    const LONG lResult =
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, KEY, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &hKey, nullptr);
    if (lResult != ERROR_SUCCESS) {
        return lResult;
    }
    const LONG lSet = RegSetValueExW(hKey, szValue, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&dwNumber),
                                     sizeof(dwNumber));
    RegCloseKey(hKey);
    return lSet;
}

DWORD GetNumber(const WCHAR* szValue)
{
    HKEY hKey = nullptr;
    DWORD dwNumber = 0;
    DWORD cbNumber = sizeof(dwNumber);
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, KEY, 0, KEY_READ, &hKey) == ERROR_SUCCESS) {
        RegQueryValueExW(hKey, szValue, nullptr, nullptr, reinterpret_cast<BYTE*>(&dwNumber), &cbNumber);
        RegCloseKey(hKey);
    }
    return dwNumber;
}

class FaultInjection : public testing::Test
{
protected:
    FaultInjection() { MachineRegistry::Clear(); }
};

TEST_F(FaultInjection, FailsTheUseThatWasNamedAndDoesNothingInIt)
{
    {
        const CFaultInjection fault(PlatformCall::RegSetValueExW, 2, ERROR_ACCESS_DENIED);
        EXPECT_EQ(SetNumber(TEXT("v"), 1), ERROR_SUCCESS);
        EXPECT_FALSE(fault.HasFired());
        EXPECT_EQ(SetNumber(TEXT("v"), 2), ERROR_ACCESS_DENIED);
        EXPECT_TRUE(fault.HasFired());
        EXPECT_EQ(GetNumber(TEXT("v")), 1u);
        EXPECT_EQ(SetNumber(TEXT("v"), 3), ERROR_SUCCESS) << "once";
        EXPECT_EQ(fault.GetUses(), 3u);
    }
    const CFaultInjection counter(PlatformCall::RegSetValueExW, 1, ERROR_SUCCESS);
    EXPECT_EQ(SetNumber(TEXT("v"), 4), ERROR_SUCCESS) << "gone with its object";
    EXPECT_EQ(counter.GetUses(), 1u) << "and no error means counting";
}

TEST_F(FaultInjection, IsRestrictedToAName)
{
    const CFaultInjection fault(PlatformCall::RegSetValueExW, 1, ERROR_ACCESS_DENIED, TEXT("bad"),
                                FaultRepeat::FromThenOn);
    EXPECT_EQ(SetNumber(TEXT("good"), 1), ERROR_SUCCESS);
    EXPECT_EQ(SetNumber(TEXT("BAD"), 1), ERROR_ACCESS_DENIED);
    EXPECT_EQ(SetNumber(nullptr, 1), ERROR_SUCCESS);
    EXPECT_EQ(SetNumber(TEXT("bad"), 1), ERROR_ACCESS_DENIED);
}

TEST_F(FaultInjection, StopsTheMachineAtAnyWrite)
{
    const CFaultInjection fault = CFaultInjection::StopMachine(4);
    EXPECT_EQ(SetNumber(TEXT("a"), 1), ERROR_SUCCESS);
    EXPECT_EQ(SetNumber(TEXT("b"), 1), ERROR_IO_DEVICE) << "one key opened and one value set for each";
    EXPECT_EQ(SetNumber(TEXT("a"), 2), ERROR_IO_DEVICE);
    EXPECT_EQ(RegDeleteKeyW(HKEY_LOCAL_MACHINE, KEY), ERROR_IO_DEVICE);
    EXPECT_EQ(GetNumber(TEXT("a")), 1u) << "reading goes on";
    EXPECT_EQ(GetNumber(TEXT("b")), 0u);
}

TEST_F(FaultInjection, ReachesEveryCall)
{
    // Arguments that would give another error, or none, if the call looked at them.
    DWORD dw = 0;
    HKEY hKey = nullptr;
    const HLOCAL hMemory = LocalAlloc(LPTR, 1);
    WCHAR szWide[4] = {};
    char szAnsi[4] = {};
    const auto lastError = [](bool bFailed) { return bFailed ? LONG(GetLastError()) : ERROR_SUCCESS; };
    const struct
    {
        PlatformCall call;
        std::function<LONG()> use;
    } rows[] = {
        {PlatformCall::CloseHandle, [&] { return lastError(!CloseHandle(nullptr)); }},
        {PlatformCall::ConnectNamedPipe, [&] { return lastError(!ConnectNamedPipe(nullptr, nullptr)); }},
        {PlatformCall::CreateDirectoryW, [&] { return lastError(!CreateDirectoryW(TEXT(""), nullptr)); }},
        {PlatformCall::CreateEventW,
         [&] { return lastError(CreateEventW(nullptr, FALSE, FALSE, TEXT("e")) == nullptr); }},
        {PlatformCall::CreateFileW,
         [&] {
             return lastError(CreateFileW(TEXT(""), 0, 0, nullptr, 1, 0, nullptr) == INVALID_HANDLE_VALUE);
         }},
        {PlatformCall::CreateNamedPipeW,
         [&] {
             return lastError(CreateNamedPipeW(nullptr, 0, 0, 0, 0, 0, 0, nullptr) == INVALID_HANDLE_VALUE);
         }},
        {PlatformCall::CreateThread,
         [&] { return lastError(CreateThread(nullptr, 0, nullptr, nullptr, 1, nullptr) == nullptr); }},
        {PlatformCall::DisconnectNamedPipe, [&] { return lastError(!DisconnectNamedPipe(nullptr)); }},
        {PlatformCall::FlushFileBuffers, [&] { return lastError(!FlushFileBuffers(nullptr)); }},
        {PlatformCall::ImpersonateNamedPipeClient,
         [&] { return lastError(!ImpersonateNamedPipeClient(nullptr)); }},
        {PlatformCall::OpenThreadToken, [&] { return lastError(!OpenThreadToken(nullptr, 0, 0, nullptr)); }},
        {PlatformCall::PeekNamedPipe,
         [&] { return lastError(!PeekNamedPipe(nullptr, nullptr, 0, nullptr, nullptr, nullptr)); }},
        {PlatformCall::RevertToSelf, [&] { return lastError(!RevertToSelf()); }},
        {PlatformCall::SetNamedPipeHandleState,
         [&] { return lastError(!SetNamedPipeHandleState(nullptr, nullptr, nullptr, nullptr)); }},
        {PlatformCall::WaitNamedPipeW, [&] { return lastError(!WaitNamedPipeW(nullptr, 0)); }},
        {PlatformCall::FindResourceW,
         [&] { return lastError(FindResourceW(nullptr, MAKEINTRESOURCE(1), RT_VERSION) == nullptr); }},
        {PlatformCall::FreeLibrary, [&] { return lastError(!FreeLibrary(nullptr)); }},
        {PlatformCall::GetModuleFileNameW,
         [&] { return lastError(GetModuleFileNameW(nullptr, szWide, 4) == 0); }},
        {PlatformCall::GetModuleHandleW, [&] { return lastError(GetModuleHandleW(nullptr) == nullptr); }},
        {PlatformCall::GetProcAddress, [&] { return lastError(GetProcAddress(nullptr, "name") == nullptr); }},
        {PlatformCall::LoadLibraryW, [&] { return lastError(LoadLibraryW(nullptr) == nullptr); }},
        {PlatformCall::LoadResource,
         [&] { return lastError(LoadResource(nullptr, reinterpret_cast<HRSRC>(&dw)) == nullptr); }},
        {PlatformCall::LocalAlloc,
         [&] {
             const HLOCAL hNew = LocalAlloc(LPTR, 1);
             const LONG lError = lastError(hNew == nullptr);
             LocalFree(hNew);
             return lError;
         }},
        {PlatformCall::LocalFree, [&] { return lastError(LocalFree(hMemory) != nullptr); }},
        {PlatformCall::LockResource, [&] { return lastError(LockResource(&dw) == nullptr); }},
        {PlatformCall::MsgWaitForMultipleObjects,
         [&] {
             return lastError(MsgWaitForMultipleObjects(0, nullptr, TRUE, 0, QS_ALLINPUT) == WAIT_FAILED);
         }},
        {PlatformCall::MultiByteToWideChar,
         [&] { return lastError(MultiByteToWideChar(CP_ACP, 0, "a", 1, szWide, 4) == 0); }},
        {PlatformCall::PostThreadMessageW, [&] { return lastError(!PostThreadMessageW(0, WM_NULL, 0, 0)); }},
        {PlatformCall::ReadFile, [&] { return lastError(!ReadFile(nullptr, szAnsi, 1, &dw, nullptr)); }},
        {PlatformCall::RegCloseKey, [&] { return RegCloseKey(nullptr); }},
        {PlatformCall::RegCreateKeyExW,
         [&] { return RegCreateKeyExW(nullptr, TEXT("k"), 0, nullptr, 0, 0, nullptr, &hKey, nullptr); }},
        {PlatformCall::RegDeleteKeyW, [&] { return RegDeleteKeyW(nullptr, TEXT("k")); }},
        {PlatformCall::RegDeleteValueW, [&] { return RegDeleteValueW(nullptr, TEXT("v")); }},
        {PlatformCall::RegEnumKeyExW,
         [&] { return RegEnumKeyExW(nullptr, 0, szWide, &dw, nullptr, nullptr, nullptr, nullptr); }},
        {PlatformCall::RegOpenKeyExW, [&] { return RegOpenKeyExW(nullptr, TEXT("k"), 0, 0, &hKey); }},
        {PlatformCall::RegQueryValueExW,
         [&] { return RegQueryValueExW(nullptr, TEXT("v"), nullptr, nullptr, nullptr, nullptr); }},
        {PlatformCall::RegSetValueExW, [&] { return RegSetValueExW(nullptr, TEXT("v"), 0, 0, nullptr, 0); }},
        {PlatformCall::ResetEvent, [&] { return lastError(!ResetEvent(nullptr)); }},
        {PlatformCall::SetEvent, [&] { return lastError(!SetEvent(nullptr)); }},
        {PlatformCall::SetFilePointer,
         [&] { return lastError(SetFilePointer(nullptr, 0, nullptr, 0) == INVALID_SET_FILE_POINTER); }},
        {PlatformCall::VerQueryValueW,
         [&] { return lastError(!VerQueryValueW(nullptr, TEXT("\\"), nullptr, nullptr)); }},
        {PlatformCall::WaitForSingleObject,
         [&] { return lastError(WaitForSingleObject(nullptr, 0) == WAIT_FAILED); }},
        {PlatformCall::WideCharToMultiByte,
         [&] {
             return lastError(WideCharToMultiByte(CP_ACP, 0, TEXT("a"), 1, szAnsi, 4, nullptr, nullptr) == 0);
         }},
        {PlatformCall::WriteFile, [&] { return lastError(!WriteFile(nullptr, "x", 1, &dw, nullptr)); }},
    };
#define COUNT_CALL(NAME) +1
    EXPECT_EQ(std::size(rows), PLATFORM_CALLS(COUNT_CALL)) << "a call without a row";
    for (const auto& row : rows) {
        constexpr LONG CHOSEN = 4711;
        const CFaultInjection fault(row.call, 1, CHOSEN);
        EXPECT_EQ(row.use(), CHOSEN) << static_cast<int>(row.call);
        EXPECT_NE(row.use(), CHOSEN) << static_cast<int>(row.call);
    }
}

/// Makes each allocation of the call fail in turn, until the call succeeds.
template <typename Use>
void ExpectOutOfMemory(const char* szWhat, Use use)
{
    int nAllocations = 0;
    LONG lResult = ERROR_NOT_ENOUGH_MEMORY;
    for (; lResult != ERROR_SUCCESS && nAllocations < 100; ++nAllocations) {
        const CFailingAllocation failure(nAllocations);
        lResult = use();
        EXPECT_TRUE(lResult == ERROR_SUCCESS || lResult == ERROR_NOT_ENOUGH_MEMORY)
            << szWhat << ": " << lResult;
    }
    EXPECT_EQ(lResult, ERROR_SUCCESS) << szWhat;
    EXPECT_GT(nAllocations, 1) << szWhat << " is not under test here";
}

TEST(OutOfMemory, IsAnErrorCodeLikeOthers)
{
    MachineRegistry::Clear();
    HKEY hKey = nullptr;
    HMODULE hModule = nullptr;
    ExpectOutOfMemory("create a key", [&] {
        return RegCreateKeyExW(HKEY_LOCAL_MACHINE, KEY, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &hKey,
                               nullptr);
    });
    ExpectOutOfMemory("set a value", [&] {
        return RegSetValueExW(hKey, TEXT("v"), 0, REG_SZ, reinterpret_cast<const BYTE*>("1"), 1);
    });
    ExpectOutOfMemory("load a DLL", [&] {
        hModule = LoadLibraryW(TEXT("loader_test_outer.dll"));
        return hModule != nullptr ? ERROR_SUCCESS : LONG(GetLastError());
    });
    EXPECT_TRUE(FreeLibrary(hModule));
    EXPECT_EQ(RegCloseKey(hKey), ERROR_SUCCESS);
}

TEST_F(FaultInjection, LetsTheFirstDecideAndAllCount)
{
    const CFaultInjection first(PlatformCall::RegOpenKeyExW, 1, ERROR_ACCESS_DENIED);
    const CFaultInjection second(PlatformCall::RegOpenKeyExW, 1, ERROR_BUSY, KEY, FaultRepeat::FromThenOn);
    HKEY hKey = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, KEY, 0, KEY_READ, &hKey), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, KEY, 0, KEY_READ, &hKey), ERROR_BUSY);
    EXPECT_EQ(second.GetUses(), 2u);
}

} // namespace
