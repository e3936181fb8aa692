#pragma once

#include <exception>
#include <type_traits>

#include "TraceStatements.h"

// How every operation of the system runs: entry trace, body, handlers, failure warning, exit trace.
//
//     bool CFoo::Bar()
//     {
//         const COperation op(*this, s_szClass, TEXT("Bar"));
//         const auto body = [&] { ... return true; };
//         return op.Run(Handlers<PassOn<CBadArgException>, Absorb<CMemAllocException>>(), body);
//     }

/// The name of an operation together with its place in the source, taken where the name is written.
struct CTracePoint
{
    CTracePoint(const WCHAR* szNameArg, CSourceLocation whereArg = CSourceLocation::Current()) noexcept
        : szName(szNameArg), where(whereArg)
    {
    }

    const WCHAR* szName;
    CSourceLocation where;
};

/// When a failed operation writes "The requested operation failed or it was cancelled".
enum class FailureWarning
{
    Always,
    UnlessRaised, ///< not after an exception, which has said more already
    Never
};

/// The result of an operation that answers a secure attention sequence.
enum SasAction : int
{
    SAS_ACTION_NONE = 2
};

/// What a failed operation returns: false, SAS_ACTION_NONE, null or zero. int is not allowed here: it could
/// be a BOOL, which fails as 0, or a SAS action code, which fails as 2. Use bool or SasAction.
template <typename Result>
constexpr Result FailureResult() noexcept
{
    static_assert(!std::is_same_v<Result, int>);
    if constexpr (std::is_same_v<Result, SasAction>) {
        return SAS_ACTION_NONE;
    } else {
        return Result();
    }
}

/// Whether a result is one to warn about. Counts, handles and pointers never are.
template <typename Result>
constexpr bool IsFailure(Result result) noexcept
{
    if constexpr (std::is_same_v<Result, bool> || std::is_same_v<Result, SasAction>) {
        return result == FailureResult<Result>();
    } else {
        return false;
    }
}

/// A result as the exit trace shows it.
template <typename Result>
DWORD ToTraceValue(Result result) noexcept
{
    if constexpr (std::is_pointer_v<Result>) {
        return static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(result));
    } else {
        return static_cast<DWORD>(result);
    }
}

/// One run of an operation, with what its trace lines have in common.
class COperation
{
public:
    /// Traces the entry. szThread: the thread that the operation is about, for the traces that name one.
    COperation(const CMessageOrigin& origin, const WCHAR* szClass, CTracePoint point,
               const WCHAR* szThread = nullptr) noexcept
        : m_Origin(origin), m_szClass(szClass), m_Point(point), m_szThread(szThread)
    {
        Trace<CEntryTrace, CThreadEntryTrace>();
    }

    /// Runs body and returns its result, or FailureResult if it throws. onException(*this) is called inside
    /// the catch block. If that throws, the exception leaves the operation, and no exit trace is written.
    template <typename OnException, typename Body>
    auto Run(OnException onException, Body body, FailureWarning warning = FailureWarning::Always) const
        -> std::invoke_result_t<Body>
    {
        using Result = std::invoke_result_t<Body>;
        if constexpr (std::is_void_v<Result>) {
            try {
                body();
            } catch (...) {
                onException(*this);
            }
            Trace<CExitTrace, CThreadExitTrace>();
        } else {
            Result result = FailureResult<Result>();
            try {
                result = body();
            } catch (...) {
                onException(*this);
                warning = warning == FailureWarning::UnlessRaised ? FailureWarning::Never : warning;
            }
            if (warning != FailureWarning::Never && IsFailure(result)) {
                Warn(ERR_OPERATION_FAILED);
            }
            Trace<CExitResultTrace, CThreadExitResultTrace>(ToTraceValue(result));
            return result;
        }
    }

    /// Traces a warning with the place of the operation.
    void Warn(const WCHAR* szText) const noexcept { CWarning(m_Origin, szText, m_Point.where); }

