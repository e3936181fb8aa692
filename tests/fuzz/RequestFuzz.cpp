#include <algorithm>
#include <cstdlib>
#include <vector>

#include "control/RequestReader.h"

// Reads requests in arbitrary bytes, nothing else.

using namespace ControlProtocol;

namespace {

using Bytes = std::vector<BYTE>;
using Reading = std::variant<CRequest, CRefusal>;

void Require(bool bCondition)
{
    if (!bCondition) {
        std::abort();
    }
}

std::size_t GetLength(const WCHAR* szName)
{
    const WCHAR* const pEnd = szName + NAME_CAPACITY;
    const WCHAR* const pZero = std::find(szName, pEnd, 0);
    Require(pZero != pEnd);
    return static_cast<std::size_t>(pZero - szName);
}

template <typename Value>
void Append(Bytes& bytes, const Value& value, std::size_t cbValue = sizeof(Value))
{
    const BYTE* pValue = reinterpret_cast<const BYTE*>(&value);
    bytes.insert(bytes.end(), pValue, pValue + cbValue);
}

/// A request as a client writes it, its names up to their first zero.
Bytes Write(const CRequest& request)
{
    Bytes bytes = {request.byCode};
    const CWireRecord* pRecord = request.records;
    const DWORD* pNumber = request.dwNumbers;
    const WCHAR(*pName)[NAME_CAPACITY] = request.szNames;
    for (const Field field : FindRequestForm(request.byCode)->fields) {
        if (field == Field::Record) {
            Append(bytes, *pRecord++);
        } else if (field == Field::Number) {
            Append(bytes, *pNumber++);
        } else if (field == Field::Flag) {
            Append(bytes, BYTE(request.bFlag));
        } else if (field == Field::FixedName) {
            Append(bytes, *pName++);
        } else if (field != Field::None) {
            const auto cchName = static_cast<DWORD>(GetLength(*pName));
            Append(bytes, cchName);
            Append(bytes, *pName++, cchName * sizeof(WCHAR));
        }
    }
    return bytes;
}

/// Reads as the server does: what is missing and no more, until there is nothing left to read.
Reading ReadInPieces(std::span<const BYTE> bytes)
{
    std::size_t cbRead = 0;
    for (;;) {
        const Reading reading = ReadRequest(bytes.first(cbRead));
        const auto* pRefusal = std::get_if<CRefusal>(&reading);
        if (pRefusal == nullptr || pRefusal->reason != CRefusal::Reason::Unfinished) {
            return reading;
        }
        Require(pRefusal->cbMissing != 0 && cbRead + pRefusal->cbMissing <= LONGEST_REQUEST);
        if (cbRead + pRefusal->cbMissing > bytes.size()) {
            return reading;
        }
        cbRead += pRefusal->cbMissing;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t cbData)
{
    const Reading whole = ReadRequest({pData, cbData});
    const Reading pieces = ReadInPieces({pData, cbData});
    Require(whole.index() == pieces.index());
    if (const auto* pRefusal = std::get_if<CRefusal>(&whole)) {
        const CRefusal& other = std::get<CRefusal>(pieces);
        Require(pRefusal->reason == other.reason && pRefusal->szVariable == other.szVariable);
        Require((pRefusal->reason == CRefusal::Reason::NameTooLong) == (pRefusal->szVariable != nullptr));
        return 0;
    }
    const Bytes written = Write(std::get<CRequest>(whole));
    Require(written == Write(std::get<CRequest>(pieces)) && written.size() <= LONGEST_REQUEST);
    const Reading again = ReadRequest(written);
    Require(again.index() == 0 && Write(std::get<CRequest>(again)) == written);
    return 0;
}
