#pragma once

#include <tuple>

#include "Message.h"

// The kinds of trace statement. A statement constructs a message, which writes itself and is destroyed:
//
//     CWarning(*this, ERR_PULLING_NULL);
//
// If its level is masked out, only the mask is looked up and nothing is formatted. The values follow the
// origin in the order of the format. The place of the statement comes last and need not be given.
template <DWORD dwLevel, const auto& Format, typename... Values>
class CTraceStatement : public CMessageArgList
{
public:
    explicit CTraceStatement(const CMessageOrigin& origin, Values... values,
                             CSourceLocation where = CSourceLocation::Current()) noexcept
        : CMessageArgList(dwLevel, origin), m_Values(values...), m_Where(where)
    {
        CTraceStatement::Write();
    }

    void Write() noexcept override
    {
        if (IsTraceEnabled(m_dwLevel, m_szMTM)) {
            const auto write = [this](const Values&... values) {
                WriteFormatted(Format, {values..., m_Where.nLine, m_Where.GetFile()});
            };
            std::apply(write, m_Values);
        }
        m_bWritten = true;
    }

private:
    std::tuple<Values...> m_Values;
    CSourceLocation m_Where;
};

template <DWORD dwLevel, const auto& Format = FMT_OPERATION>
using COperationTrace = CTraceStatement<dwLevel, Format, const WCHAR*, const WCHAR*>;

// Class name, operation name (constructors and destructors: class name twice)
using CEntryTrace = COperationTrace<LEVEL_ENTRY>;
using CExitTrace = COperationTrace<LEVEL_EXIT>;
using CExitResultTrace = CTraceStatement<LEVEL_EXIT, FMT_OPERATION_RESULT, const WCHAR*, const WCHAR*, DWORD>;
using CConstructionEntryTrace = COperationTrace<LEVEL_CONSTRUCTION_ENTRY>;
using CConstructionExitTrace = COperationTrace<LEVEL_CONSTRUCTION_EXIT>;
using CDestructionEntryTrace = COperationTrace<LEVEL_DESTRUCTION_ENTRY, FMT_DESTRUCTOR>;
using CDestructionExitTrace = COperationTrace<LEVEL_DESTRUCTION_EXIT, FMT_DESTRUCTOR>;

// Class name, operation name, thread name
using CThreadEntryTrace =
    CTraceStatement<LEVEL_ENTRY, FMT_THREAD_OPERATION, const WCHAR*, const WCHAR*, const WCHAR*>;
using CThreadExitTrace =
    CTraceStatement<LEVEL_EXIT, FMT_THREAD_OPERATION, const WCHAR*, const WCHAR*, const WCHAR*>;
using CThreadExitResultTrace =
    CTraceStatement<LEVEL_EXIT, FMT_THREAD_OPERATION_RESULT, const WCHAR*, const WCHAR*, const WCHAR*, DWORD>;

// Text, then a detail
using CWarning = CTraceStatement<LEVEL_WARNING, FMT_PLAIN, const WCHAR*>;
using CVariableWarning = CTraceStatement<LEVEL_WARNING, FMT_VARIABLE, const WCHAR*, const WCHAR*>;
using CErrorWarning = CTraceStatement<LEVEL_WARNING, FMT_ERROR, const WCHAR*, DWORD>;
using CVariableErrorWarning =
    CTraceStatement<LEVEL_WARNING, FMT_VARIABLE_ERROR, const WCHAR*, const WCHAR*, DWORD>;
using CPointerWarning = CTraceStatement<LEVEL_WARNING, FMT_POINTER, const WCHAR*, const WCHAR*>;
using CStringWarning = CTraceStatement<LEVEL_WARNING, FMT_STRING, const WCHAR*, const WCHAR*>;
using CKeyWarning = CTraceStatement<LEVEL_WARNING, FMT_KEY, const WCHAR*, const WCHAR*>;
using CValueNameWarning = CTraceStatement<LEVEL_WARNING, FMT_VALUE_NAME, const WCHAR*, const WCHAR*>;
using CPluginWarning = CTraceStatement<LEVEL_WARNING, FMT_PLUGIN, const WCHAR*, const WCHAR*>;
using CGinaDLLWarning = CTraceStatement<LEVEL_WARNING, FMT_GINA_DLL, const WCHAR*, const WCHAR*>;
using CPassthroughWarning =
    CTraceStatement<LEVEL_WARNING, FMT_PASSTHROUGH, const WCHAR*, const WCHAR*, const WCHAR*>;
using CCritical = CTraceStatement<LEVEL_CRITICAL, FMT_PLAIN, const WCHAR*>;
using CNotification = CTraceStatement<LEVEL_NOTIFICATION, FMT_PLAIN, const WCHAR*>;
/// The text itself, without the place of the statement.
using CTextNotification = CTraceStatement<LEVEL_NOTIFICATION, FMT_TEXT, const WCHAR*>;
