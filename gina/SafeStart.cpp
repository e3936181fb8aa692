#include "SafeStart.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "DllStamp.h"
#include "GinaNames.h"
#include "SafeStartNames.h"

namespace {

using Text = CQuietKey::Text;
using TextView = std::basic_string_view<WCHAR>;

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
        if (CQuietKey(VOLATILE_KEY).ReadNumber(INSTANCE_COUNT_VALUE) != 0) {
            return;
        }
        if (m_dwLimit != 0) {
            ReadLastStart();
        } else if (CQuietKey(START_KEY).Has(IN_PLUGIN)) {
            // What was noted before safe start was switched off says nothing of the time until it is on
            // again.
            m_bNoting = m_notes.Create(START_KEY);
            Leave();
            m_bNoting = false;
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

/// The notes stay until a plugin is entered: a start that ends before that does not count.
void CSafeStart::ReadLastStart()
{
    m_bNoting = m_notes.Create(START_KEY);
    Text stamp;
    if (!m_notes.ReadText(IN_PLUGIN, m_lastEnd) || !m_notes.ReadText(IN_PLUGIN_STAMP, stamp) ||
        stamp != GetDllStamp(m_lastEnd.c_str()))
    {
        // Another DLL by now, which is not to blame for what the old one did.
        m_lastEnd.clear();
        return;
    }
    m_dwEnded = std::clamp<DWORD>(m_notes.ReadNumber(IN_PLUGIN_COUNT), 1, m_dwLimit);
    m_bLeftOut = m_dwEnded == m_dwLimit && !IsRequired(m_lastEnd);
    CQuietKey leftOut;
    if (m_bLeftOut && leftOut.Create(LEFT_OUT_KEY)) {
        leftOut.WriteText(m_lastEnd.c_str(), stamp.c_str());
    }
}

bool CSafeStart::IsRequired(TextView plugin) const noexcept
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
    // Also when that could not be written.
    bool bLeftOut = m_bLeftOut && IsSameDll(szPlugin, m_lastEnd);
    Try([&] {
        Text stamp;
        if (bLeftOut || m_dwLimit == 0 || IsRequired(szPlugin) ||
            !CQuietKey(LEFT_OUT_KEY).ReadText(szPlugin, stamp)) {
            return;
        }
        bLeftOut = stamp == GetDllStamp(szPlugin);
        CQuietKey leftOut;
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
    Try([&] {
        const Text stamp = GetDllStamp(szPlugin);
        // If the machine ends between two of these, the stamp is not that of the plugin, or the count is
        // too small: nobody is charged with what another one did.
        m_notes.Delete(IN_PLUGIN_COUNT);
        m_notes.WriteText(IN_PLUGIN_STAMP, stamp.c_str());
        m_notes.WriteText(IN_PLUGIN, szPlugin);
        m_notes.WriteNumber(IN_PLUGIN_COUNT, IsSameDll(szPlugin, m_lastEnd) ? m_dwEnded + 1 : 1);
        m_notes.Flush();
    });
}

void CSafeStart::Leave() noexcept
{
    if (m_bNoting) {
        m_notes.Delete(IN_PLUGIN_COUNT);
        m_notes.Delete(IN_PLUGIN);
        m_notes.Delete(IN_PLUGIN_STAMP);
    }
}

void CSafeStart::LeavePlugins() noexcept
{
    if (m_bNoting) {
        Leave();
        m_notes.Flush();
    }
}
