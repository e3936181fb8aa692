#include "ChainCommands.h"

#include "ChainBackup.h"
#include "ChainFindings.h"
#include "ChainPlan.h"
#include "CommandError.h"
#include "RecommendedValues.h"
#include "machine/WholeFile.h"

namespace {

ExitStatus Make(COfflineMachine& machine, const CChainChange& change, std::string& output)
{
    const ExitStatus status = MakeChange(machine.chain, change, machine.arguments, output);
    if (!machine.arguments.bDryRun) {
        machine.scope.Save();
        output += "Written and read back.\n";
    }
    return status;
}

ExitStatus Show(const CArguments& arguments, std::string& output)
{
    COfflineMachine machine(arguments);
    (arguments.bJson ? PrintChainJson : PrintChain)(machine.Look(), GetDllSearch(machine.system), output);
    return STATUS_DONE;
}

ExitStatus Check(const CArguments& arguments, std::string& output)
{
    COfflineMachine machine(arguments);
    RequireDllSearch(machine.system);
    const std::vector<CFinding> findings = CheckChain(machine.Look(), machine.system);
    const ExitStatus status = HasSeverity(findings, Severity::Danger)  ? STATUS_BAD
                              : HasSeverity(findings, Severity::Doubt) ? STATUS_UNCERTAIN
                                                                       : STATUS_DONE;
    if (arguments.bJson) {
        PrintFindingsJson(findings, GetDllSearch(machine.system), output);
        return status;
    }
    PrintFindings(findings, output);
    PrintDoubt(GetDllSearch(machine.system), output);
    output += status == STATUS_DONE  ? "The next boot is safe.\n"
              : status == STATUS_BAD ? "The next boot is NOT SAFE.\n"
                                     : "Whether the next boot is safe cannot be told.\n";
    return status;
}

ExitStatus Enable(const CArguments& arguments, std::string& output)
{
    COfflineMachine machine(arguments);
    std::optional<CChainChange> change = PlanEnable(machine, output);
    if (!change) {
        output += "lum_gina.dll is in the chain already; nothing to do.\n";
        return STATUS_DONE;
    }
    if (AddRecommendedValues(change->after, !arguments.bNoSafeStart)) {
        output += "With the recommended settings, where they are missing:\n";
    }
    return Make(machine, *change, output);
}

ExitStatus Disable(const CArguments& arguments, std::string& output)
{
    COfflineMachine machine(arguments);
    const std::optional<CChainChange> change = PlanDisable(machine, output);
    if (!change) {
        output += "lum_gina.dll is not in the chain; nothing to do.\n";
        return STATUS_DONE;
    }
    return Make(machine, *change, output);
}

ExitStatus Remove(const CArguments& arguments, std::string& output)
{
    COfflineMachine machine(arguments);
    return Make(machine, PlanRemove(machine, arguments.words[0], output), output);
}

ExitStatus Backup(const CArguments& arguments, std::string& output)
{
    COfflineMachine machine(arguments);
    if (machine.lock.IsOn(arguments.words[0])) {
        throw CCommandError("chain backup: " + arguments.words[0] + " is the registry itself",
                            STATUS_REFUSED);
    }
    WriteWholeFile(arguments.words[0], WriteBackup(machine.values, SafeOrder(machine.chain, machine.values)),
                   arguments.bForce);
    output += "The chain has been backed up into " + arguments.words[0] + ".\n";
    return STATUS_DONE;
}

ExitStatus Restore(const CArguments& arguments, std::string& output)
{
    COfflineMachine machine(arguments);
    const CChainValues restored = ReadBackup(machine.chain, ReadWholeFile(arguments.words[0]));
    CChainChange change;
    change.before = machine.chain.ReadValues();
    change.after = change.before;
    for (const CChainValue& value : restored) {
        change.after.Set(value.place, value.data);
    }
    change.command = "chain restore";
    if (SafeOrder(machine.chain, change.before, change.after).empty()) {
        output += "The chain is as it was backed up; nothing to do.\n";
        return STATUS_DONE;
    }
    return Make(machine, change, output);
}

constexpr unsigned MACHINE = OPTION_REGISTRY | OPTION_HIVE;
constexpr unsigned LOOKS = OPTION_SYSTEM | MACHINE;
constexpr unsigned CHANGES = IS_CHANGE | LOOKS | OPTION_DRY_RUN | OPTION_FORCE | OPTION_IN_SERVICE;

constexpr CCommand COMMANDS[] = {
    {"chain show", "", "show the chain of GINAs as it will run", LOOKS | OPTION_JSON, Show},
    {"chain check", "", "say whether the next boot is safe, and what is to be done if not",
     LOOKS | OPTION_JSON, Check},
    {"chain enable", "", "put lum_gina.dll first into the chain, with the recommended settings",
     CHANGES | OPTION_NO_SAFE_START, Enable},
    {"chain disable", "", "take lum_gina.dll out of the chain", CHANGES, Disable},
    {"chain remove", "NAME", "take another GINA out of the chain", CHANGES, Remove},
    {"chain backup", "FILE", "write what the chain consists of into a .reg file",
     IS_CHANGE | MACHINE | OPTION_FORCE, Backup},
    {"chain restore", "FILE", "make the chain what it was when the file was written", CHANGES, Restore},
};

} // namespace

const std::span<const CCommand> CHAIN_COMMANDS = COMMANDS;
