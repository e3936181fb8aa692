#include "RequestFields.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "Exceptions.h"

using namespace ControlProtocol;

namespace {

template <typename Value>
Value ReadValue(CControlChannel& channel)
{
    Value value = {};
    channel.Read(&value, sizeof(value));
    return value;
}

} // namespace

/// The length comes from whoever is at the other end, so it is checked before memory is asked for.
template <const auto& Variable>
COwnedText CCountedName<Variable>::ReadName(CControlChannel& channel, const WCHAR* szVariable)
{
    const DWORD cchName = ReadValue<DWORD>(channel);
    COwnedText szName(cchName <= LONGEST_NAME ? new (std::nothrow) WCHAR[cchName + 1]() : nullptr);
    if (szName == nullptr) {
        throw CMemAllocException(LUM_GINA_ORIGIN, szVariable);
    }
    channel.Read(szName, cchName * static_cast<DWORD>(sizeof(WCHAR)));
    return szName;
}

template class CCountedName<VAR_GINA_DLL>;
template class CCountedName<VAR_PLUGIN>;
template class CCountedName<VAR_RECORD_GINA_DLL>;

CFixedName::CFixedName(CControlChannel& channel)
{
    channel.Read(m_szName, sizeof(m_szName));
    if (std::find(std::begin(m_szName), std::end(m_szName), 0) == std::end(m_szName)) {
        throw CMemAllocException(LUM_GINA_ORIGIN, VAR_GINA_DLL);
    }
}

CRecord::CRecord(CControlChannel& channel) : m_Info(LUM_GINA_APP, LUM_GINA_MTM)
{
    const CWireRecord record = ReadValue<CWireRecord>(channel);
    m_Info.m_dwSpare1 = record.dwSpare1;
    m_Info.m_dwWlxVersion = record.dwWlxVersion;
    m_Info.m_dwLUMVersion = record.dwLUMVersion;
    m_Info.m_dwSpare2 = record.dwSpare2;
}

void CRecord::ReadGinaDLL(CControlChannel& channel)
{
    const CCountedName<VAR_RECORD_GINA_DLL> szGinaDLL(channel);
    if (*szGinaDLL != 0 && !m_Info.SetGinaDLL(szGinaDLL)) {
        throw CMemAllocException(LUM_GINA_ORIGIN, VAR_RECORD_GINA_DLL);
    }
}

CFlag::CFlag(CControlChannel& channel) : m_bSet(ReadValue<BYTE>(channel) != 0) {}

CNumber::CNumber(CControlChannel& channel) : m_dwValue(ReadValue<DWORD>(channel)) {}

CPluginQuery::CPluginQuery(CControlChannel& channel)
    : passedOn(channel), target(channel), param1(channel), param2(channel), param3(channel)
{
    passedOn.ReadGinaDLL(channel);
    target.ReadGinaDLL(channel);
}
