#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Calls.h"

// A day is a text file with one step a line; what follows a word that begins with # is a comment.
//
//     Attach                              Winlogon loads the library
//     WlxNAME [ARGUMENT=VALUE ...] [gina DOES ...] [expect RESULT]
//     Detach                              Winlogon frees it
//
// VALUE is a word, a number or a "text in quotes"; NULL passes a null pointer for a text. A text holds no
// quotes, and backslashes in it are plain characters. What the stand-in GINA does in this one step:
//
//     gina returns RESULT                 TRUE, FALSE, the name of a SAS action, or a number
//     gina negotiates VERSION             in WlxNegotiate
//     gina fails FAILURE                  READ_NULL, DIVIDE_BY_ZERO, EXHAUST_STACK or THROW
//     gina fails RAISE CODE               a structured exception, on Windows only
//
// Without them it does what a content GINA does. Every result is compared with what the GINA gave;
// "expect RESULT" says in addition what that must be, and "expect SKIPPED" that Winlogon does not make the
// call, because the agreed version does not have it or because no version was agreed.

enum class StepKind
{
    Attach,
    Detach,
    Call
};

/// One step of a day.
struct CStep
{
    int nLine = 0;
    StepKind kind = StepKind::Call;
    /// Null unless kind is CALL.
    const CWlxCall* pCall = nullptr;
    /// The values that the day sets, by argument: a number, or a text that may be null. Others have their
    /// defaults.
    std::optional<DWORD> numbers[STANDIN_MAX_ARGUMENTS];
    std::optional<std::optional<WideText>> texts[STANDIN_MAX_ARGUMENTS];

    std::optional<LONG> ginaResult;
    std::optional<DWORD> ginaVersion;
    StandinFailure failure = StandinFailure::None;
    DWORD dwFailureCode = 0;

    std::optional<LONG> expected;
    bool bExpectSkipped = false;
};

/// What is wrong in a day file: "FILE:LINE: what was found; what was expected".
class CDayFileError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The steps of a day. The name is for error messages only. Throws CDayFileError.
std::vector<CStep> ParseDay(const std::string& text, const std::string& name);

/// Reads and parses a day file. Throws CDayFileError, also when it cannot be read.
std::vector<CStep> ReadDayFile(const std::string& path);
