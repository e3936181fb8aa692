#include "ChainCommands.h"

#include <algorithm>
#include <cstdio>

#include "ChainBackup.h"
#include "ChainChange.h"
#include "CommandError.h"
#include "CommandLine.h"
#include "GinaNames.h"
#include "RecommendedValues.h"
#include "machine/MachineLock.h"
#include "machine/RegistryFile.h"
#include "machine/WholeFile.h"

namespace {

void SayThatItWaits()
{
    std::fprintf(stderr, "lumctl: waiting for another program that is at the chain of this machine\n");
}

/// The machine that the command line names, and its chain.
struct CMachine
{
    explicit CMachine(const CArguments& given)
        : arguments(given), system(ToWide(given.system)), lock(given.registry, SayThatItWaits),
          file(given.registry, CRegistryFile::Absence::IsError)
    {
        if (!system.empty() && !IsDllDirectory(system.c_str())) {
            throw CUsageError("--system: there is no directory " + given.system);
        }
    }

    CChainView Follow() { return FollowChain(chain, values, system); }

    ExitStatus Make(const CChainChange& change, std::string& output)
    {
        const ExitStatus status = MakeChange(chain, change, arguments, output);
        if (!arguments.bDryRun) {
            file.Save();
            output += "Written and read back.\n";
        }
        return status;
    }

