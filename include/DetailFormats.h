#pragma once

#include <windows.h>

// The formats of message texts. All but FMT_TEXT end with the source line and the file name.

inline constexpr WCHAR FMT_TEXT[] = TEXT("%s");
inline constexpr WCHAR FMT_PLAIN[] = TEXT("%s, ( %d ) %s");
inline constexpr WCHAR FMT_ARGUMENT[] = TEXT("%s, Argument: %s, ( %d ) %s");
inline constexpr WCHAR FMT_VARIABLE[] = TEXT("%s, Variable: %s, ( %d ) %s");
inline constexpr WCHAR FMT_VARIABLE_ERROR[] = TEXT("%s, Variable: %s, Error: 0x%x, ( %d ) %s");
inline constexpr WCHAR FMT_ERROR[] = TEXT("%s, Error: 0x%x, ( %d ) %s");
inline constexpr WCHAR FMT_PLUGIN[] = TEXT("%s, Plugin: %s, ( %d ) %s");
inline constexpr WCHAR FMT_FUNCTION[] = TEXT("%s, Function: %s, Error: 0x%x, ( %d ) %s");
inline constexpr WCHAR FMT_FILENAME[] = TEXT("%s, Filename: %s, Error: 0x%x, ( %d ) %s");
inline constexpr WCHAR FMT_FILE[] = TEXT("%s, File: %s, Error: 0x%x, ( %d ) %s");
inline constexpr WCHAR FMT_REGISTRY_KEY[] = TEXT("%s, Registry Key: %s, Error: 0x%x, ( %d ) %s");
inline constexpr WCHAR FMT_REGISTRY_VALUE[] = TEXT("%s, Registry Value: %s, Error: 0x%x, ( %d ) %s");
inline constexpr WCHAR FMT_VALUE_NAME[] = TEXT("%s, Value Name: %s, ( %d ) %s");
inline constexpr WCHAR FMT_KEY[] = TEXT("%s, Key: %s, ( %d ) %s");
inline constexpr WCHAR FMT_STRING[] = TEXT("%s, String: %s, ( %d ) %s");
inline constexpr WCHAR FMT_POINTER[] = TEXT("%s, Pointer: %s, ( %d ) %s");
inline constexpr WCHAR FMT_GINA_DLL[] = TEXT("%s, GinaDLL: %s, ( %d ) %s");
inline constexpr WCHAR FMT_PASSTHROUGH[] = TEXT("%s, GinaDLL: %s, Passthrough value: %s, ( %d ) %s");
inline constexpr WCHAR FMT_RESOURCE[] = TEXT("%s, Resource ID: %d, Error: 0x%x, ( %d ) %s");
inline constexpr WCHAR FMT_THREAD_ERROR[] = TEXT("%s, Thread: %s, Error: %d, ( %d ) %s");

// Trace statements: class, operation (and thread) instead of a text.
inline constexpr WCHAR FMT_OPERATION[] = TEXT("%s::%s, ( %d ) %s");
inline constexpr WCHAR FMT_OPERATION_RESULT[] = TEXT("%s::%s, Return: 0x%x, ( %d ) %s");
inline constexpr WCHAR FMT_DESTRUCTOR[] = TEXT("%s::~%s, ( %d ) %s");
inline constexpr WCHAR FMT_THREAD_OPERATION[] = TEXT("%s::%s::%s, ( %d ) %s");
inline constexpr WCHAR FMT_THREAD_OPERATION_RESULT[] = TEXT("%s::%s::%s, Return: 0x%x, ( %d ) %s");
