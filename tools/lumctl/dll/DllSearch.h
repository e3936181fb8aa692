#pragma once

#include "machine/Text.h"

class CJsonWriter;

/// Where the DLLs of a machine are looked for.
struct CDllSearch
{
    std::vector<WideText> directories;
    /// Why Winlogon of that machine looks elsewhere; empty when it looks there.
    std::string doubt;
};

/// system: the directory that --system names; empty for none.
CDllSearch GetDllSearch(const WideText& system);

/// A sentence about a search that is in doubt; empty for another.
std::string DescribeDoubt(const CDllSearch& search);
/// The same, as a line.
void PrintDoubt(const CDllSearch& search, std::string& output);
/// The search, as members of an object.
void AddDllSearchJson(CJsonWriter& json, const CDllSearch& search);

/// Throws CUsageError when a stopped machine is looked at without --system: its DLLs are not where this
/// machine's are.
void RequireDllSearch(const WideText& system);
/// Throws CUsageError when --system names no directory.
void RequireDirectory(const WideText& system);
