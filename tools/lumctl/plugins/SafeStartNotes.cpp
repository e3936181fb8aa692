#include "SafeStartNotes.h"

#include <algorithm>

#include "DllStamp.h"
#include "GinaNames.h"
#include "PluginList.h"
#include "SafeStartNames.h"

namespace {

CValuePlace LeftOutPlace(const WideText& plugin)
{
    return {LEFT_OUT_KEY, plugin};
}

} // namespace

CSafeStartNotes::CSafeStartNotes()
    : m_bWithoutPlugins(NumberOf(ReadValue({LUM_GINA_MTM, NO_PLUGINS})) != 0),
      m_dwLimit(NumberOf(ReadValue({LUM_GINA_MTM, SAFE_START}))),
      m_required(ReadValue({LUM_GINA_MTM, REQUIRED_PLUGINS})),
      m_inPlugin(TextOf(ReadValue({START_KEY, IN_PLUGIN}))), m_stamp(ReadValue({START_KEY, IN_PLUGIN_STAMP})),
      m_dwEnded(NumberOf(ReadValue({START_KEY, IN_PLUGIN_COUNT})))
{
}

/// The next start draws the same conclusion from the last one, see CSafeStart.
CValueData CSafeStartNotes::FindStamp(const WideText& plugin) const
{
    const bool bEndedThere = IsText(m_stamp) && std::max<DWORD>(m_dwEnded, 1) >= m_dwLimit;
    return bEndedThere && IsSameDll(m_inPlugin, plugin) ? m_stamp : ReadValue(LeftOutPlace(plugin));
}

std::string CSafeStartNotes::WhyLeftOut(const WideText& plugin, const WideText& dll, bool bFindable) const
{
    if (m_bWithoutPlugins) {
        return "NoPlugins is set";
    }
    if (m_dwLimit == 0 || IsRequired(plugin)) {
        return std::string();
    }
    const CValueData stamp = FindStamp(plugin);
    const bool bSame = IsText(stamp) && TextOf(stamp) == GetDllStamp(dll.c_str());
    if (!IsText(stamp) || (bFindable && !bSame)) {
        return std::string();
    }
    return Format(
        "left out, since %u starts in a row ended in it; until its DLL changes%s, or lumctl plugins "
        "retry",
        static_cast<unsigned>(m_dwLimit), bSame ? "" : ", unless it has changed already");
}

/// As the host takes it: a list that is no text may name anybody.
bool CSafeStartNotes::IsRequired(const WideText& plugin) const
{
    return (m_required && m_required->dwType != REG_SZ) ||
           CPluginList(TextOf(m_required)).FindSameDll(plugin) != nullptr;
}

void AddRetry(const WideText& plugin, CValueChange& change)
{
    const auto clear = [&](const CValuePlace& place) {
        change.before.Set(place, ReadValue(place));
        change.after.Set(place, std::nullopt);
    };
    clear(LeftOutPlace(plugin));
    if (IsSameDll(TextOf(ReadValue({START_KEY, IN_PLUGIN})), plugin)) {
        for (const WCHAR* szNote : {IN_PLUGIN_COUNT, IN_PLUGIN_STAMP, IN_PLUGIN}) {
            clear({START_KEY, szNote});
        }
    }
}
