#pragma once

#include <string>

#include "ControlConnection.h"
#include "ControlProtocol.h"

class CControlRequest;

/// What a plugin is asked with LUM_QUERY_PLUGIN.
struct CControlQuery
{
    /// The plugin that answers.
    std::basic_string<WCHAR> target;
    /// The record that it is handed. Its pointers are sent as 0.
    ControlProtocol::CWireRecord record = {};
    /// The DLL name of that record; may be empty.
    std::basic_string<WCHAR> name;
    DWORD dwParam1 = 0;
    DWORD dwParam2 = 0;
    DWORD dwParam3 = 0;
};

/// The requests of the control channel, one function each. Every call opens a connection of its own and waits
/// for its turn: the server takes one request a period.
///
/// Names are those of DLLs, of at most 259 characters, without a zero. One thread at a time may use a client.
class CControlClient
{
public:
    using Text = std::basic_string<WCHAR>;

    /// machine: the name of another machine, whose host is to be asked; empty for this one.
    explicit CControlClient(CControlWait wait = {}, const Text& machine = {});

    /// Whether a server is there.
    ControlStatus Verify();
    /// The version of the library: its minor version or build in the high 16 bits, its revision in the low
    /// ones; 0 when the server cannot tell.
    ControlStatus GetVersion(DWORD& dwVersion);

    /// Questions about names: Success is yes. Refused is no, or that the server could not find out.
    ControlStatus IsGinaInChainingList(const Text& ginaDLL);
    /// Loaded plugins, and the passthrough GINA.
    ControlStatus IsGinaInPluginList(const Text& plugin);

    /// The record of the passthrough GINA, and of any plugin or GINA that is loaded. Records come without
    /// their names.
    ControlStatus GetPassthroughGina(ControlProtocol::CWireRecord& record);
    ControlStatus QueryPluginInfo(const Text& ginaDLL, ControlProtocol::CWireRecord& record);
    /// Success or Refused is the plugin's answer. Refused also means that it is not loaded.
    ControlStatus QueryPlugin(const CControlQuery& query);

    /// Moves a loaded plugin one place towards the front, or the end, of the calling order, until the next
    /// start of Winlogon.
    ControlStatus IncreasePriority(const Text& plugin);
    ControlStatus DecreasePriority(const Text& plugin);

    /// Changes the configuration. With bDynamic, loads or unloads the plugin at once as well.
    ControlStatus AddPlugin(const Text& plugin, bool bDynamic);
    ControlStatus RemovePlugin(const Text& plugin, bool bDynamic);

    /// Puts the library into the chain of GINAs, or takes it out; takes another GINA out.
    ControlStatus EnableGina(bool bEnable);
    ControlStatus RemoveGina(const Text& ginaDLL);
    /// Starts or stops the registry monitor.
    ControlStatus EnableActiveRegistryMonitoring(bool bEnable);

    /// The Windows error code behind the last status, ERROR_SUCCESS if there was none.
    DWORD GetSystemError() const noexcept { return m_dwError; }
    /// Whether the server may have got the last request, however that ended.
    bool MayHaveBeenSent() const noexcept { return m_bConnected; }

private:
    template <typename ReadReply>
    ControlStatus Exchange(const CControlRequest& request, ReadReply readReply);
    ControlStatus Ask(const CControlRequest& request);
    ControlStatus MovePlugin(BYTE byCode, const Text& plugin);

    const CControlWait m_Wait;
    Text m_pipe = ControlProtocol::PIPE_NAME;
    DWORD m_dwError = ERROR_SUCCESS;
    bool m_bConnected = false;
};
