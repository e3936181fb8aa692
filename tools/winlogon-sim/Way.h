#pragma once

#include <optional>
#include <string>
#include <vector>

#include <windows.h>

/// A GINA or plugin that a call entered.
struct CHop
{
    std::string dll;
    bool bPlugin = false;
    /// How many others were waiting for its answer: the object in front of it, the one in front of that, ...
    std::size_t nDepth = 0;
    /// False when it failed: what it should have returned never came.
    bool bReturned = false;
    /// Nothing for a call without result, and for an object that failed.
    std::optional<LONG> result;
};

/// The way of one call through the chain, in the order in which objects were entered.
class CWay
{
public:
    /// Whether anything is known of the way.
    bool IsKnown() const { return !m_hops.empty(); }

    /// "audit_plugin > veto_plugin > msgina"; objects that were called one after the other by the library
    /// itself have commas between them.
    std::string Describe() const;

    /// Who decided what came back: the last object that was reached, or the plugin that changed what it was
    /// answered. Null when an object failed and nobody made up for it, and for calls that are not passed on.
    const CHop* GetAnswering() const;

    /// The object that failed. All those in front of it failed with it. Null when none failed.
    const CHop* GetFailed() const;

    /// What the first object gave the library.
    std::optional<LONG> GetResult() const { return IsKnown() ? m_hops.front().result : std::nullopt; }

    std::vector<CHop> m_hops;

private:
    bool IsPassedOn() const;
    /// The object that the one at nIndex called last; null when it called none.
    const CHop* GetCalled(std::size_t nIndex) const;
    /// Goes down the chain as long as goOn(object, the one it called) says so; gives where that ended.
    template <typename GoOn>
    const CHop* Descend(GoOn goOn) const;
};

/// A DLL's name as people write it: without ".dll".
std::string GetShortName(const std::string& dll);

/// Whether two names are of one DLL, written with or without ".dll"; letter case does not count.
bool IsSameDLL(const std::string& left, const std::string& right);
