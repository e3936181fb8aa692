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

/// Throws CUsageError when --system must be given, or names no directory: for a stopped machine, whose DLLs
/// are not where this one's are, whatever depends on them would be decided wrongly.
void RequireDllSearch(const WideText& system);
void RequireDirectory(const WideText& system);
