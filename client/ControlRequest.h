#pragma once

#include <string>
#include <vector>

#include "ControlProtocol.h"

/// The bytes of a request, put together in the order of its fields.
class CControlRequest
{
public:
    using Text = std::basic_string<WCHAR>;

    explicit CControlRequest(BYTE byCode) : m_bytes{byCode} {}

    CControlRequest& Flag(bool bSet);
    CControlRequest& Number(DWORD dwValue);
    CControlRequest& CountedName(const Text& name);
    CControlRequest& FixedName(const Text& name);
    /// The pointers of the record are sent as 0.
    CControlRequest& Record(const ControlProtocol::CWireRecord& record);

    /// False when a name is longer than the protocol has room for, or has a zero in it: then there is no
    /// request.
    bool IsValid() const noexcept { return m_bValid; }
    const std::vector<BYTE>& GetBytes() const noexcept { return m_bytes; }

private:
    void Append(const void* pData, std::size_t cbData);
    void CheckName(const Text& name) noexcept;

    std::vector<BYTE> m_bytes;
    bool m_bValid = true;
};
