#pragma once

#include <atomic>

#include <windows.h>

// The counting plugin, as the test that drives it sees it.
//
// It is built under several names, passes every call on, and is loaded and freed by the host alone: what it
// counts is the test's. It finds the test's objects in what the host hands it: the journal is Winlogon's
// handle, the trail is Winlogon's context.
//
// Threads: any.

/// What happened in one loaded plugin, from its initialisation on.
struct CPluginCounts
{
    std::atomic<LONG> nEntries{0};
    std::atomic<LONG> nExits{0};
    /// Calls that came after LUMDynamicUnload, or were under way then.
    std::atomic<LONG> nTooLate{0};
    std::atomic<bool> bUnloaded{false};
};

/// The handle that the host is initialised with.
class IPluginJournal
{
public:
    /// Counts for a plugin that is being initialised, valid for ever; null for one that is to refuse.
    virtual CPluginCounts* BeginPlugin() = 0;

protected:
    ~IPluginJournal() = default;
};

/// The context of one call.
class ICallTrail
{
public:
    /// The call has come to that node.
    virtual void Visit(const void* pNode) = 0;

protected:
    ~ICallTrail() = default;
};
