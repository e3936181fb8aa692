#include "Machine.h"

#include <algorithm>

#include "GinaNames.h"
#include "RegistryValues.h"
#include "machine/SetupError.h"

namespace {

constexpr WCHAR DEBUG_KEY[] = TEXT("Software\\ORX\\Security\\Debug");
constexpr WCHAR LOG_VALUE[] = TEXT("LUM_GINA");
constexpr WCHAR OWN_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina");
constexpr WCHAR MASK_VALUE[] = TEXT("Debug");
constexpr WCHAR PASSTHROUGH_VALUE[] = TEXT("GinaDLL");
constexpr WCHAR PLUGINS_VALUE[] = TEXT("Plugins");

} // namespace

CMachine::CMachine(const COptions& options)
    : m_registry(options.registry, CRegistryFile::Absence::IsNewMachine)
{
    if (options.dwStart != 0) {
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, VOLATILE_KEY);
        m_registry.KeepFlushed();
    }
    if (!options.setup.empty() && options.dwStart <= 1) {
        CRegistryFile::Import(options.setup);
    }
    if (options.traceLog.empty()) {
        DeleteValue(DEBUG_KEY, LOG_VALUE);
    } else {
        WriteText(DEBUG_KEY, LOG_VALUE, options.traceLog);
        WriteNumber(OWN_KEY, MASK_VALUE, options.dwTraceMask);
    }
    if (!options.standin.empty()) {
        WriteText(OWN_KEY, PASSTHROUGH_VALUE, options.standin);
    }
    if (options.dwStart != 0) {
        // What a machine starts with is on its disk.
        Save();
    }
    const std::string passthrough = ReadText(OWN_KEY, PASSTHROUGH_VALUE).value_or("");
    m_standin = passthrough.empty() ? "msgina.dll" : passthrough;
}

void CMachine::RequireUnused()
{
    if (HasValue(WINLOGON_KEY, WINLOGON_GINA_DLL) || ReadNumber(VOLATILE_KEY, ENABLED_VALUE) != 0) {
        throw CSetupError(
            "Winlogon has a GinaDLL on this machine, or lum_gina.dll is in service: a day would "
            "change what the next boot needs (--on-this-machine lives it all the same)");
    }
}

std::vector<std::string> CMachine::GetPlugins()
{
    std::vector<std::string> plugins;
    const std::string text = ReadText(OWN_KEY, PLUGINS_VALUE).value_or("");
    for (std::size_t nBegin = 0; nBegin < text.size();) {
        const std::size_t nEnd = std::min(text.find(',', nBegin), text.size());
        if (nEnd != nBegin) {
            plugins.push_back(text.substr(nBegin, nEnd - nBegin));
        }
        nBegin = nEnd + 1;
    }
    return plugins;
}
