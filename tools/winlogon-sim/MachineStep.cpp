#include "MachineStep.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "RegistryValues.h"
#include "machine/SetupError.h"
#include "machine/ChildProcess.h"

namespace {

// Long enough for a machine that is emulated.
constexpr DWORD LONGEST_COMMAND_MILLISECONDS = 180000;
constexpr DWORD LONGEST_WAIT_MILLISECONDS = 60000;
constexpr DWORD LONGEST_PAUSE_SECONDS = 86400;
constexpr DWORD POLL_MILLISECONDS = 20;

/// Waits until a condition holds; false when it does not in time.
template <typename Condition>
bool Await(Condition condition)
{
    const DWORD dwStart = GetTickCount();
    while (!condition()) {
        if (GetTickCount() - dwStart >= LONGEST_WAIT_MILLISECONDS) {
            return false;
        }
        Sleep(POLL_MILLISECONDS);
    }
    return true;
}

std::string Describe(const std::optional<std::string>& text)
{
    return text.has_value() ? '"' + *text + '"' : "no value";
}

DWORD ParseNumber(const std::string& word, unsigned long nLargest, const char* szExpected)
{
    char* pEnd = nullptr;
    const unsigned long nNumber = std::strtoul(word.c_str(), &pEnd, 10);
    if (word.empty() || *pEnd != '\0' || nNumber > nLargest) {
        throw std::runtime_error('"' + word + "\"; expected " + szExpected);
    }
    return static_cast<DWORD>(nNumber);
}

CMachineStep ParseCommand(const std::vector<CDayWord>& words)
{
    CMachineStep step;
    for (const CDayWord& word : words) {
        step.command.push_back(word.bHasValue ? word.name + '=' + word.value : word.name);
    }
    std::vector<std::string>& command = step.command;
    if (command.size() >= 2 && command[command.size() - 2] == "expect") {
        step.dwExpectedStatus = ParseNumber(command.back(), 0xFFFFFFFF, "an exit status");
        command.resize(command.size() - 2);
    }
    if (command.empty()) {
        throw std::runtime_error("the end of the line; expected a program and its arguments");
    }
    return step;
}

CMachineStep ParseSeconds(const std::vector<CDayWord>& words)
{
    CMachineStep step;
    const std::string word = words.size() == 1 && !words[0].bHasValue ? words[0].name : "";
    step.dwSeconds = ParseNumber(word, LONGEST_PAUSE_SECONDS, "a number of seconds, at most 86400");
    return step;
}

/// Arguments of a step, each of which has to be there.
struct CStepArgument
{
    const char* szName;
    void (*pfnSet)(CMachineStep& step, const CDayWord& word);
};

constexpr CStepArgument KEY = {
    "key", [](CMachineStep& step, const CDayWord& word) { step.key = ToWide(word.value); }};
constexpr CStepArgument NAME = {
    "name", [](CMachineStep& step, const CDayWord& word) { step.name = ToWide(word.value); }};
constexpr CStepArgument TEXT_OR_NULL = {"text", [](CMachineStep& step, const CDayWord& word) {
                                            if (word.bQuoted || word.value != "NULL") {
                                                step.text = word.value;
                                            }
                                        }};
constexpr CStepArgument DLL = {"dll",
                               [](CMachineStep& step, const CDayWord& word) { step.dll = word.value; }};

template <const CStepArgument&... arguments>
CMachineStep ParseArguments(const std::vector<CDayWord>& words)
{
    CMachineStep step;
    std::string expected;
    const bool bFits = words.size() == sizeof...(arguments);
    std::size_t nFound = 0;
    const auto take = [&](const CStepArgument& argument) {
        expected += (expected.empty() ? "" : ", ") + std::string(argument.szName) + '=';
        for (const CDayWord& word : words) {
            if (word.bHasValue && word.name == argument.szName) {
                argument.pfnSet(step, word);
                ++nFound;
                return;
            }
        }
    };
    (take(arguments), ...);
    if (!bFits || nFound != sizeof...(arguments)) {
        throw std::runtime_error("other arguments; expected " + expected + " once each");
    }
    return step;
}

std::string JoinWords(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

std::vector<std::string> SplitLines(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::size_t nBegin = 0; nBegin < text.size();) {
        const std::size_t nEnd = std::min(text.find('\n', nBegin), text.size());
        lines.push_back(text.substr(nBegin, nEnd - nBegin));
        nBegin = nEnd + 1;
    }
    return lines;
}

CMachineOutcome RunCommand(const CMachineStep& step)
{
    std::vector<WideText> words;
    std::transform(step.command.begin(), step.command.end(), std::back_inserter(words), ToWide);
    Platform::CChildEnd end;
    const LONG lResult = Platform::RunChild(words, LONGEST_COMMAND_MILLISECONDS, end);
    if (lResult != ERROR_SUCCESS && lResult != ERROR_TIMEOUT) {
        throw CSetupError(
            Format("cannot run %s: error %d", step.command[0].c_str(), static_cast<int>(lResult)));
    }
    CMachineOutcome outcome = {JoinWords(step.command), "exit status " + std::to_string(end.dwExitStatus),
                               SplitLines(end.output), ""};
    if (lResult == ERROR_TIMEOUT) {
        outcome.difference = "the command did not end in time";
    } else if (end.dwExitStatus != step.dwExpectedStatus) {
        outcome.difference = "the day expects exit status " + std::to_string(step.dwExpectedStatus);
    }
    return outcome;
}

CMachineOutcome SetValue(const CMachineStep& step)
{
    if (step.text.has_value()) {
        WriteText(step.key, step.name, *step.text);
    } else {
        DeleteValue(step.key, step.name);
    }
    return {ToNarrow(step.key.c_str()),
            ToNarrow(step.name.c_str()) + (step.text.has_value() ? " = " + Describe(step.text) : " deleted"),
            {},
            ""};
}

CMachineOutcome AwaitValue(const CMachineStep& step)
{
    std::optional<std::string> text;
    const bool bDone = Await([&] {
        text = ReadText(step.key, step.name);
        return text == step.text;
    });
    return {ToNarrow(step.key.c_str()),
            ToNarrow(step.name.c_str()) + " = " + Describe(text),
            {},
            bDone ? "" : "the day expects " + Describe(step.text)};
}

CMachineOutcome Pause(const CMachineStep& step)
{
    Sleep(step.dwSeconds * 1000);
    return {"", std::to_string(step.dwSeconds) + " s later", {}, ""};
}

CMachineOutcome AwaitFree(const CMachineStep& step)
{
    const bool bFree = Await([name = ToWide(step.dll)] { return GetModuleHandleW(name.c_str()) == nullptr; });
    return {step.dll, bFree ? "not loaded" : "loaded", {}, bFree ? "" : "the day expects that it is not"};
}

} // namespace

