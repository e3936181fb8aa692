#include "ChainPlan.h"

#include <algorithm>

#include "ChainFindings.h"
#include "CommandError.h"
#include "GinaNames.h"

namespace {

[[noreturn]] void RefuseIncomplete(COfflineMachine& machine, const std::string& command, std::string& output)
{
    PrintFindings(CheckChain(machine.Look(), machine.system), output);
    throw CCommandError(machine.group + " " + command +
                            ": the chain cannot be followed to its end, so this cannot be done",
                        STATUS_REFUSED);
}

/// Whether a value names the same GINA as the data that is to be written. What is no text names none.
bool SaysAlready(const CValueData& current, const CValueData& data)
{
    return TextOf(current) == TextOf(data) && !IsNoText(current);
}

/// What a chain of these GINAs would be written as.
CChainChange PlanWrite(COfflineMachine& machine, const CGinaNames& ginas, const std::string& command)
{
    CChainChange change{{machine.values, machine.values, machine.group + " " + command}, "gina " + command};
    for (const CChainWrite& write : ListWrites(ginas)) {
        const std::optional<CValuePlace> place = machine.chain.PlaceOf(write);
        const CValueData data = machine.chain.DataOf(write);
        if (!place || (!data && write.szGinaDLL != nullptr)) {
            continue;
        }
        const CValueData current = Read(machine.values, *place);
        if (!SaysAlready(current, data)) {
            change.after.Set(*place, WithTypeOf(current, data));
        }
    }
    return change;
}

/// What is to be written when a GINA is taken out of a chain that cannot be followed to its end: who
/// has loaded it loads the one behind it, or the system's own, which ends the chain. So does one that leads
/// back to it.
CChainChange PlanCut(COfflineMachine& machine, const CChainView& view, std::size_t nLink,
                     const std::string& command)
{
    CChainChange change{{machine.values, machine.values, machine.group + " " + command}, std::string()};
    const bool bLast = nLink + 1 == view.links.size();
    const WideText next = bLast ? WideText(SYSTEM_GINA) : view.links[nLink + 1].gina;
    const bool bBySystem = nLink == 0 && EqualNames(next.c_str(), SYSTEM_GINA);
    const CLinkView& last = view.links.back();
    if (!bLast && EqualNames(LoadedName(TextOf(last.passthrough)).c_str(), view.links[nLink].gina.c_str())) {
        change.after.Set(*last.place, WithTypeOf(last.passthrough, MakeText(SYSTEM_GINA)));
    }
    const CValuePlace loader = nLink == 0 ? WinlogonPlace() : *view.links[nLink - 1].place;
    const CValueData data = machine.chain.DataOf({nullptr, bBySystem ? nullptr : next.c_str()});
    change.after.Set(loader, WithTypeOf(Read(machine.values, loader), data));
    return change;
}

CChainChange CutOut(COfflineMachine& machine, const CChainView& view, std::size_t nLink,
                    const std::string& command, std::string& output)
{
    const CLinkView& link = view.links[nLink];
    // What works is not cut off: what is behind it would be lost.
    if (link.knowledge == Knowledge::Unknown && link.dll.state == CDllFile::State::Usable &&
        !machine.arguments.bForce)
    {
        RefuseIncomplete(machine, command, output);
    }
    return PlanCut(machine, view, nLink, command);
}

CChainChange RemoveFromChain(COfflineMachine& machine, const WideText& gina, const std::string& command,
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
    return change;
}

/// Refuses where that cannot be seen.
bool IsInChain(COfflineMachine& machine, const WideText& gina, const std::string& command,
               std::string& output)
{
    const CChainView view = machine.Follow();
    const bool bFound = view.HasGina(gina.c_str());
    if (!bFound && view.end == ChainEnd::Unknown) {
        PrintFindings(CheckChain(view, machine.system), output);
        throw CCommandError(machine.group + " " + command +
                                ": the chain cannot be followed to its end, so whether " + Shown(gina) +
                                " is in it cannot be told; nothing was written",
                            STATUS_UNCERTAIN);
    }
    return bFound && !view.IsSystemGinaImplied();
}

} // namespace

std::optional<CChainChange> PlanEnable(COfflineMachine& machine, std::string& output)
{
    CChain chain = machine.chain.Follow(machine.values);
    if (chain.Has(HOST_GINA)) {
        return std::nullopt;
    }
    if (FindPlace(chain, chain.know, HOST_GINA, nullptr, true) == Place::Nowhere) {
        RefuseIncomplete(machine, "enable", output);
    }
    chain.ginas.insert(chain.ginas.begin(), HOST_GINA);
    return PlanWrite(machine, chain.ginas, "enable");
}

std::optional<CChainChange> PlanDisable(COfflineMachine& machine, std::string& output)
{
    if (!IsInChain(machine, HOST_GINA, "disable", output)) {
        return std::nullopt;
    }
    return RemoveFromChain(machine, HOST_GINA, "disable", output);
}

CChainChange PlanRemove(COfflineMachine& machine, const std::string& name, std::string& output)
{
    const std::string command = "remove " + name;
    const WideText gina = LoadedName(ToWide(name));
    if (!IsInChain(machine, gina, command, output)) {
        throw CCommandError(machine.group + " " + command +
                                ": there is no such GINA in the chain (see lumctl chain show)",
                            STATUS_REFUSED);
    }
    return RemoveFromChain(machine, gina, command, output);
}
