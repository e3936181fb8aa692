#include "ForeignException.h"

#include <utility>

#include "ExceptionFrame.h"
#include "guard/StructuredExceptions.h"

namespace FaultGuard {
namespace {

constexpr DWORD FOREIGN_EXCEPTION = 0xE06D7363;
constexpr ULONG_PTR FOREIGN_MAGIC = 0x19930520;

// What the runtime of the plugins' compiler reads about the class of an exception. The names are ours.

struct CClassName
{
    const void* pVirtualTable; ///< of the runtime's type_info, which has no part in catching
    void* pUndecorated;
    char szDecorated[32];
};

struct CCatchableType
{
    DWORD dwProperties;
    const CClassName* pName;
    LONG nMemberOffset, nTableOffset, nIndexOffset; ///< where the caught class lies in the thrown one
    DWORD dwSize;
    const void* pfnCopy;
};

struct CCatchableTypes
{
    LONG nTypes;
    const CCatchableType* pType;
};

struct CThrowInfo
{
    DWORD dwAttributes;
    const void* pfnDestroy;
    const void* pfnForward;
    const CCatchableTypes* pTypes;
};

constexpr DWORD COPIED_AS_BYTES = 1;

[[noreturn]] void Raise(void* pObject, const CThrowInfo& throwInfo) noexcept
{
    const ULONG_PTR arguments[] = {FOREIGN_MAGIC, reinterpret_cast<ULONG_PTR>(pObject),
                                   reinterpret_cast<ULONG_PTR>(&throwInfo)};
    RaiseException(FOREIGN_EXCEPTION, EXCEPTION_NONCONTINUABLE, 3, arguments);
    std::terminate();
}

// The object that is thrown is the host's std::exception_ptr. Frames of the DLL may destroy it, or copy it to
// keep the exception.

__attribute__((thiscall)) void DestroyPointer(std::exception_ptr* pThis)
{
    pThis->~exception_ptr();
}

__attribute__((thiscall)) void* CopyPointer(std::exception_ptr* pThis, const std::exception_ptr* pOther)
{
    return new (pThis) std::exception_ptr(*pOther);
}

const CClassName s_HostName = {nullptr, nullptr, ".?AVCHostException@@"};
const CCatchableType s_HostType = {
    0, &s_HostName, 0, -1, 0, sizeof(std::exception_ptr), reinterpret_cast<const void*>(CopyPointer)};
const CCatchableTypes s_HostTypes = {1, &s_HostType};
const CThrowInfo s_HostThrow = {0, reinterpret_cast<const void*>(DestroyPointer), nullptr, &s_HostTypes};

const CClassName s_IntName = {nullptr, nullptr, ".H"};
const CCatchableType s_IntType = {COPIED_AS_BYTES, &s_IntName, 0, -1, 0, sizeof(int), nullptr};
const CCatchableTypes s_IntTypes = {1, &s_IntType};
const CThrowInfo s_IntThrow = {0, nullptr, nullptr, &s_IntTypes};

/// The exception frame that holds the object. A DLL that swallows the exception as a structured one does not
/// know of the object, so this frame releases it.
struct __attribute__((may_alias)) CThrowingFrame : CExceptionFrame
{
    std::exception_ptr* pObject;
};

EXCEPTION_DISPOSITION OnUnwind(EXCEPTION_RECORD* pException, CExceptionFrame* pFrame, CONTEXT*, void*)
{
    if (IsUnwinding(*pException) && pException->ExceptionCode != FOREIGN_EXCEPTION) {
        *static_cast<CThrowingFrame*>(pFrame)->pObject = nullptr;
    }
    return ExceptionContinueSearch;
}

} // namespace

void RaiseHostException(std::exception_ptr pException) noexcept
{
    // Moved here, because the argument is never destroyed: Raise skips the frame that would do it.
    std::exception_ptr pObject(std::move(pException));
    CThrowingFrame frame{{nullptr, reinterpret_cast<const void*>(OnUnwind)}, &pObject};
    frame.Push();
    Raise(&pObject, s_HostThrow);
}

std::exception_ptr TakeHostException(const EXCEPTION_RECORD& exception) noexcept
{
    const auto* const pArguments = exception.ExceptionInformation;
    if (exception.ExceptionCode != FOREIGN_EXCEPTION || exception.NumberParameters != 3 ||
        pArguments[2] != reinterpret_cast<ULONG_PTR>(&s_HostThrow))
    {
        return nullptr;
    }
    return std::exchange(*reinterpret_cast<std::exception_ptr*>(pArguments[1]), nullptr);
}

void RaiseForeignException()
{
    int nObject = 1;
    Raise(&nObject, s_IntThrow);
}

} // namespace FaultGuard
