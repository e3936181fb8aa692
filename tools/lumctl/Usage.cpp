#include "Usage.h"

#include "Command.h"
#include "machine/Text.h"

namespace {

constexpr std::size_t LINE_WIDTH = 78;
constexpr int NAME_WIDTH = 22;

constexpr char STATUSES[] =
    "Exit status: 0 done, or done already; 1 not as it should be; 2 wrong command line; 3 failed; 4 refused; "
    "5 half done; 6 cannot be told. A command that did not do what it was to do has changed nothing, unless "
    "the status is 5, or 6 because a host did not answer: it may have done it, or do it yet.";

constexpr COptionHelp HELPS[] = {
    {OPTION_JSON, "--json", "", "print JSON"},
    {OPTION_DRY_RUN, "--dry-run", "", "print what would be written, and write nothing"},
    {OPTION_FORCE, "--force", "",
     "make also a change after which the machine does not come up, add a plugin whose DLL cannot be "
     "loaded, or replace a backup file"},
    {OPTION_IN_SERVICE, "--in-service", "",
     "change the registry itself also while lum_gina.dll is in service, which may take back what concerns "
     "the chain"},
    {OPTION_NOW, "--now", "", "load or unload the plugin as well, and at once"},
    {OPTION_CHECK, "--check", "", "end with status 1 when something configured is not in service"},
    {OPTION_NO_SAFE_START, "--no-safe-start", "",
     "leave safe start as it is, which is off without a setting"},
    {OPTION_MACHINE, "--machine", "NAME",
     "ask the host of that machine, as an administrator of it; its registry and DLLs are not looked at"},
    {OPTION_TIMEOUT, "--timeout", "SECONDS", "wait this long for each answer of the host; 30 if not given"},
    {OPTION_SYSTEM, "--system", "DIRECTORY",
     "look for DLLs in this directory instead of where Winlogon looks"},
    {OPTION_HIVE, "--hive", "KEY",
     "the machine is a stopped one, whose SOFTWARE hive was loaded to this key below HKEY_LOCAL_MACHINE"},
    {OPTION_REGISTRY, "--registry", "FILE",
     "the machine's registry is this .reg file; not on Windows, where the system's own is used"},
};

std::string Row(const std::string& name, const std::string& help)
{
    std::string text;
    std::string left = "  " + name;
    if (name.size() > NAME_WIDTH) {
        text = left + "\n";
        left.clear();
    }
    for (const std::string& line : Wrap(help, LINE_WIDTH - NAME_WIDTH - 3)) {
        text += Format("%-*s %s\n", NAME_WIDTH + 2, left.c_str(), line.c_str());
        left.clear();
    }
    return text;
}

std::string WithArgument(const char* szName, const char* szArgument)
{
    return *szArgument != '\0' ? std::string(szName) + " " + szArgument : szName;
}

} // namespace

const std::span<const COptionHelp> OPTION_HELPS = HELPS;

std::string GetUsage()
{
    std::string text = "Usage: lumctl COMMAND [OPTION...]\n"
                       "Shows and changes how LUM GINA stands in the chain of GINAs of this machine, and\n"
                       "talks to the host in service.\n";
    for (const std::span<const CCommand> group : COMMAND_GROUPS) {
        text += '\n';
        for (const CCommand& command : group) {
            text += Row(WithArgument(command.szName, command.szArguments), command.szHelp);
        }
    }
    text += '\n';
    for (const COptionHelp& option : HELPS) {
        text += Row(WithArgument(option.szName, option.szArgument), option.szHelp);
    }
    text += Row("-h, --help", "print this") + Row("--version", "print the version of lumctl");
    text += '\n';
    for (const std::string& line : Wrap(STATUSES, LINE_WIDTH)) {
        text += line + "\n";
    }
    return text;
}
