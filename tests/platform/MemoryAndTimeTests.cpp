#include <cstring>
#include <ctime>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

TEST(Memory, IsGivenClearedIfAskedForAndTakenBack)
{
    const HLOCAL hMemory = LocalAlloc(LPTR, 256);
    ASSERT_NE(hMemory, nullptr);
    const BYTE zeros[256] = {};
    EXPECT_EQ(std::memcmp(hMemory, zeros, sizeof(zeros)), 0);
    EXPECT_EQ(LocalFree(hMemory), nullptr);
    EXPECT_EQ(LocalFree(nullptr), nullptr);
    const HLOCAL hNothing = LocalAlloc(LMEM_FIXED, 0);
    EXPECT_NE(hNothing, nullptr);
    LocalFree(hNothing);
}

TEST(CriticalSection, LetsItsThreadInAgain)
{
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    EnterCriticalSection(&section);
    LeaveCriticalSection(&section);
    LeaveCriticalSection(&section);
    DeleteCriticalSection(&section);
}

TEST(Time, IsLocalTime)
{
    SYSTEMTIME time = {};
    std::tm expected = {};
    // Until both were read within one second.
    do {
        const std::time_t now = std::time(nullptr);
        GetLocalTime(&time);
        expected = *std::localtime(&now);
    } while (time.wSecond != expected.tm_sec);
    EXPECT_EQ(time.wYear, expected.tm_year + 1900);
    EXPECT_EQ(time.wMonth, expected.tm_mon + 1);
    EXPECT_EQ(time.wDay, expected.tm_mday);
    EXPECT_EQ(time.wDayOfWeek, expected.tm_wday);
    EXPECT_EQ(time.wHour, expected.tm_hour);
    EXPECT_EQ(time.wMinute, expected.tm_min);
    EXPECT_LT(time.wMilliseconds, 1000);
}

TEST(Time, PassesWhileAThreadSleeps)
{
    const DWORD dwBegin = GetTickCount();
    Sleep(60);
    const DWORD dwPassed = GetTickCount() - dwBegin;
    // Windows counts in steps of its clock.
    EXPECT_GE(dwPassed, 40u);
    EXPECT_LT(dwPassed, 10000u);
}

} // namespace
