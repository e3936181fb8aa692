#include <functional>

#include "DllDriver.h"
#include "TestMachine.h"

namespace {

/// The library as Winlogon loads it.
class LUMGinaInterface : public CTestMachine
{
protected:
    ~LUMGinaInterface() override { EXPECT_TRUE(FreeLibrary(m_hGina)); }

    bool Negotiate(DWORD* pdwVersion) const
    {
        const FARPROC pfn = GetProcAddress(m_hGina, "WlxNegotiate");
        return reinterpret_cast<decltype(WlxNegotiate)*>(reinterpret_cast<void (*)()>(pfn))(WLX_VERSION_1_4,
                                                                                            pdwVersion);
    }

    bool Initialize() const
    {
        PVOID pContext = nullptr;
        const FARPROC pfn = GetProcAddress(m_hGina, "WlxInitialize");
        return reinterpret_cast<decltype(WlxInitialize)*>(reinterpret_cast<void (*)()>(pfn))(
            nullptr, nullptr, nullptr, nullptr, &pContext);
    }

    HMODULE m_hGina = LoadLibraryW(TEXT("lum_gina.dll"));
};

TEST_F(LUMGinaInterface, AFaultOfTheHostCostsTheCallItsDefaultResultAndNoMore)
{
    // The host writes through Winlogon's pointer without looking at it.
    EXPECT_FALSE(Negotiate(reinterpret_cast<DWORD*>(0x40)));
    EXPECT_EQ(1, Count("[WARNING] An unhandled exception occurred"));

    DWORD dwVersion = 0;
    EXPECT_TRUE(Negotiate(&dwVersion));
    EXPECT_EQ(WLX_VERSION_1_4, dwVersion);
}

TEST_F(LUMGinaInterface, IsNeitherItsOwnPassthroughGinaNorItsOwnPlugin)
{
    WCHAR szPath[MAX_PATH] = {};
    GetModuleFileNameW(m_hGina, szPath, MAX_PATH);
    const CStandin msgina(TEXT("msgina.dll"));
    for (const std::string& name : {std::string("lum_gina.dll"), std::string("LUM_Gina"), Narrow(szPath)}) {
        SCOPED_TRACE(name);
        for (const WCHAR* szValue : {TEXT("GinaDLL"), TEXT("Plugins")}) {
            SetString(OWN_KEY, szValue, Widen(name).c_str());
        }
        // The plugins are those of the start.
        FreeLibrary(m_hGina);
        m_hGina = LoadLibraryW(TEXT("lum_gina.dll"));
        ClearLog();
        msgina->Reset();
        DWORD dwVersion = 0;
        EXPECT_TRUE(Negotiate(&dwVersion));
        EXPECT_EQ(WLX_VERSION_1_4, dwVersion);
        EXPECT_EQ(std::vector<std::string>{"WlxNegotiate"}, msgina.Calls());
        EXPECT_EQ(2, Count("[EXCEPTION] Unable to load DLL, Filename: " + name + ", Error: 0x423"));
        EXPECT_EQ(1, Count("[WARNING] Unable to create gina plugin, Plugin: " + name));
    }
}

/// A call of a GINA that passes through to this library: its result is the library's.
struct CPassingCall
{
    static void WINAPI PassOn(void* pCall, const StandinRecord* pRecord)
    {
        auto& self = *static_cast<CPassingCall*>(pCall);
        self.standin->SetResult(pRecord->call, self.call());
    }

    const CStandin& standin;
    std::function<bool()> call;
};

TEST_F(LUMGinaInterface, AGinaThatPassesThroughToItIsRefused)
{
    const CStandin msgina(TEXT("msgina.dll"));
    const CStandin other(TEXT("standin_gina.dll"));
    CPassingCall negotiate{other, [this] {
                               DWORD dwVersion = 0;
                               return Negotiate(&dwVersion);
                           }};
    other->SetHook(StandinCall::WlxNegotiate, CPassingCall::PassOn, &negotiate);
    SetString(OWN_KEY, TEXT("GinaDLL"), TEXT("standin_gina.dll"));
    for (int n = 0; n < 2; ++n) {
        DWORD dwVersion = 0;
        EXPECT_TRUE(Negotiate(&dwVersion)) << "and the next time";
        EXPECT_EQ(std::vector<std::string>(n + 1, "WlxNegotiate"), other.Calls());
        EXPECT_EQ(std::vector<std::string>(n + 1, "WlxNegotiate"), msgina.Calls());
    }
}

TEST_F(LUMGinaInterface, AGinaThatPassesThroughToItWhenItIsInitialisedRefusesItself)
{
    const CStandin msgina(TEXT("msgina.dll"));
    CPassingCall initialize{msgina, [this] { return Initialize(); }};
    msgina->SetHook(StandinCall::WlxInitialize, CPassingCall::PassOn, &initialize);
    DWORD dwVersion = 0;
    EXPECT_TRUE(Negotiate(&dwVersion));
    EXPECT_FALSE(Initialize());
    EXPECT_EQ((std::vector<std::string>{"WlxNegotiate", "WlxInitialize"}), msgina.Calls());
}

} // namespace
