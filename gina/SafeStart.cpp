#include "SafeStart.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "DllStamp.h"
#include "GinaNames.h"

namespace {

using Text = CQuietKey::Text;
using TextView = std::basic_string_view<WCHAR>;

constexpr WCHAR VOLATILE_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Volatile");
constexpr WCHAR START_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Start");
constexpr WCHAR LEFT_OUT_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Start\\LeftOut");

constexpr WCHAR INSTANCE_COUNT[] = TEXT("InstanceCount");
constexpr WCHAR SAFE_START[] = TEXT("SafeStart");
constexpr WCHAR REQUIRED_PLUGINS[] = TEXT("RequiredPlugins");
constexpr WCHAR NO_PLUGINS[] = TEXT("NoPlugins");
constexpr WCHAR IN_PLUGIN[] = TEXT("InPlugin");
constexpr WCHAR COUNT[] = TEXT("Count");

/// The name of a DLL as the loader sees it: without blanks around it, its directory and its extension.
TextView BareName(TextView name) noexcept
{
    constexpr TextView DLL = TEXT(".dll");
    name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
    name.remove_prefix(name.find_last_of(TEXT("\\/")) + 1);
    name = name.substr(0, name.find_last_not_of(TEXT(" .")) + 1);
    if (name.size() > DLL.size() && EqualNames(name.substr(name.size() - DLL.size()), DLL)) {
        name.remove_suffix(DLL.size());
    }
    return name;
}

bool IsSameDll(TextView left, TextView right) noexcept
{
    return EqualNames(BareName(left), BareName(right));
}

/// Runs a step. If there is no memory for it, nobody is left out.
template <typename Step>
void Try(Step step) noexcept
{
    try {
        step();
    } catch (const std::bad_alloc&) {
        return;
    }
}

} // namespace

void CSafeStart::Begin() noexcept
{
    Try([&] {
        ReadSettings();
        if (m_dwLimit != 0 && CQuietKey(VOLATILE_KEY).ReadNumber(INSTANCE_COUNT) == 0) {
            ReadLastStart();
        }
    });
}

void CSafeStart::ReadSettings()
{
    const CQuietKey settings(LUM_GINA_MTM);
    m_bNoPlugins = settings.ReadNumber(NO_PLUGINS) != 0;
    // A list that cannot be read may name anybody.
    m_bAllRequired = !settings.ReadText(REQUIRED_PLUGINS, m_required) && settings.Has(REQUIRED_PLUGINS);
    m_dwLimit = settings.ReadNumber(SAFE_START);
}

void CSafeStart::ReadLastStart()
{
    m_bNoting = m_notes.Create(START_KEY);
    m_notes.ReadText(IN_PLUGIN, m_lastEnd);
    m_dwEnded = std::min(m_notes.ReadNumber(COUNT), m_dwLimit) + 1;
    if (!m_lastEnd.empty() && m_dwEnded >= m_dwLimit && !IsRequired(m_lastEnd)) {
        CQuietKey leftOut;
        leftOut.Create(LEFT_OUT_KEY);
        leftOut.WriteText(m_lastEnd.c_str(), GetDllStamp(m_lastEnd.c_str()).c_str());
        m_lastEnd.clear();
    }
    Leave();
}

bool CSafeStart::IsRequired(std::basic_string_view<WCHAR> plugin) const noexcept
{
    TextView rest = m_required;
    while (!rest.empty()) {
        const TextView name = rest.substr(0, rest.find(','));
        if (IsSameDll(name, plugin)) {
            return true;
        }
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    }
    return m_bAllRequired;
}

bool CSafeStart::IsLeftOut(const WCHAR* szPlugin) noexcept
{
    bool bLeftOut = false;
    Try([&] {
        CQuietKey leftOut;
        Text stamp;
        if (m_dwLimit == 0 || IsRequired(szPlugin) || !CQuietKey(LEFT_OUT_KEY).ReadText(szPlugin, stamp)) {
            return;
        }
        bLeftOut = stamp == GetDllStamp(szPlugin);
        if (!bLeftOut && leftOut.Create(LEFT_OUT_KEY)) {
            leftOut.Delete(szPlugin);
        }
    });
    return bLeftOut;
}

void CSafeStart::Enter(const WCHAR* szPlugin) noexcept
{
    if (!m_bNoting) {
        return;
    }
    // In this order: if the machine ends in between, a plugin is charged with too little rather than with
    // what another one did.
    m_notes.Delete(COUNT);
    m_notes.WriteText(IN_PLUGIN, szPlugin);
    if (IsSameDll(szPlugin, m_lastEnd)) {
        m_notes.WriteNumber(COUNT, m_dwEnded);
    }
    m_notes.Flush();
}

void CSafeStart::Leave() noexcept
{
    if (!m_bNoting) {
        return;
    }
    m_notes.Delete(COUNT);
    m_notes.Delete(IN_PLUGIN);
    m_notes.Flush();
}
