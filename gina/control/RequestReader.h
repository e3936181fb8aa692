#pragma once

#include <cstddef>
#include <span>
#include <variant>

#include "ControlProtocol.h"

// What the requests of the control channel consist of, and how the bytes of a client become one. This knows
// neither the pipe nor what requests do.

/// A field of a request. The kinds of names differ in what messages call the name.
enum class Field
{
    None,
    Record,
    Number,
    Flag,       ///< one byte: non-zero is true
    GinaName,   ///< a counted name, "szGinaDLL"
    PluginName, ///< a counted name, "szPlugin"
    RecordName, ///< the DLL name of a record, counted, "m_szGinaDLL"
    FixedName,  ///< "szGinaDLL"
};

/// Whom a request is carried out for.
enum class Caller
{
    Impersonated,
    Anyone,
};

/// What the client gets. A failure is the reply byte everywhere but in Version.
enum class Reply
{
    Byte,
    RecordAlone,
    ByteAndRecord,
    Version,
};

/// The form of a request.
struct CRequestForm
{
    static constexpr std::size_t MOST_FIELDS = 7;

    BYTE byCode;
    /// What is traced when it comes in.
    const WCHAR* szReceived;
    Caller caller;
    Reply reply;
    /// In the order in which they travel; None where there are no more.
    Field fields[MOST_FIELDS];
};

/// Null for an unknown code.
const CRequestForm* FindRequestForm(BYTE byCode) noexcept;

/// A request with its fields, those of a kind in the order in which they came.
struct CRequest
{
    BYTE byCode = 0;
    bool bFlag = false;
    DWORD dwNumbers[3] = {};
    /// The pointers in it belong to another process.
    ControlProtocol::CWireRecord records[2] = {};
    /// Each ends with a zero.
    WCHAR szNames[2][NAME_CAPACITY] = {};
};

/// Why bytes are not a request.
struct CRefusal
{
    enum class Reason
    {
        Unfinished, ///< they are the beginning of one
        UnknownCode,
        NameTooLong, ///< a counted name of more than 259 characters
    };

    Reason reason = Reason::Unfinished;
    /// Unfinished: at least this many bytes are still to come.
    std::size_t cbMissing = 0;
    /// NameTooLong: what messages call the name.
    const WCHAR* szVariable = nullptr;
};

/// No request has more bytes.
inline constexpr std::size_t LONGEST_REQUEST = sizeof(BYTE) + 2 * sizeof(ControlProtocol::CWireRecord) +
                                               3 * sizeof(DWORD) +
                                               2 * (sizeof(DWORD) + LONGEST_NAME * sizeof(WCHAR));

/// The request that the bytes begin with. What follows it is ignored. Depends on the bytes alone.
std::variant<CRequest, CRefusal> ReadRequest(std::span<const BYTE> bytes) noexcept;
