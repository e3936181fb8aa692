#pragma once

#include "Message.h"

// The catalogue of exceptions. Each is one line, which states what it reports. Exceptions are thrown by value
// and caught by reference. Constructing one writes it to the trace log. There are two ways to construct one:
//
//     (origin, details..., where)
//     (tag, key, text, details..., line, source path)
//
// The details are the values that the format names after the text, in that order. The first way uses the
// row's own text and, by default, the caller's place in the source.

/// The shape of a catalogue row: text, format, level and the types of the details are fixed.
template <const auto& Text, const auto& Format, DWORD dwLevel, typename... Details>
class CCatalogException : public CMessageArgList
{
public:
    explicit CCatalogException(const CMessageOrigin& origin, Details... details,
                               CSourceLocation where = CSourceLocation::Current()) noexcept
        : CMessageArgList(dwLevel, origin.szAPP, origin.szMTM, true, Format, Text, details..., where.nLine,
                          where.GetFile())
    {
    }
    CCatalogException(const WCHAR* szAPP, const WCHAR* szMTM, const WCHAR* szText, Details... details,
                      int nLine, const WCHAR* szPath) noexcept
        : CMessageArgList(dwLevel, szAPP, szMTM, true, Format, szText, details..., nLine, GetFileName(szPath))
    {
    }
};

/// A row that reports its text alone.
template <const auto& Text, DWORD dwLevel = LEVEL_EXCEPTION>
class CTextException : public CDetailedMessage
{
public:
    explicit CTextException(const CMessageOrigin& origin,
                            CSourceLocation where = CSourceLocation::Current()) noexcept
        : CDetailedMessage(dwLevel, origin, Text, true, where)
    {
    }
    CTextException(const WCHAR* szAPP, const WCHAR* szMTM, const WCHAR* szText, int nLine,
                   const WCHAR* szPath) noexcept
        : CDetailedMessage(dwLevel, szAPP, szMTM, szText, nLine, szPath, true)
    {
    }
};

/// A row that also reports a Windows error code.
template <const auto& Text>
class CErrorException : public CDetailedMessageWithError
{
public:
    explicit CErrorException(const CMessageOrigin& origin, DWORD dwError,
                             CSourceLocation where = CSourceLocation::Current()) noexcept
        : CDetailedMessageWithError(LEVEL_EXCEPTION, origin, Text, dwError, true, where)
    {
    }
    CErrorException(const WCHAR* szAPP, const WCHAR* szMTM, const WCHAR* szText, DWORD dwError, int nLine,
                    const WCHAR* szPath) noexcept
        : CDetailedMessageWithError(LEVEL_EXCEPTION, szAPP, szMTM, szText, dwError, nLine, szPath, true)
    {
    }
};

/// A row that reports a name: of an argument, a variable, a plugin.
template <const auto& Text, const auto& Format>
using CNameException = CCatalogException<Text, Format, LEVEL_EXCEPTION, const WCHAR*>;

/// A row that reports a name and a Windows error code.
template <const auto& Text, const auto& Format>
using CNameErrorException = CCatalogException<Text, Format, LEVEL_EXCEPTION, const WCHAR*, DWORD>;

inline constexpr WCHAR TXT_LOAD_DLL[] = TEXT("Unable to load DLL");
inline constexpr WCHAR TXT_LOAD_FUNCTION[] = TEXT("Unable to load function from DLL");
inline constexpr WCHAR TXT_NEGOTIATION[] = TEXT("Negotiation failed while loading gina dll");
inline constexpr WCHAR TXT_FREE_GINA[] = TEXT("Failed to free gina dll library");
inline constexpr WCHAR TXT_NULL_FUNCTION[] = TEXT("Null function handle.  Unable to execute function call");
inline constexpr WCHAR TXT_END_OF_LIST[] = TEXT("Expected another gina node in list and found end of list");
inline constexpr WCHAR TXT_UNEXPECTED_GINA[] =
    TEXT("Another gina node was unexpectantly found at the end of the list.");
inline constexpr WCHAR TXT_PLUGIN_EXCEPTION[] = TEXT("Plugin has generated an unknown exception");
inline constexpr WCHAR TXT_NULL_INSTANCE[] =
    TEXT("Can't instantiate LUMGina object with null Instance handle. Aborting...");
inline constexpr WCHAR TXT_NOTHING_TO_CALL[] =
    TEXT("There is no plugin or GINA to call. Unable to process function. Returning failure");
inline constexpr WCHAR TXT_NO_PASSTHROUGH[] =
    TEXT("Don't know which GINA to pass through to. Defaulting to msgina.dll");

