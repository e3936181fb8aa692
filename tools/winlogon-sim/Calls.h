#pragma once

#include <span>

#include "Codes.h"
#include "OutForms.h"
#include "StandinGina.h"

/// What Winlogon itself supplies: values that a day cannot choose.
enum class WinlogonValue
{
    Nothing, ///< a null pointer
    WlxHandle,
    DispatchTable,
    Context, ///< what the GINA left in WlxInitialize
    LogonSid,
    Environment,
    Desktop,
    Credentials,
};

/// One argument of an entry point.
struct CArgument
{
    /// As a day and the report name it; null for the places after the last argument.
    const char* szName = nullptr;
    /// What a day may set, if anything: a number of these codes, or a text. Its default is szDefault; the
    /// default of a text may be null, for a null pointer.
    const CCodes* pCodes = nullptr;
    bool bText = false;
    const char* szDefault = nullptr;
    /// An out-pointer when not null; a number that can be set is then what it points to at first.
    const COutForm* pOut = nullptr;
    WinlogonValue given = WinlogonValue::Nothing;

    bool CanBeSet() const { return pCodes != nullptr || bText; }
};

enum class ResultKind
{
    None,
    Bool,
    SasAction
};

/// One of the 21 entry points as Winlogon sees it.
struct CWlxCall
{
    const char* szName;
    StandinCall id;
    /// The lowest interface version that has it.
    DWORD dwSince;
    ResultKind result;
    /// Calls the entry point; the result is 0 when it has none.
    LONG (*pfnInvoke)(FARPROC pfnEntry, const ULONG_PTR* pArguments);
    CArgument arguments[STANDIN_MAX_ARGUMENTS];

    /// The words for the results; not for ResultKind::None.
    const CCodes& GetResultCodes() const { return result == ResultKind::Bool ? BOOLS : SAS_ACTIONS; }
    /// What a GINA that could not do its work gives: FALSE, or no action.
    LONG GetDefaultResult() const;
    /// Whether two results mean the same to Winlogon: any BOOL but 0 is TRUE.
    bool IsSameResult(LONG nLeft, LONG nRight) const;
};

/// All of them, in the order of StandinCall.
std::span<const CWlxCall> GetCalls();

/// By the name of the export; null when there is no such one.
const CWlxCall* FindCall(const std::string& name);
