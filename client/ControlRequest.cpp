#include "ControlRequest.h"

using namespace ControlProtocol;

CControlRequest& CControlRequest::Flag(bool bSet)
{
    m_bytes.push_back(bSet ? 1 : 0);
    return *this;
}

CControlRequest& CControlRequest::Number(DWORD dwValue)
{
    Append(&dwValue, sizeof(dwValue));
    return *this;
}

CControlRequest& CControlRequest::CountedName(const Text& name)
{
    CheckName(name);
    Number(static_cast<DWORD>(name.size()));
    Append(name.data(), name.size() * sizeof(WCHAR));
    return *this;
}

CControlRequest& CControlRequest::FixedName(const Text& name)
{
    CheckName(name);
    Text buffer = name;
    buffer.resize(NAME_CAPACITY);
    Append(buffer.data(), buffer.size() * sizeof(WCHAR));
    return *this;
}

CControlRequest& CControlRequest::Record(const CWireRecord& record)
{
    CWireRecord sent = record;
    sent.szAPP = sent.szMTM = sent.szFriendlyName = sent.szGinaDLL = 0;
    Append(&sent, sizeof(sent));
    return *this;
}

void CControlRequest::Append(const void* pData, std::size_t cbData)
{
    const BYTE* pBytes = static_cast<const BYTE*>(pData);
    m_bytes.insert(m_bytes.end(), pBytes, pBytes + cbData);
}

/// The server cuts a name at its first zero, and would act on another one than was meant.
void CControlRequest::CheckName(const Text& name) noexcept
{
    m_bValid = m_bValid && name.size() <= LONGEST_NAME && name.find(WCHAR(0)) == Text::npos;
}