    const CMessageOrigin& GetOrigin() const noexcept { return m_Origin; }
    CSourceLocation GetLocation() const noexcept { return m_Point.where; }

private:
    template <typename Statement, typename ThreadStatement, typename... Values>
    void Trace(Values... values) const noexcept
    {
        if (m_szThread == nullptr) {
            Statement(m_Origin, m_szClass, m_Point.szName, values..., m_Point.where);
        } else {
            ThreadStatement(m_Origin, m_szClass, m_Point.szName, m_szThread, values..., m_Point.where);
        }
    }

    CMessageOrigin m_Origin;
    const WCHAR* m_szClass;
    CTracePoint m_Point;
    const WCHAR* m_szThread;
};

template <typename E>
bool ReportIfOne() noexcept
{
    try {
        throw;
    } catch (E& exception) {
        exception.WriteIfUnwritten();
        return true;
    } catch (...) {
        return false;
    }
}

/// For use in a catch (...). If the exception is of one of the classes E: writes it, unless it has been
/// written, and returns true.
template <typename... E>
bool ReportIf() noexcept
{
    return (ReportIfOne<E>() || ...);
}

/// The handlers of an operation, tried in this order as catch clauses are. An exception that none of them
/// takes is warned of as unhandled, and ends here.
template <typename... Handler>
struct Handlers
{
    void operator()(const COperation& op) const
    {
        if (!(Handler::Take() || ...)) {
            op.Warn(ERR_UNHANDLED_EXCEPTION);
        }
    }
};

/// Handler: reports exceptions of the classes E and lets them leave the operation.
template <typename... E>
struct PassOn
{
    static bool Take()
    {
        if (ReportIf<E...>()) {
            throw;
        }
        return false;
    }
    void operator()(const COperation& op) const { Handlers<PassOn>()(op); }
};

/// Handler: reports exceptions of the classes E and ends them here.
template <typename... E>
struct Absorb
{
    static bool Take() noexcept { return ReportIf<E...>(); }
    void operator()(const COperation& op) const noexcept { Handlers<Absorb>()(op); }
};

/// For the catch (...) of a constructor. Rethrows an InitException, and exceptions of the classes PassedOn,
/// as they are; anything else becomes an InitException. All are reported. Never returns.
template <typename InitException, typename... PassedOn>
[[noreturn]] void FailConstruction(const CMessageOrigin& origin,
                                   CSourceLocation where = CSourceLocation::Current())
{
    if (ReportIf<InitException, PassedOn...>()) {
        throw;
    }
    throw InitException(origin, where);
}

/// Traces entry and exit of a constructor or destructor; no exit when an exception leaves it.
template <typename EntryTrace, typename ExitTrace>
class CLifetimeTrace
{
public:
    CLifetimeTrace(const CMessageOrigin& origin, CTracePoint classPoint) noexcept
        : m_Origin(origin), m_Class(classPoint), m_nExceptions(std::uncaught_exceptions())
    {
        EntryTrace(m_Origin, m_Class.szName, m_Class.szName, m_Class.where);
    }
    ~CLifetimeTrace()
    {
        if (std::uncaught_exceptions() == m_nExceptions) {
            ExitTrace(m_Origin, m_Class.szName, m_Class.szName, m_Class.where);
        }
    }
    CLifetimeTrace(const CLifetimeTrace&) = delete;
    CLifetimeTrace& operator=(const CLifetimeTrace&) = delete;

private:
    CMessageOrigin m_Origin;
    CTracePoint m_Class;
    int m_nExceptions;
};

using CConstructionTrace = CLifetimeTrace<CConstructionEntryTrace, CConstructionExitTrace>;
using CDestructionTrace = CLifetimeTrace<CDestructionEntryTrace, CDestructionExitTrace>;

/// For clean-up, which must go on whatever happens: runs destroy(), and if that throws, traces that the
/// variable could not be deleted.
template <typename Destroy>
void DeleteVariable(const CMessageOrigin& origin, const WCHAR* szVariable, Destroy destroy,
                    CSourceLocation where = CSourceLocation::Current()) noexcept
{
    try {
        destroy();
    } catch (...) {
        CVariableWarning(origin, ERR_DELETE_VARIABLE, szVariable, where);
    }
}
