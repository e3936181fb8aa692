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
  --trace-mask MASK   the trace levels that it writes (0xFFE, all but the polls of
                      the control pipe)
  --no-trace-log      configure no trace log
  --setup FILE        import this .reg file before the day: plugins, their settings, or others
  --registry FILE     load the machine's registry from this .reg file first, when it is there,
                      and save it there afterwards, without its volatile keys; not on Windows,
                      where the system's own registry is used
  --on-this-machine   live the day also where Winlogon has a GinaDLL already or lum_gina.dll is in
                      service; not needed where the registry is a file
  --start NUMBER      live only what the day has for that start of the machine, counted from 1: each
                      start is lived by a process of its own
  --steps             list the steps that a day can hold, with their arguments
  --help              show this text

The GINA and its stand-in are looked for beside this program. The trace settings are written to
the machine's registry. The way is read in the trace log: it is not known when there is none or
the mask leaves entries, exits or warnings out.

Exit codes: 0 everything came back as the GINA or a plugin gave it; 1 a step was not as it should be;
2 the command line or the day file is wrong; 3 a DLL or the registry cannot be used; with --start 4
for a call that does not come back, as the day expects, and 5 instead of 0.
)";

namespace {

COption CodeOption(const char* szName, DWORD& dwTarget, const CCodes& codes)
{
    const auto apply = [&dwTarget, &codes, szName](const std::string& value) {
        const std::optional<DWORD> code = codes.Parse(value);
        if (!code.has_value()) {
            throw CUsageError(std::string(szName) + ' ' + value + ": expected " + codes.GetExpected());
        }
        dwTarget = *code;
    };
    return {szName, true, apply};
}

} // namespace

COptions ParseOptions(int argc, const char* const* argv)
{
    COptions options;
    const std::vector<std::string> days =
        ParseCommandLine(argc, argv,
                         {TextOption("--gina", options.gina),
                          TextOption("--standin", options.standin),
                          TextOption("--trace-log", options.traceLog),
                          TextOption("--registry", options.registry),
                          TextOption("--setup", options.setup),
                          CodeOption("--version", options.dwVersion, VERSIONS),
                          CodeOption("--trace-mask", options.dwTraceMask, NUMBERS),
                          CodeOption("--start", options.dwStart, NUMBERS),
                          FlagOption("--on-this-machine", options.bOnThisMachine),
                          FlagOption("--help", options.bHelp),
                          FlagOption("--steps", options.bSteps),
                          {"--no-trace-log", false, [&](const std::string&) { options.traceLog.clear(); }}});
    if (days.size() > 1) {
        throw CUsageError("a second day, " + days[1]);
    }
    if (days.empty() && !options.bHelp && !options.bSteps) {
        throw CUsageError("no day was named");
    }
    options.day = days.empty() ? std::string() : days[0];
    return options;
}
