#include <algorithm>
#include <cstdio>

#include "CommandError.h"
#include "CommandLine.h"
#include "CommandLineRunner.h"
#include "JsonWriter.h"
#include "machine/SetupError.h"
#include "machine/Text.h"

namespace {

/// What a terminal would obey is shown instead, line by line.
std::string Printable(const std::string& text)
{
    std::string printable;
    for (std::size_t nBegin = 0; nBegin < text.size();) {
        const std::size_t nEnd = std::min(text.find('\n', nBegin), text.size());
        printable += Shown(ToWide(text.substr(nBegin, nEnd - nBegin))) + (nEnd < text.size() ? "\n" : "");
        nBegin = nEnd + 1;
    }
    return printable;
}

/// Returns false when not everything could be printed.
bool Print(const std::string& text)
{
    const std::string output = Printable(text);
    return std::fwrite(output.data(), 1, output.size(), stdout) == output.size() && std::fflush(stdout) == 0;
}

bool WantsJson(int argc, const char* const* argv)
{
    return std::find(argv + 1, argv + argc, std::string("--json")) != argv + argc;
}

ExitStatus Tell(ExitStatus status, const std::string& reason)
{
    std::fprintf(stderr, "lumctl: %s\n", Shown(ToWide(reason)).c_str());
    return status;
}

/// Prints the output so far, and then the reason. With JSON there is one text only: the one with the reason.
ExitStatus Fail(bool bJson, std::string output, ExitStatus status, const std::string& reason)
{
    if (bJson) {
        output.clear();
        CJsonWriter json(output);
        json.BeginObject();
        json.Text("error", reason);
        json.Number("status", status);
        json.EndObject();
    }
    Print(output);
    return Tell(status, reason);
}

} // namespace

int main(int argc, char** argv)
{
    const bool bJson = WantsJson(argc, argv);
    std::string output;
    bool bIsChange = false;
    try {
        const ExitStatus status = RunCommandLine(argc, argv, output, bIsChange);
        return Print(output) ? status
               : bIsChange   ? Tell(status, "it is done, and what it has to say could not be printed")
                             : Tell(STATUS_FAILED, "what it has to say could not be printed");
    } catch (const CUsageError& error) {
        return Fail(bJson, "", STATUS_USAGE, std::string(error.what()) + " (see lumctl --help)");
    } catch (const CCommandError& error) {
        return Fail(bJson, output, error.status, error.what());
    } catch (const std::exception& error) {
        return Fail(bJson, output, STATUS_FAILED, error.what());
    }
}
