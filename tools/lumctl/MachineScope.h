#pragma once

#include "Command.h"
#include "machine/RegistryFile.h"
#include "machine/Text.h"

/// Says on standard error that another program has the machine's lock.
void SayThatItWaits();

/// The machine that a command line names, as long as this exists: this one, that of a registry file, or a
/// stopped one whose SOFTWARE hive was loaded to a key of this one's registry. Keys keep the names that they
/// have on their own machine. One at a time in a process.
class CMachineScope
{
public:
    /// Throws CUsageError when a command line names none or two.
    static void RequireOne(const CArguments& arguments);

    /// For arguments with one. Throws CSetupError when a registry file cannot be loaded.
    explicit CMachineScope(const CArguments& arguments);
    ~CMachineScope();
    CMachineScope(const CMachineScope&) = delete;
    CMachineScope& operator=(const CMachineScope&) = delete;

    /// Saves a registry file; other registries need it not. Throws CSetupError.
    void Save() const { m_file.Save(); }

    /// Whether it is this one. No host runs on another, whatever its registry says.
    static bool IsThisMachine();
    /// Whether its SOFTWARE hive is all that there is of its registry.
    static bool IsHive();

    /// Whether a key below HKEY_LOCAL_MACHINE is in it at all: not if it is in another hive than the loaded
    /// one.
    static bool Holds(const WideText& key);

    /// What a key below HKEY_LOCAL_MACHINE is called in the registry here. Throws CCommandError when it is
    /// not in the loaded hive.
    static WideText Resolve(const WideText& key);

private:
    const CRegistryFile m_file;
};
