#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "DayWords.h"
#include "machine/Text.h"

// Steps that are no calls of Winlogon's: an administrator works, another installer writes, time passes.

struct CMachineStep
{
    /// Of a command: its words, and the exit status that it must have.
    std::vector<std::string> command;
    DWORD dwExpectedStatus = 0;
    /// Of a registry value below HKEY_LOCAL_MACHINE. No text stands for no value.
    WideText key;
    WideText name;
    std::optional<std::string> text;
    std::string dll;
    DWORD dwSeconds = 0;
};

/// The outcome of such a step.
struct CMachineOutcome
{
    std::string action;
    std::string result;
    std::vector<std::string> output;
    /// How that differs from what the day expects; empty when it does not.
    std::string difference;
};

/// A kind of step.
struct CMachineStepKind
{
    const char* szName;
    /// As --steps shows it.
    const char* szWords;
    const char* szHelp;
    /// Takes the words behind the name; throws std::runtime_error.
    CMachineStep (*pfnParse)(const std::vector<CDayWord>& words);
    /// Throws CSetupError.
    CMachineOutcome (*pfnRun)(const CMachineStep& step);
};

extern const std::vector<CMachineStepKind> MACHINE_STEPS;

/// By its name; null when there is no such one.
const CMachineStepKind* FindMachineStep(const std::string& name);
