#include "StepList.h"

#include <cstdio>

#include "Calls.h"

namespace {

void PrintArgument(const CArgument& argument)
{
    if (argument.bText) {
        const char* szDefault = argument.szDefault != nullptr ? argument.szDefault : "NULL";
        std::printf("    %s=\"a text\", otherwise %s\n", argument.szName, szDefault);
    } else {
        const char* szDefault = argument.szDefault != nullptr ? argument.szDefault : "what --version says";
        std::printf("    %s=%s; otherwise %s\n", argument.szName, argument.pCodes->GetExpected().c_str(),
                    szDefault);
    }
}

void PrintCall(const CWlxCall& call)
{
    const char* szResult = call.result == ResultKind::None   ? "returns nothing"
                           : call.result == ResultKind::Bool ? "returns a BOOL"
                                                             : "returns a SAS action";
    std::printf("%s (from version %s, %s)\n", call.szName, VERSIONS.Describe(call.dwSince).c_str(), szResult);
    for (const CArgument& argument : call.arguments) {
        if (argument.CanBeSet()) {
            PrintArgument(argument);
        }
    }
}

} // namespace

void PrintSteps()
{
    std::printf("Attach (loads the library)\nDetach (frees it)\n");
    for (const CWlxCall& call : GetCalls()) {
        PrintCall(call);
    }
    std::printf("\nBehind a call: gina returns RESULT, gina negotiates VERSION, gina fails FAILURE,\n"
                "expect RESULT or expect SKIPPED.\n%s\n%s\n%s (followed by the code, on Windows only)\n",
                BOOLS.GetExpected().c_str(), SAS_ACTIONS.GetExpected().c_str(),
                FAILURES.GetExpected().c_str());
}
