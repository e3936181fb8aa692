#include "ControlRequests.h"

#include <cstring>
#include <iterator>

#include "ControlProtocol.h"
#include "LUMGina.h"
#include "LUMObject.h"
#include "RequestFields.h"

using namespace ControlProtocol;

namespace {

/// What an operation has to say beyond whether it succeeded.
struct CAnswer
{
    CGinaPluginInfo record{LUM_GINA_APP, LUM_GINA_MTM};
    DWORD dwVersion = 0;
};

/// What the client gets. A failure is the reply byte everywhere but in Version.
enum class Reply
{
    Byte,
    RecordAlone,
    ByteAndRecord,
    Version,
};

/// Whom a request is carried out for.
enum class Caller
{
    Impersonated,
    Anyone,
};

/// How a request is served: reads the fields, and carries it out if bServe says so.
using ServeFunction = bool(CControlChannel& channel, const CControlTargets& targets, bool bServe,
                           CAnswer& answer);

/// One with fields of a class, by a function that is given them.
template <typename Fields, bool (*pfnCarryOut)(const CControlTargets&, const Fields&, CAnswer&)>
bool Serve(CControlChannel& channel, const CControlTargets& targets, bool bServe, CAnswer& answer)
{
    const Fields fields(channel);
    return bServe && pfnCarryOut(targets, fields, answer);
}

/// One with a single field, which is the argument of a control operation.
template <typename Field, auto pfnOperation>
bool ServeOperation(CControlChannel& channel, const CControlTargets& targets, bool bServe, CAnswer&)
{
    const Field field(channel);
    return bServe && (targets.object.*pfnOperation)(field);
}

bool AddPlugin(const CControlTargets& targets, const CPluginChange& change, CAnswer&)
{
    return change.bDynamic ? targets.gina.LUMAddPluginDynamic(change.szPlugin)
                           : targets.object.LUMAddPlugin(change.szPlugin);
}

bool RemovePlugin(const CControlTargets& targets, const CPluginChange& change, CAnswer&)
{
    return change.bDynamic ? targets.gina.LUMRemovePluginDynamic(change.szPlugin)
                           : targets.object.LUMRemovePlugin(change.szPlugin);
}

bool QueryPlugin(const CControlTargets& targets, const CPluginQuery& query, CAnswer&)
{
    return targets.object.LUMQueryPlugin(query.passedOn.Get(), query.target.Get(), query.param1, query.param2,
                                         query.param3);
}

bool QueryPluginInfo(const CControlTargets& targets, const CFixedName& szGinaDLL, CAnswer& answer)
{
    return targets.object.LUMQueryPluginInfo(szGinaDLL, answer.record);
}

bool GetPassthroughGina(const CControlTargets& targets, const CNoFields&, CAnswer& answer)
{
    return targets.object.LUMGetPassthroughGina(answer.record);
}

bool Verify(const CControlTargets&, const CNoFields&, CAnswer&)
{
    return true;
}

bool EnableMonitoring(const CControlTargets& targets, const CFlag& bEnable, CAnswer&)
{
    return targets.gina.LUMEnableActiveRegistryMonitoring(bEnable);
}

bool GetVersion(const CControlTargets& targets, const CNoFields&, CAnswer& answer)
{
    return targets.gina.LUMGetLUMGinaVersion(&answer.dwVersion);
}

struct CRequest
{
    BYTE byCode;
    const WCHAR* szReceived;
    Caller caller;
    Reply reply;
    ServeFunction* pfnServe;
};

#define REQUEST(NAME, CALLER, REPLY, ...)                                                                    \
    CRequest                                                                                                 \
    {                                                                                                        \
        NAME, TEXT("Received request: ") TEXT(#NAME), Caller::CALLER, Reply::REPLY, __VA_ARGS__              \
    }

// clang-format off
constexpr CRequest REQUESTS[] = {
    REQUEST(LUM_DECREASE_PRIORITY, Impersonated, Byte, ServeOperation<CNamedRecord, &CLUMObject::LUMDecreasePriority>),
    REQUEST(LUM_INCREASE_PRIORITY, Impersonated, Byte, ServeOperation<CNamedRecord, &CLUMObject::LUMIncreasePriority>),
    REQUEST(LUM_GET_PASSTHROUGH_GINA, Impersonated, RecordAlone, Serve<CNoFields, GetPassthroughGina>),
    REQUEST(LUM_IS_GINA_IN_CHAINING_LIST, Impersonated, Byte, ServeOperation<CGinaName, &CLUMObject::LUMIsGinaInChainingList>),
    REQUEST(LUM_IS_GINA_IN_PLUGIN_LIST, Impersonated, Byte, ServeOperation<CPluginName, &CLUMObject::LUMIsGinaInPluginList>),
    REQUEST(LUM_QUERY_PLUGIN, Impersonated, Byte, Serve<CPluginQuery, QueryPlugin>),
    REQUEST(LUM_QUERY_PLUGIN_INFO, Impersonated, ByteAndRecord, Serve<CFixedName, QueryPluginInfo>),
    REQUEST(LUM_ENABLE_GINA, Impersonated, Byte, ServeOperation<CFlag, &CLUMObject::LUMEnableGina>),
    REQUEST(LUM_REMOVE_PLUGIN, Impersonated, Byte, Serve<CPluginChange, RemovePlugin>),
    REQUEST(LUM_ADD_PLUGIN, Impersonated, Byte, Serve<CPluginChange, AddPlugin>),
    REQUEST(LUM_REMOVE_GINA, Impersonated, Byte, ServeOperation<CFixedName, &CLUMObject::LUMRemoveGina>),
    REQUEST(LUM_VERIFY_LUM_GINA, Anyone, Byte, Serve<CNoFields, Verify>),
    REQUEST(LUM_ENABLE_ACTIVE_REG, Impersonated, Byte, Serve<CFlag, EnableMonitoring>),
    REQUEST(LUM_GET_LUM_GINA_VERSION, Anyone, Version, Serve<CNoFields, GetVersion>),
};
// clang-format on
#undef REQUEST

#define COUNT_REQUEST(NAME, CODE) +1
static_assert(std::size(REQUESTS) == LUM_CONTROL_REQUESTS(COUNT_REQUEST));
#undef COUNT_REQUEST

const CRequest* FindRequest(BYTE byCode) noexcept
{
    for (const CRequest& request : REQUESTS) {
        if (request.byCode == byCode) {
            return &request;
        }
    }
    return nullptr;
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

/// The strings of the record stay here: their addresses are of no use to anybody else.
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
    const CRequest* pRequest = FindRequest(byCode);
    if (pRequest == nullptr) {
        channel.Write(&REPLY_FAILURE, sizeof(REPLY_FAILURE));
        return;
    }
    CTextNotification(LUM_GINA_ORIGIN, pRequest->szReceived);
    CAnswer answer;
    const bool bServe = bImpersonated || pRequest->caller == Caller::Anyone;
    const bool bDone = pRequest->pfnServe(channel, targets, bServe, answer);
    WriteReply(channel, pRequest->reply, bDone, answer);
}