    const CArguments& arguments;
    const WideText system;
    const CMachineLock lock;
    const CRegistryFile file;
    COfflineChain chain;
    const CChainValues values = chain.ReadValues();
};

ExitStatus Show(const CArguments& arguments, std::string& output)
{
    CMachine machine(arguments);
    (arguments.bJson ? PrintChainJson : PrintChain)(machine.Follow(), output);
    return STATUS_DONE;
}

ExitStatus Check(const CArguments& arguments, std::string& output)
{
    CMachine machine(arguments);
    const std::vector<CFinding> findings = CheckChain(machine.Follow(), machine.system);
    const ExitStatus status = HasSeverity(findings, Severity::Danger)  ? STATUS_BAD
                              : HasSeverity(findings, Severity::Doubt) ? STATUS_UNCERTAIN
                                                                       : STATUS_DONE;
    if (arguments.bJson) {
        PrintFindingsJson(findings, output);
        return status;
    }
    PrintFindings(findings, output);
    output += status == STATUS_DONE  ? "The next boot is safe.\n"
              : status == STATUS_BAD ? "The next boot is NOT SAFE.\n"
                                     : "Whether the next boot is safe cannot be told.\n";
    return status;
}

[[noreturn]] void RefuseIncomplete(CMachine& machine, const std::string& command, std::string& output)
{
    PrintFindings(CheckChain(machine.Follow(), machine.system), output);
    throw CCommandError(command + ": the chain cannot be followed to its end, so this cannot be done",
                        STATUS_REFUSED);
}

/// The change that makes the chain consist of these GINAs.
CChainChange PlanWrite(CMachine& machine, const CGinaNames& ginas, const std::string& command)
{
    CChainChange change{machine.values, machine.values, "chain " + command, "gina " + command};
    for (const CChainWrite& write : ListWrites(ginas)) {
        const std::optional<CValuePlace> place = machine.chain.PlaceOf(write);
        const CValueData data = machine.chain.DataOf(write);
        // A value that names the right GINA already stays, whatever its type.
        if (place && (data || write.szGinaDLL == nullptr) &&
            TextOf(data) != TextOf(Read(machine.values, *place))) {
            change.after.Set(*place, data);
        }
    }
    return change;
}

ExitStatus Enable(const CArguments& arguments, std::string& output)
{
    CMachine machine(arguments);
    CChain chain = machine.chain.Follow(machine.values);
    if (chain.Has(HOST_GINA)) {
        output += "lum_gina.dll is in the chain already; nothing to do.\n";
        return STATUS_DONE;
    }
    if (FindPlace(chain, chain.know, HOST_GINA, nullptr, true) == Place::Nowhere) {
        RefuseIncomplete(machine, "chain enable", output);
    }
    chain.ginas.insert(chain.ginas.begin(), HOST_GINA);
    CChainChange change = PlanWrite(machine, chain.ginas, "enable");
    if (AddRecommendedValues(change.after)) {
        output += "With the recommended settings, where they are missing:\n";
    }
    return machine.Make(change, output);
}

/// The change that takes a GINA out of a chain that cannot be followed to its end. Whoever loads the GINA
/// then loads the one behind it, or when there is none, the system's own, which ends the chain. A GINA that
/// leads back to the one taken out loads the system's own, too.
CChainChange PlanCut(CMachine& machine, const CChainView& view, std::size_t nLink, const std::string& command)
{
    CChainChange change{machine.values, machine.values, "chain " + command, std::string()};
    const bool bLast = nLink + 1 == view.links.size();
    const WideText next = bLast ? WideText(SYSTEM_GINA) : view.links[nLink + 1].gina;
    const bool bBySystem = nLink == 0 && EqualNames(next.c_str(), SYSTEM_GINA);
    const CLinkView& last = view.links.back();
    if (!bLast && EqualNames(LoadedName(TextOf(last.passthrough)).c_str(), view.links[nLink].gina.c_str())) {
        change.after.Set(*last.place, MakeText(SYSTEM_GINA));
    }
    change.after.Set(nLink == 0 ? WinlogonPlace() : *view.links[nLink - 1].place,
                     machine.chain.DataOf({nullptr, bBySystem ? nullptr : next.c_str()}));
    return change;
}

ExitStatus CutOut(CMachine& machine, const CChainView& view, std::size_t nLink, const std::string& command,
                  std::string& output)
{
    const CLinkView& link = view.links[nLink];
    // An unknown GINA that works may load others, which would be lost with it.
    if (link.knowledge == Knowledge::Unknown && link.dll.state == CDllFile::State::Usable &&
        !machine.arguments.bForce)
    {
        RefuseIncomplete(machine, "chain " + command, output);
    }
    return machine.Make(PlanCut(machine, view, nLink, command), output);
}

ExitStatus RemoveFromChain(CMachine& machine, const WideText& gina, const std::string& command,
                           std::string& output)
{
    const std::optional<CGinaNames> left = PlanRemoval(machine.chain.Follow(machine.values), gina.c_str());
    if (!left) {
        const CChainView view = machine.Follow();
        const auto isGina = [&](const CLinkView& link) {
            return EqualNames(link.gina.c_str(), gina.c_str());
        };
        const auto link = std::find_if(view.links.begin(), view.links.end(), isGina);
        return CutOut(machine, view, static_cast<std::size_t>(link - view.links.begin()), command, output);
    }
    const CChainChange change = PlanWrite(machine, *left, command);
    const CChainView after = FollowChain(machine.chain, change.after, machine.system);
    if (after.HasGina(gina.c_str()) && !after.IsSystemGinaImplied()) {
        throw CCommandError(change.command +
                                ": it would stay in the chain, since the GINA before it passes through to "
                                "it by default; nothing was written",
                            STATUS_REFUSED);
    }
    return machine.Make(change, output);
}

/// Throws when the chain cannot be followed far enough to tell.
bool IsInChain(CMachine& machine, const WideText& gina, const std::string& command, std::string& output)
{
    const CChainView view = machine.Follow();
    const bool bFound = view.HasGina(gina.c_str());
    if (!bFound && view.end == ChainEnd::Unknown) {
        PrintFindings(CheckChain(view, machine.system), output);
        throw CCommandError("chain " + command + ": the chain cannot be followed to its end, so whether " +
                                Shown(gina) + " is in it cannot be told; nothing was written",
                            STATUS_UNCERTAIN);
    }
    return bFound && !view.IsSystemGinaImplied();
}

ExitStatus Disable(const CArguments& arguments, std::string& output)
{
    CMachine machine(arguments);
    if (!IsInChain(machine, HOST_GINA, "disable", output)) {
        output += "lum_gina.dll is not in the chain; nothing to do.\n";
        return STATUS_DONE;
    }
    return RemoveFromChain(machine, HOST_GINA, "disable", output);
}

ExitStatus Remove(const CArguments& arguments, std::string& output)
{
    CMachine machine(arguments);
    const std::string command = "remove " + arguments.words[0];
    const WideText gina = LoadedName(ToWide(arguments.words[0]));
    if (!IsInChain(machine, gina, command, output)) {
        throw CCommandError("chain " + command +
                                ": there is no such GINA in the chain (see lumctl chain show)",
                            STATUS_REFUSED);
    }
    return RemoveFromChain(machine, gina, command, output);
}

ExitStatus Backup(const CArguments& arguments, std::string& output)
{
    CMachine machine(arguments);
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
    CMachine machine(arguments);
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
    return machine.Make(change, output);
}

constexpr unsigned LOOKS = OPTION_SYSTEM | OPTION_REGISTRY;
constexpr unsigned CHANGES = IS_CHANGE | LOOKS | OPTION_DRY_RUN | OPTION_FORCE | OPTION_IN_SERVICE;

constexpr CCommand COMMANDS[] = {
    {"chain show", "", "show the chain of GINAs as it will run", LOOKS | OPTION_JSON, Show},
    {"chain check", "", "say whether the next boot is safe, and what is to be done if not",
     LOOKS | OPTION_JSON, Check},
    {"chain enable", "", "put lum_gina.dll first into the chain, with the recommended settings", CHANGES,
     Enable},
    {"chain disable", "", "take lum_gina.dll out of the chain", CHANGES, Disable},
    {"chain remove", "NAME", "take another GINA out of the chain", CHANGES, Remove},
    {"chain backup", "FILE", "write what the chain consists of into a .reg file",
     IS_CHANGE | OPTION_REGISTRY | OPTION_FORCE, Backup},
    {"chain restore", "FILE", "make the chain what it was when the file was written", CHANGES, Restore},
};

} // namespace

const std::span<const CCommand> CHAIN_COMMANDS = COMMANDS;
