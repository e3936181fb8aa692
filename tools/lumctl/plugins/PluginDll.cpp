#include "PluginDll.h"

#include "GinaNames.h"
#include "GinaPluginExports.h"
#include "dll/DllTrouble.h"
#include "machine/DllFile.h"

std::string FindPluginTrouble(const WideText& plugin, const WideText& system)
{
    const CDllFile dll = InspectDll(plugin.c_str(), system.c_str());
    return DescribeTrouble(dll, FindMissingExports(dll, CGinaPluginExports().m_Exports, false), "plugin");
}
