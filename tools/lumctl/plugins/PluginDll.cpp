#include "PluginDll.h"

#include "GinaNames.h"
#include "GinaPluginExports.h"
#include "dll/DllTrouble.h"

std::string FindPluginTrouble(const CDllFile& dll)
{
    return DescribeTrouble(dll, FindMissingExports(dll, CGinaPluginExports().m_Exports, false), "plugin");
}
