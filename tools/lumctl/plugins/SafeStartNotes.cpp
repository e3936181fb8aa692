#include "SafeStartNotes.h"

#include <algorithm>

#include "GinaNames.h"
#include "PluginDll.h"
#include "PluginList.h"

namespace {

CValuePlace OwnPlace(const WCHAR* szValue)
{
    return {LUM_GINA_MTM, szValue};
}

CValuePlace NotePlace(const WCHAR* szValue)
{
    return {WideText(LUM_GINA_MTM) + TEXT("\\Start"), szValue};
}

CValuePlace LeftOutPlace(const WideText& plugin)
{
    return {WideText(LUM_GINA_MTM) + TEXT("\\Start\\LeftOut"), plugin};
}

} // namespace

CSafeStartNotes::CSafeStartNotes()
    : m_bWithoutPlugins(NumberOf(ReadValue(OwnPlace(TEXT("NoPlugins")))) != 0),
      m_dwLimit(NumberOf(ReadValue(OwnPlace(TEXT("SafeStart"))))),
      m_required(ReadValue(OwnPlace(TEXT("RequiredPlugins")))),
      m_inPlugin(TextOf(ReadValue(NotePlace(TEXT("InPlugin")))))
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
    if (IsSameDll(TextOf(ReadValue(NotePlace(TEXT("InPlugin")))), plugin)) {
        clear(NotePlace(TEXT("Count")));
        clear(NotePlace(TEXT("InPlugin")));
    }
}
