#include "ControlClient.h"

#include <cstring>
#include <utility>

#include "ControlRequest.h"

using namespace ControlProtocol;

namespace {

ControlStatus ReadReplyByte(CControlConnection& connection, BYTE& byReply)
{
    const ControlStatus status = connection.Receive(&byReply, sizeof(byReply));
    if (status != ControlStatus::Success || byReply == REPLY_SUCCESS) {
        return status;
    }
    return byReply == REPLY_FAILURE ? ControlStatus::Refused : ControlStatus::BadAnswer;
}

ControlStatus ReadReply(CControlConnection& connection)
{
    BYTE byReply = REPLY_FAILURE;
    return ReadReplyByte(connection, byReply);
}

/// Reads the record alone, or the failure byte. A record begins with the first byte of a pointer, which is 0.
ControlStatus ReadBareRecord(CControlConnection& connection, CWireRecord& record)
{
    BYTE bytes[sizeof(CWireRecord)] = {};
    ControlStatus status = ReadReplyByte(connection, bytes[0]);
    if (status == ControlStatus::Success) {
        status = connection.Receive(bytes + 1, sizeof(bytes) - 1);
        std::memcpy(&record, bytes, sizeof(record));
    }
    return status;
}

} // namespace

CControlClient::CControlClient(CControlWait wait, const Text& machine) : m_Wait(std::move(wait))
{
    if (!machine.empty()) {
        // The dot of the name stands for this machine.
        m_pipe.replace(m_pipe.find('.'), 1, machine);
    }
}

template <typename ReadReply>
ControlStatus CControlClient::Exchange(const CControlRequest& request, ReadReply readReply)
{
    m_dwError = ERROR_SUCCESS;
    m_bConnected = false;
    if (!request.IsValid()) {
        return ControlStatus::BadName;
    }
    CControlConnection connection(m_Wait);
    ControlStatus status = connection.Open(m_pipe.c_str());
    m_bConnected = status == ControlStatus::Success;
    if (m_bConnected) {
        const auto& bytes = request.GetBytes();
        status = connection.Send(bytes.data(), static_cast<DWORD>(bytes.size()));
    }
    if (status == ControlStatus::Success) {
        status = readReply(connection);
    }
    m_dwError = connection.GetSystemError();
    return status;
}

ControlStatus CControlClient::Ask(const CControlRequest& request)
{
    return Exchange(request, ReadReply);
}

ControlStatus CControlClient::MovePlugin(BYTE byCode, const Text& plugin)
{
    return Ask(CControlRequest(byCode).Record({}).CountedName(plugin));
}

ControlStatus CControlClient::Verify()
{
    return Ask(CControlRequest(LUM_VERIFY_LUM_GINA));
}

ControlStatus CControlClient::GetVersion(DWORD& dwVersion)
{
    return Exchange(CControlRequest(LUM_GET_LUM_GINA_VERSION), [&](CControlConnection& connection) {
        return connection.Receive(&dwVersion, sizeof(dwVersion));
    });
}

ControlStatus CControlClient::IsGinaInChainingList(const Text& ginaDLL)
{
    return Ask(CControlRequest(LUM_IS_GINA_IN_CHAINING_LIST).CountedName(ginaDLL));
}

ControlStatus CControlClient::IsGinaInPluginList(const Text& plugin)
{
    return Ask(CControlRequest(LUM_IS_GINA_IN_PLUGIN_LIST).CountedName(plugin));
}

ControlStatus CControlClient::GetPassthroughGina(CWireRecord& record)
{
    return Exchange(CControlRequest(LUM_GET_PASSTHROUGH_GINA),
                    [&](CControlConnection& connection) { return ReadBareRecord(connection, record); });
}

ControlStatus CControlClient::QueryPluginInfo(const Text& ginaDLL, CWireRecord& record)
{
    const auto readReply = [&](CControlConnection& connection) {
        const ControlStatus status = ReadReply(connection);
        return status == ControlStatus::Success ? connection.Receive(&record, sizeof(record)) : status;
    };
    return Exchange(CControlRequest(LUM_QUERY_PLUGIN_INFO).FixedName(ginaDLL), readReply);
}

ControlStatus CControlClient::QueryPlugin(const CControlQuery& query)
{
    return Ask(CControlRequest(LUM_QUERY_PLUGIN)
                   .Record(query.record)
                   .Record({})
                   .Number(query.dwParam1)
                   .Number(query.dwParam2)
                   .Number(query.dwParam3)
                   .CountedName(query.name)
                   .CountedName(query.target));
}

ControlStatus CControlClient::IncreasePriority(const Text& plugin)
{
    return MovePlugin(LUM_INCREASE_PRIORITY, plugin);
}

ControlStatus CControlClient::DecreasePriority(const Text& plugin)
{
    return MovePlugin(LUM_DECREASE_PRIORITY, plugin);
}

ControlStatus CControlClient::AddPlugin(const Text& plugin, bool bDynamic)
{
    return Ask(CControlRequest(LUM_ADD_PLUGIN).CountedName(plugin).Flag(bDynamic));
}

ControlStatus CControlClient::RemovePlugin(const Text& plugin, bool bDynamic)
{
    return Ask(CControlRequest(LUM_REMOVE_PLUGIN).CountedName(plugin).Flag(bDynamic));
}

ControlStatus CControlClient::EnableGina(bool bEnable)
{
    return Ask(CControlRequest(LUM_ENABLE_GINA).Flag(bEnable));
}

ControlStatus CControlClient::RemoveGina(const Text& ginaDLL)
{
    return Ask(CControlRequest(LUM_REMOVE_GINA).FixedName(ginaDLL));
}

ControlStatus CControlClient::EnableActiveRegistryMonitoring(bool bEnable)
{
    return Ask(CControlRequest(LUM_ENABLE_ACTIVE_REG).Flag(bEnable));
}
