#pragma once

#include <bit>

#include <windows.h>

#include "GinaNames.h"

// The wire format of the control channel, for server and clients. docs/control-protocol.md describes it in
// full.
//
// A request is one byte, its code, followed by its fields. The server replies and disconnects. Integers are
// little-endian, names UTF-16LE. A fixed name takes NAME_CAPACITY characters: the name, its terminating zero,
// and anything behind that. A counted name is its length in characters, at most LONGEST_NAME, followed by the
// characters without a terminator.

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

/// The record of a GINA or plugin. Pointers mean nothing in another process: they are sent as 0 and ignored
/// when received.
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