inline constexpr WCHAR TXT_READ_REGISTRY[] = TEXT("Unable to read from registry");
inline constexpr WCHAR TXT_WRITE_REGISTRY[] = TEXT("Unable to write to registry");
inline constexpr WCHAR TXT_DELETE_VALUE[] = TEXT("Unable to delete registry value");
inline constexpr WCHAR TXT_OPEN_KEY[] = TEXT("Unable to open registry key");
inline constexpr WCHAR TXT_CREATE_KEY[] = TEXT("Unable to create registry key");
inline constexpr WCHAR TXT_CLOSE_KEY[] = TEXT("Unable to close registry key");
inline constexpr WCHAR TXT_REGISTRY_KEY_INIT[] = TEXT("Unable to instantiate CRegistryKey object");
inline constexpr WCHAR TXT_REGISTRY_VALUE_INIT[] = TEXT("Unable to instantiate CRegistryValue object");
inline constexpr WCHAR TXT_REGISTRY_STRING_INIT[] = TEXT("Unable to instantiate CRegistryString object");
inline constexpr WCHAR TXT_REGISTRY_DWORD_INIT[] = TEXT("Unable to instantiate CRegistryDword object");
inline constexpr WCHAR TXT_NO_PLUGINS[] = TEXT("No plugins where found for LUM Gina to load");
inline constexpr WCHAR TXT_CHAINING_OBJECT_INIT[] = TEXT("Unable to instantiate CGinaChainingObject object");
inline constexpr WCHAR TXT_CHAINING_INFO_OBJECT_INIT[] =
    TEXT("Unable to instantiate CGinaChainingInfoObject object");
inline constexpr WCHAR TXT_REGISTRY_MANAGER_INIT[] = TEXT("Unabled to instantiate CRegistryManager object");
inline constexpr WCHAR TXT_INSERT_UNKNOWN_GINA[] =
    TEXT("Can't insert gina dll into chaining list because it is unknown");

inline constexpr WCHAR TXT_THREAD_OBJECT_INIT[] = TEXT("Unable to instantiate CThreadObject object");
inline constexpr WCHAR TXT_PIPE_THREAD_OBJECT_INIT[] =
    TEXT("Unable to instantiate LUMPipeThreadObject object");
inline constexpr WCHAR TXT_FIND_RESOURCE[] = TEXT("Unable to find resource");
inline constexpr WCHAR TXT_FREE_RESOURCE_DLL[] = TEXT("Unable to free resource DLL");

// clang-format off

// Arguments and memory
class CBadArgException : public CNameException<ERR_BAD_ARG, FMT_ARGUMENT> { using CCatalogException::CCatalogException; };
class CMemAllocException : public CNameException<ERR_MEM_ALLOC, FMT_VARIABLE> { using CCatalogException::CCatalogException; };
class CWcscpyException : public CTextException<ERR_WCSCPY> { using CTextException::CTextException; };
class CUnhandledExceptionException : public CTextException<ERR_UNHANDLED_EXCEPTION> { using CTextException::CTextException; };

// Loading and calling GINAs and plugins
class CUnableToLoadDLLException : public CNameErrorException<TXT_LOAD_DLL, FMT_FILENAME> { using CCatalogException::CCatalogException; };
class CUnableToLoadDLLFunctionException : public CNameErrorException<TXT_LOAD_FUNCTION, FMT_FUNCTION> { using CCatalogException::CCatalogException; };
class CFailedGinaNegotiationsException : public CErrorException<TXT_NEGOTIATION> { using CErrorException::CErrorException; };
class CFreeGinaDLLFailException : public CErrorException<TXT_FREE_GINA> { using CErrorException::CErrorException; };
class CNullFunctionHandleException : public CNameException<TXT_NULL_FUNCTION, FMT_PLUGIN> { using CCatalogException::CCatalogException; };
class CUnexpectedEndOfListException : public CNameException<TXT_END_OF_LIST, FMT_PLUGIN> { using CCatalogException::CCatalogException; };
class CUnexpectedGinaException : public CNameException<TXT_UNEXPECTED_GINA, FMT_PLUGIN> { using CCatalogException::CCatalogException; };
class CUnhandledPluginException : public CNameException<TXT_PLUGIN_EXCEPTION, FMT_PLUGIN> { using CCatalogException::CCatalogException; };

// The host
class CLUMInitializeFailException : public CTextException<TXT_NULL_INSTANCE, LEVEL_CRITICAL> { using CTextException::CTextException; };
class CNoGINAorPluginToCallException : public CTextException<TXT_NOTHING_TO_CALL> { using CTextException::CTextException; };
class CUnableToLoadPassthroughGinaException : public CTextException<TXT_NO_PASSTHROUGH> { using CTextException::CTextException; };