const std::vector<CMachineStepKind> MACHINE_STEPS = {
    {"Admin", "PROGRAM ARGUMENT... [expect STATUS]",
     "a program runs in a process of its own, and must end with this status or 0", ParseCommand, RunCommand},
    {"SetValue", "key=KEY name=NAME text=TEXT",
     "another installer writes a registry text below HKEY_LOCAL_MACHINE, or deletes it (text=NULL)",
     ParseArguments<KEY, NAME, TEXT_OR_NULL>, SetValue},
    {"AwaitValue", "key=KEY name=NAME text=TEXT", "waits until the text is this one, at most a minute",
     ParseArguments<KEY, NAME, TEXT_OR_NULL>, AwaitValue},
    {"AwaitFree", "dll=NAME", "waits until that DLL is not loaded, at most a minute", ParseArguments<DLL>,
     AwaitFree},
    {"Wait", "SECONDS", "the library stays in service meanwhile, for whoever wants to try lumctl",
     ParseSeconds, Pause},
};

const CMachineStepKind* FindMachineStep(const std::string& name)
{
    const auto kind = std::find_if(MACHINE_STEPS.begin(), MACHINE_STEPS.end(),
                                   [&](const CMachineStepKind& step) { return name == step.szName; });
    return kind != MACHINE_STEPS.end() ? &*kind : nullptr;
}
