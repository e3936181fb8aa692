#include "StepList.h"

#include <cstdio>

#include "Calls.h"
#include "MachineStep.h"

namespace {

const char* GetKind(const CArgument& argument)
{
    return argument.bText ? "a text" : argument.pCodes->GetKind();
}

const char* GetDefault(const CArgument& argument)
{
    const char* szNone = argument.bText ? "NULL" : "what --version says";
    return argument.szDefault != nullptr ? argument.szDefault : szNone;
}

void PrintCall(const CWlxCall& call)
{
    const char* szResult = call.result == ResultKind::None ? "nothing" : call.GetResultCodes().GetKind();
    std::printf("%s\n    from version %s, returns %s\n", call.szName, VERSIONS.Describe(call.dwSince).c_str(),
                szResult);
    for (const CArgument& argument : call.arguments) {
        if (argument.CanBeSet()) {
            std::printf("    %s= %s, otherwise %s\n", argument.szName, GetKind(argument),
                        GetDefault(argument));
        }
    }
}

void PrintWords(const CCodes& codes)
{
    const char* szIndent = "";
    for (const std::string& line : Wrap(codes.GetExpected(), 96)) {
        std::printf("%s%s\n", szIndent, line.c_str());
        szIndent = "    ";
    }
}

} // namespace

void PrintSteps()
{
    std::printf("Attach\n    loads the library\nDetach\n    frees it\n"
                "Restart\n    the machine restarts, and a new process goes on\n");
    for (const CMachineStepKind& step : MACHINE_STEPS) {
        std::printf("%s %s\n    %s\n", step.szName, step.szWords, step.szHelp);
    }
    for (const CWlxCall& call : GetCalls()) {
        PrintCall(call);
    }
    std::printf("\nBehind a call: ARGUMENT=VALUE, gina returns RESULT, gina negotiates VERSION,\n"
                "gina fails WAY (RAISE is followed by the code), expect RESULT, expect SKIPPED,\n"
                "expect HANG, expect END, reaches ARGUMENT=VALUE, gives ARGUMENT=VALUE,\n"
                "answered by PLUGIN, loses PLUGIN.\n\n");
    for (const CCodes* pCodes :
         {&VERSIONS, &BOOLS, &SAS_TYPES, &SAS_ACTIONS, &STATUS_OPTIONS, &BUFFER_SIZES, &FAILURES})
    {
        PrintWords(*pCodes);
    }
}
