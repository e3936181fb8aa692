#pragma once

#include <bit>

#include <windows.h>

#include "GinaNames.h"

// The wire format of the control channel, as server and clients share it. docs/control-protocol.md is the
// description for everybody else.
//
// A request is its code, one byte, and its fields; then comes the reply, and the server disconnects. Integers
// are little-endian, names UTF-16LE: a fixed name is NAME_CAPACITY characters, the terminating zero and
// whatever follows it included; a counted name its length in characters, LONGEST_NAME at most, and the
// characters without terminator.

namespace ControlProtocol {

inline constexpr WCHAR PIPE_NAME[] = TEXT("\\\\.\\pipe\\LUMGinaPipe");

// clang-format off
#define LUM_CONTROL_REQUESTS(REQUEST) \
    REQUEST(LUM_DECREASE_PRIORITY, 100) \
    REQUEST(LUM_INCREASE_PRIORITY, 101) \
    REQUEST(LUM_GET_PASSTHROUGH_GINA, 102) \
    REQUEST(LUM_IS_GINA_IN_CHAINING_LIST, 103) \
    REQUEST(LUM_IS_GINA_IN_PLUGIN_LIST, 104) \
    REQUEST(LUM_QUERY_PLUGIN, 105) \
    REQUEST(LUM_QUERY_PLUGIN_INFO, 112) \
    REQUEST(LUM_ENABLE_GINA, 113) \
    REQUEST(LUM_REMOVE_PLUGIN, 114) \
    REQUEST(LUM_ADD_PLUGIN, 115) \
    REQUEST(LUM_REMOVE_GINA, 116) \
    REQUEST(LUM_VERIFY_LUM_GINA, 117) \
    REQUEST(LUM_ENABLE_ACTIVE_REG, 118) \
    REQUEST(LUM_GET_LUM_GINA_VERSION, 119)
// clang-format on

#define LUM_CONTROL_REQUEST_CODE(NAME, CODE) inline constexpr BYTE NAME = CODE;
LUM_CONTROL_REQUESTS(LUM_CONTROL_REQUEST_CODE)
#undef LUM_CONTROL_REQUEST_CODE

/// The reply byte.
inline constexpr BYTE REPLY_SUCCESS = 0;
inline constexpr BYTE REPLY_FAILURE = 1;

/// What is said about a GINA or plugin. Its pointers mean nothing at the other end: they are written as 0 and
/// ignored when read.
struct CWireRecord
{
    DWORD szAPP;
    DWORD szMTM;
    DWORD dwSpare1;
    DWORD szFriendlyName;
    DWORD szGinaDLL;
    DWORD dwWlxVersion;
    DWORD dwLUMVersion;
    DWORD dwSpare2;
};

static_assert(sizeof(CWireRecord) == 32);
static_assert(std::endian::native == std::endian::little,
              "records and integers go out as they are in memory");

} // namespace ControlProtocol
