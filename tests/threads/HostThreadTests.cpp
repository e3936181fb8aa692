#include "HostMachine.h"

namespace {

constexpr const char* STOP = "[ENTRY] CThreadObject::StopThread::LUMRegMonitorThreadObject";

class HostThreadObjects : public CHostMachine
{
protected:
    HostThreadObjects() { Load(); }
};

TEST_F(HostThreadObjects, RunInTheFirstInstanceFromInitialisationToShutdown)
{
    EXPECT_FALSE(IsMonitoring());
    ASSERT_TRUE(Initialize());
    EXPECT_TRUE(IsMonitoring());
    host->LUMWlxShutdown(nullptr, 0);
    EXPECT_FALSE(IsMonitoring());
    SetTraceMask(0xFFFFFFFF);
    host->LUMWlxShutdown(nullptr, 0);
    EXPECT_EQ(0, Count(STOP)) << "what does not run is not stopped";
    SetTraceMask(0);
    Load();
    ASSERT_TRUE(Initialize());
    EXPECT_FALSE(IsMonitoring()) << "a later instance";
}

TEST_F(HostThreadObjects, DoNotRunForAHostThatFails)
{
    msgina->SetResult(StandinCall::WlxInitialize, FALSE);
    EXPECT_FALSE(Initialize());
    EXPECT_FALSE(IsMonitoring());
}

TEST_F(HostThreadObjects, AreStoppedAfterTheCallWasPassedOn)
{
    ASSERT_TRUE(Initialize());
    msgina->SetFailure(StandinCall::WlxShutdown, StandinFailure::ReadNull, 0);
    host->LUMWlxShutdown(nullptr, 0);
    EXPECT_TRUE(IsMonitoring()) << "a call that failed leaves them as they are";
    SetTraceMask(0xFFFFFFFF);
    ClearLog();
    host.reset();
    EXPECT_EQ(1, Count(STOP)) << "but not for longer than the host";
}

TEST_F(HostThreadObjects, TheMonitorIsSwitchedByTheControlChannel)
{
    for (const bool bEnable : {false, true, true, false, false, true}) {
        EXPECT_TRUE(host->LUMEnableActiveRegistryMonitoring(bEnable));
        EXPECT_EQ(bEnable, IsMonitoring());
    }
    delete host->m_pLUMRegMonitorThreadObject;
    host->m_pLUMRegMonitorThreadObject = nullptr;
    ClearLog();
    EXPECT_FALSE(host->LUMEnableActiveRegistryMonitoring(true));
    EXPECT_EQ((std::vector<std::string>{"[WARNING] An unhandled exception occurred", FAILED}), Log());
}

TEST_F(HostThreadObjects, TheMonitorIsOnWhenTheControlChannelIsToldSo)
{
    CLUMRegMonitorThreadObject& monitor = *host->m_pLUMRegMonitorThreadObject;
    monitor.m_dwLongestStop = 100;
    ASSERT_TRUE(host->LUMEnableActiveRegistryMonitoring(true));
    {
        // Its last comparison has to wait.
        const CCriticalSection::CLock lock(host->m_pRegistryManager->m_lock);
        EXPECT_FALSE(host->LUMEnableActiveRegistryMonitoring(false));
        EXPECT_FALSE(host->LUMEnableActiveRegistryMonitoring(true)) << "it is about to end";
    }
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(monitor.m_hThread, 10000));
    EXPECT_TRUE(host->LUMEnableActiveRegistryMonitoring(true));
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(monitor.m_hThread, 100));
    monitor.m_dwLongestStop = 10000;
    EXPECT_TRUE(host->LUMEnableActiveRegistryMonitoring(false));
}

TEST_F(HostThreadObjects, TheHostTellsItsOwnVersion)
{
    struct
    {
        const WCHAR* szDLL;
        bool bResult;
        DWORD dwVersion;
    } const rows[] = {
        {TEXT("lum_gina.dll"), true,
         static_cast<DWORD>((LUM_VERSION_MINOR | LUM_VERSION_PATCH) << 16 | LUM_VERSION_TWEAK)},
        {TEXT("version_test_dll.dll"), true, 0x000F0003},
        {TEXT("msgina.dll"), false, 77},
    };
    for (const auto& row : rows) {
        const HMODULE hModule = LoadLibraryW(row.szDLL);
        ASSERT_NE(nullptr, hModule);
        DWORD dwVersion = 77;
        EXPECT_EQ(row.bResult, CLUMGina(hModule).LUMGetLUMGinaVersion(&dwVersion));
        EXPECT_EQ(row.dwVersion, dwVersion);
        EXPECT_TRUE(FreeLibrary(hModule));
    }
    EXPECT_FALSE(CLUMGina(reinterpret_cast<HINSTANCE>(1)).LUMGetLUMGinaVersion(nullptr));
}

} // namespace
