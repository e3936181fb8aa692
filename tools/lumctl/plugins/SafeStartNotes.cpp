#include "SafeStartNotes.h"

#include <algorithm>

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
      m_inPlugin(TextOf(ReadValue({START_KEY, IN_PLUGIN})))
{
}

std::string CSafeStartNotes::WhyLeftOut(const WideText& plugin) const
{
    if (m_bWithoutPlugins) {
        return "NoPlugins is set";
    }
    if (m_dwLimit == 0 || IsRequired(plugin) || !IsText(ReadValue(LeftOutPlace(plugin)))) {
        return std::string();
    }
    return Format(
        "left out, since %u starts in a row ended in it; until its DLL changes, or lumctl plugins retry",
        static_cast<unsigned>(m_dwLimit));
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
