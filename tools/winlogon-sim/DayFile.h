#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Calls.h"
#include "MachineStep.h"

// The form of a day file is described in days/README.md.

enum class StepKind
{
    Attach,
    Detach,
    Call,
    Machine,
};

/// One step of a day.
struct CStep
{
    int nLine = 0;
    StepKind kind = StepKind::Call;
    /// Null unless it is a call.
    const CWlxCall* pCall = nullptr;
    /// Null unless it is a step of the machine's.
    const CMachineStepKind* pMachineStep = nullptr;
    CMachineStep machineStep;
    /// The values that the day sets, by argument: a number, or a text that may be null. Others have their
    /// defaults.
    std::optional<DWORD> numbers[STANDIN_MAX_ARGUMENTS];
    std::optional<std::optional<WideText>> texts[STANDIN_MAX_ARGUMENTS];

    std::optional<LONG> ginaResult;
    std::optional<DWORD> ginaVersion;
    StandinFailure failure = StandinFailure::None;
    DWORD dwFailureCode = 0;

    std::optional<LONG> expected;
    /// The DLL that must decide what comes back; empty when the day does not say.
    std::string answeringPlugin;
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
