#include "OfflineChain.h"

#include <iterator>

#include "CommandError.h"
#include "chaining/KnownGinas.h"

namespace {

/// A registry without this key is none, and one that is closed would look like a machine without a chain.
const CMessageOrigin& Accessible(const CMessageOrigin& origin)
{
    HKEY hKey = nullptr;
    const LONG lResult = RegOpenKeyExW(HKEY_LOCAL_MACHINE, WINLOGON_KEY, 0, KEY_ALL_ACCESS, &hKey);
    if (lResult == ERROR_FILE_NOT_FOUND) {
        throw CCommandError("the registry has no key " + DescribeKey(WinlogonPlace()));
    }
    if (lResult != ERROR_SUCCESS) {
        ReadValue(WinlogonPlace());
        throw CCommandError("cannot open " + DescribeKey(WinlogonPlace()));
    }
    RegCloseKey(hKey);
    return origin;
}

} // namespace

COfflineChain::COfflineChain()
    : m_winlogon(Accessible(LUM_GINA_ORIGIN).szAPP, LUM_GINA_MTM),
      m_configuration(LUM_GINA_APP, LUM_GINA_MTM, true),
      m_manager(LUM_GINA_APP, LUM_GINA_MTM, &m_configuration, &m_winlogon, true)
{
}

bool COfflineChain::Learn(const WideText& gina, const WideText& record)
{
    try {
        Append(GetKnownGinas(),
               MakeOwned<CGinaChainingInfoObject>(LUM_GINA_APP, LUM_GINA_MTM, gina.c_str(), record.c_str()));
        return true;
    } catch (CMessage& message) {
        message.WriteIfUnwritten();
        return false;
    }
}

CChainValues COfflineChain::ReadValues()
{
    CChainValues values;
    const auto add = [&](const CValuePlace& place) { values.Set(place, ReadValue(place)); };
    add(WinlogonPlace());
    std::size_t nKnown = 0;
    for (const auto* pNode = GetKnownGinas().m_pHead; pNode != nullptr; pNode = pNode->pNext) {
        const CGinaChainingInfoObject& info = *pNode->m_pItem;
        if (++nKnown > std::size(KNOWN_GINAS)) {
            add(RecordPlace(WideText(info.m_szGinaDLL)));
        }
        if (const std::optional<CValuePlace> place = PassthroughPlace(info); place) {
            add(*place);
        }
    }
    return values;
}

bool COfflineChain::IsHostInService()
{
    const CValueData data = ReadValue({WideText(LUM_GINA_MTM) + TEXT("\\Volatile"), TEXT("Enabled")});
    return data && data->dwType == REG_DWORD && !data->bytes.empty() && data->bytes[0] != 0;
}

CValuePlace WinlogonPlace()
{
    return {WINLOGON_KEY, WINLOGON_GINA_DLL};
}

CValuePlace RecordPlace(const WideText& gina)
{
    return {LUM_GINA_MTM, gina};
}

std::optional<CValuePlace> PassthroughPlace(const CGinaChainingInfoObject& info)
{
    if (info.m_bTerminator || *info.m_szSubKey == 0 || *info.m_szOldGinaDLLKey == 0) {
        return std::nullopt;
    }
    return CValuePlace{WideText(info.m_szSubKey), WideText(info.m_szOldGinaDLLKey)};
}
