#include "Codes.h"

#include <cstdlib>

#include "StandinGina.h"
#include "machine/Text.h"
#include <winwlx.h>

namespace {

constexpr CCode VERSION_CODES[] = {
    {"1.0", WLX_VERSION_1_0}, {"1.1", WLX_VERSION_1_1}, {"1.2", WLX_VERSION_1_2},
    {"1.3", WLX_VERSION_1_3}, {"1.4", WLX_VERSION_1_4},
};

constexpr CCode BOOL_CODES[] = {{"FALSE", FALSE}, {"TRUE", TRUE}};

constexpr CCode SAS_TYPE_CODES[] = {
    {"TIMEOUT", WLX_SAS_TYPE_TIMEOUT},
    {"CTRL_ALT_DEL", WLX_SAS_TYPE_CTRL_ALT_DEL},
    {"SCRNSVR_TIMEOUT", WLX_SAS_TYPE_SCRNSVR_TIMEOUT},
    {"SCRNSVR_ACTIVITY", WLX_SAS_TYPE_SCRNSVR_ACTIVITY},
    {"USER_LOGOFF", WLX_SAS_TYPE_USER_LOGOFF},
    {"SC_INSERT", WLX_SAS_TYPE_SC_INSERT},
    {"SC_REMOVE", WLX_SAS_TYPE_SC_REMOVE},
    {"AUTHENTICATED", WLX_SAS_TYPE_AUTHENTICATED},
    {"SC_FIRST_READER_ARRIVED", WLX_SAS_TYPE_SC_FIRST_READER_ARRIVED},
    {"SC_LAST_READER_REMOVED", WLX_SAS_TYPE_SC_LAST_READER_REMOVED},
    {"SWITCHUSER", WLX_SAS_TYPE_SWITCHUSER},
};

constexpr CCode SAS_ACTION_CODES[] = {
    {"LOGON", WLX_SAS_ACTION_LOGON},
    {"NONE", WLX_SAS_ACTION_NONE},
    {"LOCK_WKSTA", WLX_SAS_ACTION_LOCK_WKSTA},
    {"LOGOFF", WLX_SAS_ACTION_LOGOFF},
    {"SHUTDOWN", WLX_SAS_ACTION_SHUTDOWN},
    {"PWD_CHANGED", WLX_SAS_ACTION_PWD_CHANGED},
    {"TASKLIST", WLX_SAS_ACTION_TASKLIST},
    {"UNLOCK_WKSTA", WLX_SAS_ACTION_UNLOCK_WKSTA},
    {"FORCE_LOGOFF", WLX_SAS_ACTION_FORCE_LOGOFF},
    {"SHUTDOWN_POWER_OFF", WLX_SAS_ACTION_SHUTDOWN_POWER_OFF},
    {"SHUTDOWN_REBOOT", WLX_SAS_ACTION_SHUTDOWN_REBOOT},
    {"SHUTDOWN_SLEEP", WLX_SAS_ACTION_SHUTDOWN_SLEEP},
    {"SHUTDOWN_SLEEP2", WLX_SAS_ACTION_SHUTDOWN_SLEEP2},
    {"SHUTDOWN_HIBERNATE", WLX_SAS_ACTION_SHUTDOWN_HIBERNATE},
    {"RECONNECTED", WLX_SAS_ACTION_RECONNECTED},
    {"DELAYED_FORCE_LOGOFF", WLX_SAS_ACTION_DELAYED_FORCE_LOGOFF},
    {"SWITCH_CONSOLE", WLX_SAS_ACTION_SWITCH_CONSOLE},
};

constexpr CCode STATUS_OPTION_CODES[] = {
    {"NOANIMATION", STATUSMSG_OPTION_NOANIMATION},
    {"SETFOREGROUND", STATUSMSG_OPTION_SETFOREGROUND},
};

constexpr CCode FAILURE_CODES[] = {
    {"READ_NULL", static_cast<DWORD>(StandinFailure::ReadNull)},
    {"DIVIDE_BY_ZERO", static_cast<DWORD>(StandinFailure::DivideByZero)},
    {"EXHAUST_STACK", static_cast<DWORD>(StandinFailure::ExhaustStack)},
    {"THROW", static_cast<DWORD>(StandinFailure::Throw)},
    {"RAISE", static_cast<DWORD>(StandinFailure::StructuredException)},
    {"EXIT_PROCESS", static_cast<DWORD>(StandinFailure::ExitProcess)},
};

/// A whole text that is a 32-bit number; a negative one wraps, as it does in the result of a call.
std::optional<DWORD> ParseNumber(const std::string& text)
{
    char* pEnd = nullptr;
    const long long nValue = std::strtoll(text.c_str(), &pEnd, 0);
    if (text.empty() || *pEnd != '\0' || nValue < -0x80000000LL || nValue > 0xFFFFFFFFLL) {
        return std::nullopt;
    }
    return static_cast<DWORD>(nValue);
}

} // namespace

const CCodes VERSIONS("a version", VERSION_CODES);
const CCodes BOOLS("a BOOL", BOOL_CODES);
const CCodes SAS_TYPES("a SAS type", SAS_TYPE_CODES);
const CCodes SAS_ACTIONS("a SAS action", SAS_ACTION_CODES);
const CCodes STATUS_OPTIONS("a status option", STATUS_OPTION_CODES);
const CCodes BUFFER_SIZES("a buffer size in characters", {}, MAX_STATUS_SIZE);
const CCodes NUMBERS("a number", {});
const CCodes FAILURES("a way to fail", FAILURE_CODES, CCodes::WORDS_ONLY);

std::optional<DWORD> CCodes::Parse(const std::string& text) const
{
    for (const CCode& code : m_codes) {
        if (text == code.szWord) {
            return code.dwValue;
        }
    }
    const std::optional<DWORD> value = ParseNumber(text);
    return m_dwMax != WORDS_ONLY && value.has_value() && *value <= m_dwMax ? value : std::nullopt;
}

std::string CCodes::Describe(DWORD dwValue) const
{
    for (const CCode& code : m_codes) {
        if (dwValue == code.dwValue) {
            return code.szWord;
        }
    }
    return Format(dwValue < 0x10000 ? "%u" : "0x%08x", static_cast<unsigned>(dwValue));
}

std::string CCodes::GetExpected() const
{
    std::string expected = m_szKind;
    const char* szSeparator = ": ";
    for (const CCode& code : m_codes) {
        expected += szSeparator + std::string(code.szWord);
        szSeparator = ", ";
    }
    if (m_dwMax == WORDS_ONLY) {
        return expected;
    }
    expected += m_codes.empty() ? "" : " or a number";
    return m_dwMax == ANY_NUMBER ? expected : expected + Format(" up to %u", static_cast<unsigned>(m_dwMax));
}
