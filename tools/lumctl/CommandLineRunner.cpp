#include "CommandLineRunner.h"

#include <algorithm>

#include "CommandLine.h"
#include "MachineScope.h"
#include "Usage.h"

namespace {

const CCommand* FindNamed(const std::string& name)
{
    for (const std::span<const CCommand> group : COMMAND_GROUPS) {
        for (const CCommand& command : group) {
            if (name == command.szName) {
                return &command;
            }
        }
    }
    return nullptr;
}

/// Takes the name of a command, which may have two words.
const CCommand& TakeCommand(std::vector<std::string>& words)
{
    for (std::size_t nWords = std::min<std::size_t>(words.size(), 2); nWords > 0; --nWords) {
        const std::string name = nWords == 2 ? words[0] + " " + words[1] : words[0];
        if (const CCommand* pCommand = FindNamed(name); pCommand != nullptr) {
            words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(nWords));
            return *pCommand;
        }
    }
    throw CUsageError(words.empty() ? "no command was named"
                                    : "unknown command " + words[0] +
                                          (words.size() > 1 ? " " + words[1] : std::string()));
}

std::vector<std::string> SplitWords(const std::string& text)
{
    std::vector<std::string> words;
    for (std::size_t nBegin = 0; nBegin < text.size();) {
        const std::size_t nEnd = std::min(text.find(' ', nBegin), text.size());
        words.push_back(text.substr(nBegin, nEnd - nBegin));
        nBegin = nEnd + 1;
    }
    return words;
}

void CheckWords(const CCommand& command, const std::vector<std::string>& words)
{
    const std::vector<std::string> names = SplitWords(command.szArguments);
    if (words.size() > names.size()) {
        throw CUsageError(std::string(command.szName) + " takes no " + words[names.size()]);
    }
    if (words.size() < names.size() && names[words.size()].front() != '[') {
        throw CUsageError(std::string(command.szName) + " needs " + names[words.size()]);
    }
}

void CheckOptions(const CCommand& command, unsigned given)
{
    for (const COptionHelp& option : OPTION_HELPS) {
        if ((given & option.nBit & ~command.options) != 0) {
            throw CUsageError(std::string(command.szName) + " has no option " + option.szName);
        }
    }
}

/// The options of a command line, and which of them were given.
struct CGiven
{
    CArguments arguments;
    unsigned options = 0;

    COption Flag(const char* szName, unsigned nBit, bool CArguments::*pMember)
    {
        return {szName, false, [this, nBit, pMember](const std::string&) {
                    arguments.*pMember = true;
                    options |= nBit;
                }};
    }
    COption Text(const char* szName, unsigned nBit, std::string CArguments::*pMember)
    {
        return {szName, true, [this, nBit, pMember](const std::string& value) {
                    arguments.*pMember = value;
                    options |= nBit;
                }};
    }
};

} // namespace

ExitStatus RunCommandLine(int argc, const char* const* argv, std::string& output, bool& bIsChange)
{
    CGiven given;
    bool bHelp = false;
    bool bVersion = false;
    std::vector<std::string> words =
        ParseCommandLine(argc, argv,
                         {given.Flag("--json", OPTION_JSON, &CArguments::bJson),
                          given.Flag("--dry-run", OPTION_DRY_RUN, &CArguments::bDryRun),
                          given.Flag("--force", OPTION_FORCE, &CArguments::bForce),
                          given.Flag("--in-service", OPTION_IN_SERVICE, &CArguments::bInService),
                          given.Flag("--now", OPTION_NOW, &CArguments::bNow),
                          given.Flag("--check", OPTION_CHECK, &CArguments::bCheck),
                          given.Flag("--no-safe-start", OPTION_NO_SAFE_START, &CArguments::bNoSafeStart),
                          given.Text("--machine", OPTION_MACHINE, &CArguments::machine),
                          given.Text("--timeout", OPTION_TIMEOUT, &CArguments::timeout),
                          given.Text("--system", OPTION_SYSTEM, &CArguments::system),
                          given.Text("--registry", OPTION_REGISTRY, &CArguments::registry),
                          given.Text("--hive", OPTION_HIVE, &CArguments::hive), FlagOption("--help", bHelp),
                          FlagOption("-h", bHelp), FlagOption("--version", bVersion)});
    if (bHelp || bVersion) {
        output += bHelp ? GetUsage() : std::string("lumctl ") + LUMCTL_VERSION + "\n";
        return STATUS_DONE;
    }
    const CCommand& command = TakeCommand(words);
    CheckWords(command, words);
    CheckOptions(command, given.options);
    CMachineScope::RequireOne(given.arguments);
    given.arguments.words = words;
    bIsChange = (command.options & IS_CHANGE) != 0 && !given.arguments.bDryRun;
    return command.pfnRun(given.arguments, output);
}
