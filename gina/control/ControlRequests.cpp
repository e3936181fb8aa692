#include "ControlRequests.h"

#include <cstring>

#include "LUMGina.h"
#include "LUMObject.h"
#include "RequestReader.h"

using namespace ControlProtocol;

namespace {

/// What an operation returns besides success.
struct CAnswer
{
    CGinaPluginInfo record{LUM_GINA_APP, LUM_GINA_MTM};
    DWORD dwVersion = 0;
};

/// A record that came in, with the name that came behind it. An empty name stands for none.
struct CReceivedRecord : CGinaPluginInfo
{
    CReceivedRecord(const CRequest& request, int nRecord) : CGinaPluginInfo(LUM_GINA_APP, LUM_GINA_MTM)
    {
        const CWireRecord& record = request.records[nRecord];
        m_dwSpare1 = record.dwSpare1;
        m_dwWlxVersion = record.dwWlxVersion;
        m_dwLUMVersion = record.dwLUMVersion;
        m_dwSpare2 = record.dwSpare2;
        const WCHAR* szName = request.szNames[nRecord];
        if (*szName != 0 && !SetGinaDLL(szName)) {
            throw CMemAllocException(LUM_GINA_ORIGIN, TEXT("m_szGinaDLL"));
        }
    }
};

bool QueryPlugin(CLUMObject& object, const CRequest& request)
{
    CReceivedRecord passedOn(request, 0);
    const CReceivedRecord target(request, 1);
    return object.LUMQueryPlugin(&passedOn, &target, request.dwNumbers[0], request.dwNumbers[1],
                                 request.dwNumbers[2]);
}

bool CarryOut(const CControlTargets& targets, const CRequest& request, CAnswer& answer)
{
    CLUMObject& object = targets.object;
    CLUMGina& gina = targets.gina;
    const WCHAR* szName = request.szNames[0];
    switch (request.byCode) {
    case LUM_DECREASE_PRIORITY:
        return object.LUMDecreasePriority(CReceivedRecord(request, 0));
    case LUM_INCREASE_PRIORITY:
        return object.LUMIncreasePriority(CReceivedRecord(request, 0));
    case LUM_GET_PASSTHROUGH_GINA:
        return object.LUMGetPassthroughGina(answer.record);
    case LUM_IS_GINA_IN_CHAINING_LIST:
        return object.LUMIsGinaInChainingList(szName);
    case LUM_IS_GINA_IN_PLUGIN_LIST:
        return object.LUMIsGinaInPluginList(szName);
    case LUM_QUERY_PLUGIN:
        return QueryPlugin(object, request);
    case LUM_QUERY_PLUGIN_INFO:
        return object.LUMQueryPluginInfo(szName, answer.record);
    case LUM_ENABLE_GINA:
        return object.LUMEnableGina(request.bFlag);
    case LUM_REMOVE_PLUGIN:
        return request.bFlag ? gina.LUMRemovePluginDynamic(szName) : object.LUMRemovePlugin(szName);
    case LUM_ADD_PLUGIN:
        return request.bFlag ? gina.LUMAddPluginDynamic(szName) : object.LUMAddPlugin(szName);
    case LUM_REMOVE_GINA:
        return object.LUMRemoveGina(szName);
    case LUM_VERIFY_LUM_GINA:
        return true;
    case LUM_ENABLE_ACTIVE_REG:
        return gina.LUMEnableActiveRegistryMonitoring(request.bFlag);
    case LUM_GET_LUM_GINA_VERSION:
        return gina.LUMGetLUMGinaVersion(&answer.dwVersion);
    }
    return false;
}

/// Reads the fields of a request, and not one byte more.
CRequest ReadFields(CControlChannel& channel, BYTE byCode)
{
    BYTE bytes[LONGEST_REQUEST] = {byCode};
    std::size_t cbRead = sizeof(byCode);
    for (;;) {
        const auto reading = ReadRequest({bytes, cbRead});
        if (const auto* pRequest = std::get_if<CRequest>(&reading)) {
            return *pRequest;
        }
        const CRefusal& refusal = *std::get_if<CRefusal>(&reading);
        if (refusal.reason != CRefusal::Reason::Unfinished) {
            throw CMemAllocException(LUM_GINA_ORIGIN, refusal.szVariable);
        }
        channel.Read(bytes + cbRead, static_cast<DWORD>(refusal.cbMissing));
        cbRead += refusal.cbMissing;
    }
}

/// A reply goes out with one write.
class CReplyBytes
{
public:
    template <typename Value>
    void Append(const Value& value) noexcept
    {
        std::memcpy(m_bytes + m_cbUsed, &value, sizeof(value));
        m_cbUsed += sizeof(value);
    }
    void WriteTo(CControlChannel& channel) const { channel.Write(m_bytes, m_cbUsed); }

private:
    BYTE m_bytes[sizeof(BYTE) + sizeof(CWireRecord)];
    DWORD m_cbUsed = 0;
};

/// Leaves the pointers 0: they mean nothing in another process.
CWireRecord ToWire(const CGinaPluginInfo& info) noexcept
{
    CWireRecord record = {};
    record.dwSpare1 = info.m_dwSpare1;
    record.dwWlxVersion = info.m_dwWlxVersion;
    record.dwLUMVersion = info.m_dwLUMVersion;
    record.dwSpare2 = info.m_dwSpare2;
    return record;
}

void WriteReply(CControlChannel& channel, Reply reply, bool bDone, const CAnswer& answer)
{
    CReplyBytes bytes;
    if (reply == Reply::Version) {
        bytes.Append(answer.dwVersion);
    } else {
        if (!bDone || reply != Reply::RecordAlone) {
            bytes.Append(bDone ? REPLY_SUCCESS : REPLY_FAILURE);
        }
        if (bDone && reply != Reply::Byte) {
            bytes.Append(ToWire(answer.record));
        }
    }
    bytes.WriteTo(channel);
}

} // namespace

void ServeRequest(CControlChannel& channel, const CControlTargets& targets)
{
    BYTE byCode = 0;
    channel.Read(&byCode, sizeof(byCode));
    const bool bImpersonated = channel.Impersonate();
    CAnswer answer;
    const CRequestForm* pForm = FindRequestForm(byCode);
    if (pForm == nullptr) {
        WriteReply(channel, Reply::Byte, false, answer);
        return;
    }
    CTextNotification(LUM_GINA_ORIGIN, pForm->szReceived);
    const CRequest request = ReadFields(channel, byCode);
    const bool bAllowed = bImpersonated || pForm->caller == Caller::Anyone;
    const bool bDone = bAllowed && CarryOut(targets, request, answer);
    WriteReply(channel, pForm->reply, bDone, answer);
}
