#include "OfflineChain.h"

#include <algorithm>

#include "CommandError.h"
#include "GinaNames.h"
#include "MachineScope.h"
#include "Message.h"
#include "chaining/KnownGinas.h"
#include "machine/DllFile.h"
#include "machine/OpenKey.h"

COfflineChain::COfflineChain()
{
    RequireWinlogonKey();
}

void COfflineChain::RequireWinlogonKey()
{
    if (!HasWinlogonKey()) {
        throw CCommandError("the registry has no key " + DescribeKey(WinlogonPlace()));
    }
}

bool COfflineChain::HasWinlogonKey()
{
    COpenKey key;
    const LONG lResult = RegOpenKeyExW(HKEY_LOCAL_MACHINE, CMachineScope::Resolve(WINLOGON_KEY).c_str(), 0,
                                       KEY_ALL_ACCESS, &key.m_hKey);
    if (lResult == ERROR_SUCCESS) {
        return true;
    }
    if (lResult != ERROR_FILE_NOT_FOUND) {
        ReadValue(WinlogonPlace());
        throw CCommandError("cannot open " + DescribeKey(WinlogonPlace()));
    }
    return false;
}

bool COfflineChain::HasOwnKey()
{
    COpenKey key;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, CMachineScope::Resolve(LUM_GINA_MTM).c_str(), 0, KEY_READ,
                         &key.m_hKey) == ERROR_SUCCESS;
}

const CChainingRecord* COfflineChain::Find(const WCHAR* szGinaDLL) const
{
    const CChainingRecord* pRecord = FindInTable(szGinaDLL);
    for (const CLearned& learned : m_learned) {
        if (pRecord == nullptr && EqualNames(learned.gina.c_str(), szGinaDLL)) {
            pRecord = &learned.record;
        }
    }
    return pRecord;
}

std::optional<CChainingRecord> COfflineChain::Know(const WCHAR* szGinaDLL)
{
    if (Find(szGinaDLL) == nullptr) {
        Learn(szGinaDLL, TextOf(ReadValue(RecordPlace(szGinaDLL))));
    }
    const CChainingRecord* pRecord = Find(szGinaDLL);
    return pRecord != nullptr ? std::optional(*pRecord) : std::nullopt;
}

void COfflineChain::Learn(const WideText& gina, const WideText& record)
{
    if (Find(gina.c_str()) != nullptr) {
        return;
    }
    CLearned& learned = m_learned.emplace_back(CLearned{gina, record, {}});
    if (const auto parsed = ParseChainingRecord(learned.text); parsed) {
        learned.record = *parsed;
    } else {
        m_learned.pop_back();
    }
}

CChainValues COfflineChain::ReadValues()
{
    CChainValues values;
    const auto add = [&](const std::optional<CValuePlace>& place) {
        if (place) {
            values.Set(*place, ReadValue(*place));
        }
    };
    add(WinlogonPlace());
    // This learns the chaining records of the chain.
    Follow(values);
    for (const CKnownGina& known : KNOWN_GINAS) {
        add(PassthroughPlace(known.record));
    }
    for (const CLearned& learned : m_learned) {
        add(RecordPlace(learned.gina));
        add(PassthroughPlace(learned.record));
    }
    return values;
}

CChain COfflineChain::Follow(const CChainValues& values)
{
    const auto load = [this](const WideText& name) {
        // A chaining record is found by the name as it stands.
        if (const WideText file = LoadedName(name); file != name && !Know(name.c_str())) {
            m_spellings.push_back(name);
            return file;
        }
        return name;
    };
    const auto read = [&](const CChainingRecord& record) {
        const std::optional<CValuePlace> place = PassthroughPlace(record);
        return place ? load(TextOf(Read(values, *place))) : CGinaName();
    };
    const WideText first = TextOf(values.Find(WinlogonPlace())->data);
    return ::Follow({[this](const WCHAR* szGinaDLL) { return Know(szGinaDLL); }, read},
                    first.empty() ? SYSTEM_GINA : load(first));
}

WideText COfflineChain::SpellingOf(const WideText& gina) const
{
    const auto found = std::find_if(m_spellings.begin(), m_spellings.end(), [&](const WideText& spelling) {
        return EqualNames(LoadedName(spelling).c_str(), gina.c_str());
    });
    return found != m_spellings.end() ? *found : gina;
}

std::optional<CValuePlace> COfflineChain::PlaceOf(const CChainWrite& write)
{
    if (write.szGinaDLL == nullptr) {
        return WinlogonPlace();
    }
    const std::optional<CChainingRecord> record = Know(write.szGinaDLL);
    return record ? PassthroughPlace(*record) : std::nullopt;
}

CValueData COfflineChain::DataOf(const CChainWrite& write)
{
    if (write.szText != nullptr || write.szGinaDLL == nullptr) {
        return write.szText != nullptr ? MakeText(SpellingOf(write.szText).c_str()) : std::nullopt;
    }
    const std::optional<CChainingRecord> record = Know(write.szGinaDLL);
    return record && record->szDefaultGinaDLL.data() != nullptr
               ? MakeText(WideText(record->szDefaultGinaDLL).c_str())
               : std::nullopt;
}

bool COfflineChain::IsHostInService()
{
    return CMachineScope::IsThisMachine() && NumberOf(ReadValue({VOLATILE_KEY, ENABLED_VALUE})) != 0;
}

CValuePlace WinlogonPlace()
{
    return {WINLOGON_KEY, WINLOGON_GINA_DLL};
}

CValuePlace RecordPlace(const WideText& gina)
{
    return {LUM_GINA_MTM, gina};
}

std::optional<CValuePlace> PassthroughPlace(const CChainingRecord& record)
{
    if (record.bTerminator || record.szSubKey.empty() || record.szOldGinaDLLKey.empty()) {
        return std::nullopt;
    }
    return CValuePlace{WideText(record.szSubKey), WideText(record.szOldGinaDLLKey)};
}

CValueData Read(const CChainValues& values, const CValuePlace& place)
{
    const CChainValue* pValue = values.Find(place);
    return pValue != nullptr ? pValue->data : ReadValue(place);
}
