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
    Restart,
};

/// Whether a call comes back.
enum class CallEnding
{
    ComesBack,
    Hangs,
    EndsProcess,
};

/// What a day says of the arguments of a call, by their places. One that it says nothing of has no value. A
/// text may be null.
struct CArgumentValues
{
    std::optional<DWORD> numbers[STANDIN_MAX_ARGUMENTS];
    std::optional<std::optional<WideText>> texts[STANDIN_MAX_ARGUMENTS];

    bool Has(DWORD dwIndex) const { return numbers[dwIndex].has_value() || texts[dwIndex].has_value(); }
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
    /// What Winlogon passes; others have their defaults.
    CArgumentValues passes;
    /// What plugins make of it on its way to the GINA, and of what the GINA gives on its way back.
    CArgumentValues reaches;
    CArgumentValues gives;

    std::optional<LONG> ginaResult;
    std::optional<DWORD> ginaVersion;
    StandinFailure failure = StandinFailure::None;
    DWORD dwFailureCode = 0;

    std::optional<LONG> expected;
    /// The DLL that must decide what comes back; empty when the day does not say.
    std::string answeringPlugin;
    /// The DLL that must fail in the call or leave the chain; empty when none may.
    std::string lostPlugin;
    bool bExpectSkipped = false;
    CallEnding ending = CallEnding::ComesBack;
};

/// What is wrong in a day file: "FILE:LINE: what was found; what was expected".
class CDayFileError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The steps of a day. The name is for error messages only. Throws CDayFileError.
std::vector<CStep> ParseDay(const std::string& text, const std::string& name);

/// The steps from one start of the machine to the next, those that restart it left out.
std::vector<std::vector<CStep>> SplitStarts(const std::vector<CStep>& steps);

/// Reads and parses a day file. Throws CDayFileError, also when it cannot be read.
std::vector<CStep> ReadDayFile(const std::string& path);
