#include "Options.h"

#include <optional>

#include "Codes.h"

const char USAGE[] =
    R"(Usage: winlogon-sim [OPTION...] DAY
Loads a GINA library as Winlogon does and lives the steps of the file DAY through it, with a
stand-in standard GINA behind it. Shows the way of each call through the plugins, what reached
the GINA and what came back, and where the two differ without a plugin's doing.

  --gina NAME         the library to load (lum_gina.dll)
  --standin NAME      the stand-in GINA that the library passes its calls to; is written to the
                      library's configuration (what that names already, or msgina.dll)
  --version VERSION   the interface version that Winlogon offers (1.4)
  --trace-log PATH    where the library writes its trace log (winlogon-sim.log)
  --trace-mask MASK   the trace levels that it writes (0xFFF, all of them)
  --no-trace-log      configure no trace log
  --setup FILE        import this .reg file before the day: plugins, their settings, or others
  --registry FILE     load the machine's registry from this .reg file first, when it is there,
                      and save it there afterwards, without its volatile keys; not on Windows,
                      where the system's own registry is used
  --steps             list the steps that a day can hold, with their arguments
  --help              show this text

The GINA and its stand-in are looked for beside this program. The trace settings are written to
the machine's registry. The way is read in the trace log: it is not known when there is none or
the mask leaves entries, exits or warnings out.

Exit codes: 0 everything came back as the GINA or a plugin gave it; 1 a step was not as it should be;
2 the command line or the day file is wrong; 3 a DLL or the registry cannot be used.
)";

namespace {

void SetCode(DWORD& dwTarget, const CCodes& codes, const std::string& option, const std::string& value)
{
    const std::optional<DWORD> code = codes.Parse(value);
    if (!code.has_value()) {
        throw CUsageError(option + ' ' + value + ": expected " + codes.GetExpected());
    }
    dwTarget = *code;
}

/// Where the value of an option that takes a text belongs; null for any other option.
std::string* FindText(COptions& options, const std::string& option)
{
    struct
    {
        const char* szOption;
        std::string& target;
    } const texts[] = {
        {"--gina", options.gina},         {"--standin", options.standin}, {"--trace-log", options.traceLog},
        {"--registry", options.registry}, {"--setup", options.setup},
    };
    for (const auto& text : texts) {
        if (option == text.szOption) {
            return &text.target;
        }
    }
    return nullptr;
}

void ApplyValue(COptions& options, const std::string& option, const std::string& value)
{
    if (std::string* pText = FindText(options, option); pText != nullptr) {
        *pText = value;
    } else if (option == "--version") {
        SetCode(options.dwVersion, VERSIONS, option, value);
    } else {
        SetCode(options.dwTraceMask, NUMBERS, option, value);
    }
}

bool TakesValue(COptions& options, const std::string& option)
{
    return option == "--version" || option == "--trace-mask" || FindText(options, option) != nullptr;
}

/// Applies an option without a value; false when there is no such option.
bool ApplyFlag(COptions& options, const std::string& option)
{
    if (option == "--no-trace-log") {
        options.traceLog.clear();
    } else if (option == "--help") {
        options.bHelp = true;
    } else if (option == "--steps") {
        options.bSteps = true;
    } else {
        return false;
    }
    return true;
}

void SetDay(COptions& options, const std::string& day)
{
    if (!options.day.empty()) {
        throw CUsageError("a second day, " + day);
    }
    options.day = day;
}

} // namespace

COptions ParseOptions(int argc, const char* const* argv)
{
    COptions options;
    for (int nArgument = 1; nArgument < argc; ++nArgument) {
        const std::string argument = argv[nArgument];
        if (argument.empty() || argument[0] != '-') {
            SetDay(options, argument);
        } else if (TakesValue(options, argument)) {
            if (++nArgument == argc || *argv[nArgument] == '\0') {
                throw CUsageError(argument + " needs a value");
            }
            ApplyValue(options, argument, argv[nArgument]);
        } else if (!ApplyFlag(options, argument)) {
            throw CUsageError("unknown option " + argument);
        }
    }
    if (options.day.empty() && !options.bHelp && !options.bSteps) {
        throw CUsageError("no day was named");
    }
    return options;
}