// The registry
class CUnableToReadRegistryException : public CNameErrorException<TXT_READ_REGISTRY, FMT_REGISTRY_VALUE> { using CCatalogException::CCatalogException; };
class CUnableToWriteRegistryException : public CNameErrorException<TXT_WRITE_REGISTRY, FMT_REGISTRY_VALUE> { using CCatalogException::CCatalogException; };
class CUnableToDeleteRegistryValueException : public CNameErrorException<TXT_DELETE_VALUE, FMT_REGISTRY_VALUE> { using CCatalogException::CCatalogException; };
class CUnableToOpenRegistryKeyException : public CNameErrorException<TXT_OPEN_KEY, FMT_REGISTRY_KEY> { using CCatalogException::CCatalogException; };
class CUnableToCreateRegistryKeyException : public CNameErrorException<TXT_CREATE_KEY, FMT_REGISTRY_KEY> { using CCatalogException::CCatalogException; };
class CUnableToCloseRegistryKeyException : public CNameErrorException<TXT_CLOSE_KEY, FMT_REGISTRY_KEY> { using CCatalogException::CCatalogException; };
class CRegistryKeyInitException : public CTextException<TXT_REGISTRY_KEY_INIT> { using CTextException::CTextException; };
class CRegistryValueInitException : public CTextException<TXT_REGISTRY_VALUE_INIT> { using CTextException::CTextException; };
class CRegistryStringInitException : public CTextException<TXT_REGISTRY_STRING_INIT> { using CTextException::CTextException; };
class CRegistryDwordInitException : public CTextException<TXT_REGISTRY_DWORD_INIT> { using CTextException::CTextException; };

// Threads
class CThreadObjectInitException : public CTextException<TXT_THREAD_OBJECT_INIT> { using CTextException::CTextException; };
class CCreateEventException : public CErrorException<ERR_CREATE_EVENT> { using CErrorException::CErrorException; };
class CResetEventException : public CErrorException<ERR_RESET_EVENT> { using CErrorException::CErrorException; };
class CSetEventException : public CErrorException<ERR_SET_EVENT> { using CErrorException::CErrorException; };
class CUnableToCreateThreadException : public CNameErrorException<ERR_CREATE_THREAD, FMT_THREAD_ERROR> { using CCatalogException::CCatalogException; };

// The control channel
class CLUMPipeThreadObjectInitException : public CTextException<TXT_PIPE_THREAD_OBJECT_INIT> { using CTextException::CTextException; };
class CCreateNamedPipeException : public CErrorException<ERR_CREATE_NAMED_PIPE> { using CErrorException::CErrorException; };
class CReadFileException : public CErrorException<ERR_READ_FILE> { using CErrorException::CErrorException; };
class CWriteFileException : public CErrorException<ERR_WRITE_FILE> { using CErrorException::CErrorException; };
class CFlushFileBuffersException : public CErrorException<ERR_FLUSH_FILE_BUFFERS> { using CErrorException::CErrorException; };
class CDisconnectNamedPipeException : public CErrorException<ERR_DISCONNECT_NAMED_PIPE> { using CErrorException::CErrorException; };
class CRevertToSelfException : public CErrorException<ERR_REVERT_TO_SELF> { using CErrorException::CErrorException; };

// Resources
class CUnableToFindResourceException : public CCatalogException<TXT_FIND_RESOURCE, FMT_RESOURCE, LEVEL_EXCEPTION, DWORD, DWORD> { using CCatalogException::CCatalogException; };
class CLoadResourceException : public CErrorException<ERR_LOAD_RESOURCE> { using CErrorException::CErrorException; };
class CUnableToFreeResourceDLLException : public CNameErrorException<TXT_FREE_RESOURCE_DLL, FMT_FILE> { using CCatalogException::CCatalogException; };
class CLockResourceException : public CErrorException<ERR_LOCK_RESOURCE> { using CErrorException::CErrorException; };

// Own configuration
class CNoPluginsNotification : public CTextException<TXT_NO_PLUGINS, LEVEL_NOTIFICATION> { using CTextException::CTextException; };

// The chain of GINAs
class CGinaChainingObjectInitException : public CTextException<TXT_CHAINING_OBJECT_INIT> { using CTextException::CTextException; };
class CGinaChainingInfoObjectInitException : public CTextException<TXT_CHAINING_INFO_OBJECT_INIT> { using CTextException::CTextException; };
class CRegistryManagerInitException : public CTextException<TXT_REGISTRY_MANAGER_INIT> { using CTextException::CTextException; };
class CCantInsertUnknownGinaException : public CTextException<TXT_INSERT_UNKNOWN_GINA> { using CTextException::CTextException; };

// clang-format on
