#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "ControlProtocol.h"
#include "Exceptions.h"
#include "LUMGina.h"
#include "control/ControlRequests.h"
#include "control/RequestReader.h"
#include "machine/MachineRegistry.h"

// Serves requests that are made of arbitrary bytes, with a host behind them.

using namespace ControlProtocol;

namespace {

/// A client that sends the bytes and goes.
class CBytesChannel : public CControlChannel
{
public:
    CBytesChannel(const std::uint8_t* pData, std::size_t cbData, bool bImpersonate) noexcept
        : m_pNext(pData), m_pEnd(pData + cbData), m_bImpersonate(bImpersonate)
    {
    }

    void Read(void* pBuffer, DWORD cbBuffer) override
    {
        if (static_cast<std::size_t>(m_pEnd - m_pNext) < cbBuffer) {
            throw CReadFileException(LUM_GINA_ORIGIN, ERROR_BROKEN_PIPE);
        }
        std::memcpy(pBuffer, m_pNext, cbBuffer);
        m_pNext += cbBuffer;
    }
    void Write(const void* pBuffer, DWORD cbBuffer) override
    {
        const BYTE* pBytes = static_cast<const BYTE*>(pBuffer);
        m_reply.insert(m_reply.end(), pBytes, pBytes + cbBuffer);
    }
    bool Impersonate() noexcept override { return m_bImpersonate; }

    const std::vector<BYTE>& GetReply() const noexcept { return m_reply; }

private:
    const std::uint8_t* m_pNext;
    const std::uint8_t* const m_pEnd;
    const bool m_bImpersonate;
    std::vector<BYTE> m_reply;
};

void SetOwnValue(const WCHAR* szValue, const WCHAR* szText)
{
    HKEY hKey = nullptr;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, LUM_GINA_MTM, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &hKey, nullptr);
    const std::size_t cchText = std::char_traits<WCHAR>::length(szText) + 1;
    RegSetValueExW(hKey, szValue, 0, REG_SZ, reinterpret_cast<const BYTE*>(szText),
                   static_cast<DWORD>(cchText * sizeof(WCHAR)));
    RegCloseKey(hKey);
}

/// Hosts come and go; loading their DLLs each time would take most of the time.
void KeepDLLsLoaded()
{
    for (const WCHAR* szDLL :
         {TEXT("standin_gina.dll"), TEXT("test_plugin_a.dll"), TEXT("test_plugin_b.dll")}) {
        static_cast<void>(LoadLibraryW(szDLL));
    }
}

std::unique_ptr<CLUMGina> MakeHost()
{
    static const bool bLoaded = (KeepDLLsLoaded(), true);
    static_cast<void>(bLoaded);
    MachineRegistry::Clear();
    SetOwnValue(TEXT("GinaDLL"), TEXT("standin_gina.dll"));
    SetOwnValue(TEXT("Plugins"), TEXT("test_plugin_a.dll,test_plugin_b.dll"));
    auto pHost = std::make_unique<CLUMGina>(reinterpret_cast<HINSTANCE>(0x1000));
    DWORD dwVersion = 0;
    if (!pHost->LUMWlxNegotiate(WLX_VERSION_1_4, &dwVersion) || pHost->m_pGinaObjectList->m_dwCount != 3) {
        std::abort();
    }
    return pHost;
}

/// The reply to one run of the bytes; empty when there was none.
std::vector<BYTE> Serve(CLUMGina& host, const std::uint8_t* pData, std::size_t cbData, bool bImpersonate)
{
    CBytesChannel channel(pData, cbData, bImpersonate);
    try {
        ServeRequest(channel, {*host.m_pLUMObject, host});
    } catch (const CMessage&) {
        return {};
    }
    return channel.GetReply();
}

/// Whether it leaves the host as it was.
bool IsQuestion(BYTE byCode)
{
    return (byCode >= LUM_GET_PASSTHROUGH_GINA && byCode <= LUM_QUERY_PLUGIN_INFO) ||
           byCode == LUM_VERIFY_LUM_GINA || byCode == LUM_GET_LUM_GINA_VERSION;
}

bool IsFailure(const std::vector<BYTE>& reply)
{
    return reply == std::vector<BYTE>{REPLY_FAILURE};
}

/// A record behind nBefore bytes, with nothing where its pointers are.
bool IsRecord(const std::vector<BYTE>& reply, std::size_t nBefore)
{
    CWireRecord record = {};
    if (reply.size() != nBefore + sizeof(record)) {
        return false;
    }
    std::memcpy(&record, reply.data() + nBefore, sizeof(record));
    return record.szAPP == 0 && record.szMTM == 0 && record.szFriendlyName == 0 && record.szGinaDLL == 0;
}

bool IsReplyTo(const CRequestForm* pForm, const std::vector<BYTE>& reply)
{
    const Reply kind = pForm != nullptr ? pForm->reply : Reply::Byte;
    if (kind == Reply::Version) {
        return reply.size() == sizeof(DWORD);
    }
    if (kind == Reply::RecordAlone) {
        return IsFailure(reply) || IsRecord(reply, 0);
    }
    if (kind == Reply::ByteAndRecord) {
        return IsFailure(reply) || (IsRecord(reply, 1) && reply[0] == REPLY_SUCCESS);
    }
    return IsFailure(reply) || reply == std::vector<BYTE>{REPLY_SUCCESS};
}

void Require(bool bCondition)
{
    if (!bCondition) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t cbData)
{
    static std::unique_ptr<CLUMGina> pHost = MakeHost();
    const std::vector<BYTE> refused = Serve(*pHost, pData, cbData, false);
    const std::vector<BYTE> reply = Serve(*pHost, pData, cbData, true);
    Require(refused.empty() == reply.empty());
    if (reply.empty()) {
        return 0;
    }
    const CRequestForm* pForm = FindRequestForm(pData[0]);
    Require(IsReplyTo(pForm, reply));
    const bool bForAnyone = pForm != nullptr && pForm->caller == Caller::Anyone;
    Require(bForAnyone ? refused == reply : IsFailure(refused));
    if (!IsQuestion(pData[0]) && reply[0] == REPLY_SUCCESS) {
        // Each input is to stand for itself.
        pHost.reset();
        pHost = MakeHost();
    }
    return 0;
}
