// Whether the library stays as small as it was: prints the handles and the private bytes of the process
// before a million calls of Winlogon's and ten thousand changes of the list of plugins, and after every tenth
// of them.
//
// Usage: bench_flat [CALLS [CHANGES]]

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "Handles.h"
#include "LUMGina.h"
#include "Machine.h"

namespace {

constexpr int TENTHS = 10;

/// The bytes of memory that the process shares with nobody.
std::size_t CountPrivateBytes()
{
    std::size_t cb = 0;
#ifdef _WIN32
    MEMORY_BASIC_INFORMATION region;
    for (const BYTE* p = nullptr; VirtualQuery(p, &region, sizeof(region)) != 0; p += region.RegionSize) {
        cb += region.State == MEM_COMMIT && region.Type == MEM_PRIVATE ? region.RegionSize : 0;
    }
#else
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "RssAnon:") {
            status >> cb;
        }
    }
    cb *= 1024;
#endif
    return cb;
}

template <typename Step>
void Watch(const char* szWhat, int nSteps, Step step)
{
    for (int nTenth = 0; nTenth <= TENTHS; ++nTenth) {
        std::printf("%s %d %lu %lu\n", szWhat, nSteps / TENTHS * nTenth,
                    static_cast<unsigned long>(CountHandles()),
                    static_cast<unsigned long>(CountPrivateBytes()));
        std::fflush(stdout);
        for (int n = 0; nTenth < TENTHS && n < nSteps / TENTHS; ++n) {
            step();
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    const int nCalls = argc > 1 ? std::atoi(argv[1]) : 1000000;
    const int nChanges = argc > 2 ? std::atoi(argv[2]) : 10000;
    Configure(2, MASK_NOTHING);
    {
        const CWinlogon winlogon;
        Watch("calls", nCalls, [&] { Require(winlogon.IsLockOk(), "a call"); });
    }
    // Only the host itself changes its list without the pipe's period.
    CLUMGina host(reinterpret_cast<HINSTANCE>(&host));
    DWORD dwVersion = 0;
    PVOID pContext = nullptr;
    CWinlogonTable table;
    Require(host.LUMWlxNegotiate(WLX_VERSION_1_4, &dwVersion) &&
                host.LUMWlxInitialize(nullptr, nullptr, nullptr, table.entries, &pContext),
            "the start");
    const Text plugin = CopyOf('p', 3);
    Watch("changes", nChanges, [&] {
        Require(host.LUMAddPluginDynamic(plugin.c_str()), "an addition");
        Require(host.LUMRemovePluginDynamic(plugin.c_str()), "a removal");
    });
    return 0;
}
