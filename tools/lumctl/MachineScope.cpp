#include "MachineScope.h"

#include <algorithm>
#include <cstdio>

#include "CommandError.h"
#include "CommandLine.h"
#include "GinaNames.h"

namespace {

constexpr WCHAR SOFTWARE[] = TEXT("SOFTWARE");

bool s_bOtherMachine = false;
/// Empty when no hive was named.
WideText s_hive;

} // namespace

void CMachineScope::RequireOne(const CArguments& arguments)
{
    if (!arguments.hive.empty() && !arguments.registry.empty()) {
        throw CUsageError("--hive and --registry name two machines");
    }
    // A hive can be loaded to a key right below HKEY_LOCAL_MACHINE only. SOFTWARE there is this machine's
    // own, on which a host may run.
    if (arguments.hive.find('\\') != std::string::npos ||
        EqualNames(ToWide(arguments.hive).c_str(), SOFTWARE)) {
        throw CUsageError("--hive needs the name of a key right below HKEY_LOCAL_MACHINE that a hive was "
                          "loaded to, not " +
                          arguments.hive);
    }
}

CMachineScope::CMachineScope(const CArguments& arguments)
    : m_file(arguments.registry, CRegistryFile::Absence::IsError)
{
    s_hive = ToWide(arguments.hive);
    s_bOtherMachine = !arguments.hive.empty() || !arguments.registry.empty();
}

CMachineScope::~CMachineScope()
{
    s_hive.clear();
    s_bOtherMachine = false;
}

void SayThatItWaits()
{
    std::fprintf(stderr, "lumctl: waiting for another program that is at the chain of this machine\n");
}

bool CMachineScope::IsThisMachine()
{
    return !s_bOtherMachine;
}

bool CMachineScope::IsHive()
{
    return !s_hive.empty();
}

bool CMachineScope::Holds(const WideText& key)
{
    return !IsHive() || EqualNames(key.substr(0, key.find(WCHAR('\\'))).c_str(), SOFTWARE);
}

WideText CMachineScope::Resolve(const WideText& key)
{
    if (!Holds(key)) {
        throw CCommandError("HKEY_LOCAL_MACHINE\\" + Shown(key) + " is not in the SOFTWARE hive");
    }
    return IsHive() ? s_hive + key.substr(std::min(key.find(WCHAR('\\')), key.size())) : key;
}
