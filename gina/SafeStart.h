#pragma once

#include <string_view>

#include "QuietKey.h"

/// Safe start: a plugin that several starts of the machine in a row ended in is left out of the next one, so
/// that people can log on again. Off unless SafeStart is set.
///
/// Values of the own key, for the administrator:
///
///     SafeStart        REG_DWORD  starts in a row that may end in the same plugin; missing or 0: off
///     RequiredPlugins  REG_SZ     plugins that safe start never leaves out, separated by ","
///     NoPlugins        REG_DWORD  1: no plugin is loaded, whatever the other values say
///
/// Values of its subkey Start, which are the host's own notes:
///
///     InPlugin         REG_SZ     the plugin that is being loaded, negotiated with or initialised
///     Stamp            REG_SZ     size and time of its DLL
///     Count            REG_DWORD  how many starts in a row have ended in it, if this one does
///     LeftOut\NAME     REG_SZ     a plugin that is left out: size and time of its DLL when that began
///
/// A note is on the disk before the plugin is entered, so whatever ends the start leaves it there: a hang,
/// the end of Winlogon, a power cut. Notes that cannot be written do not hold up the start. Only the
/// machine's first host makes notes; those of later sessions leave out the same plugins.
///
/// Runs on Winlogon's thread. Nothing is ever thrown.
class CSafeStart
{
public:
    /// Reads the settings, and draws the conclusion from the last start. Before any plugin is loaded.
    void Begin() noexcept;

    bool IsWithoutPlugins() const noexcept { return m_bNoPlugins; }

    /// A plugin that is left out. If its DLL has another size or time now, it is not any more.
    bool IsLeftOut(const WCHAR* szPlugin) noexcept;

    /// Notes that the host is about to enter a plugin.
    void Enter(const WCHAR* szPlugin) noexcept;
    /// Notes that the host is back. The note comes to the disk by itself, some seconds later.
    void Leave() noexcept;
    /// The same, at once: before something is entered that is no plugin, and may end the start as well.
    void LeavePlugins() noexcept;

private:
    using Text = CQuietKey::Text;

    void ReadSettings();
    void ReadLastStart();
    bool IsRequired(std::basic_string_view<WCHAR> plugin) const noexcept;

    bool m_bNoPlugins = false;
    /// 0 when safe start is off.
    DWORD m_dwLimit = 0;
    bool m_bAllRequired = false;
    Text m_required;

    /// Open while this host makes notes.
    bool m_bNoting = false;
    CQuietKey m_notes;
    /// Where the last start ended, and how many in a row.
    Text m_lastEnd;
    DWORD m_dwEnded = 0;
    /// Whether that was once too often.
    bool m_bLeftOut = false;
};
