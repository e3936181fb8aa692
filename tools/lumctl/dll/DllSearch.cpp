#include "DllSearch.h"

#include "CommandLine.h"
#include "JsonWriter.h"
#include "MachineScope.h"
#include "machine/DllDirectories.h"

CDllSearch GetDllSearch(const WideText& system)
{
    if (!system.empty()) {
        return {{system}, {}};
    }
    CDllSearch search{ListDllDirectories(), {}};
    if (!LooksWhereWinlogonLooks()) {
        search.doubt = "this system is no Windows, so they are not the machine's system directory";
    } else if (!CMachineScope::IsThisMachine()) {
        search.doubt = "they are those of this machine, and it is about another one";
    }
    return search;
}

std::string DescribeDoubt(const CDllSearch& search)
{
    if (search.doubt.empty()) {
        return std::string();
    }
    std::string text;
    for (const WideText& directory : search.directories) {
        text += (text.empty() ? "" : ", ") + Shown(directory);
    }
    return "DLLs were looked for in " + text + ": " + search.doubt + " (--system DIRECTORY names that)";
}

void PrintDoubt(const CDllSearch& search, std::string& output)
{
    if (!search.doubt.empty()) {
        output += DescribeDoubt(search) + ".\n";
    }
}

void AddDllSearchJson(CJsonWriter& json, const CDllSearch& search)
{
    json.BeginArray("dllDirectories");
    for (const WideText& directory : search.directories) {
        json.Text(nullptr, directory);
    }
    json.EndArray();
    if (search.doubt.empty()) {
        json.Null("dllDirectoriesDoubt");
    } else {
        json.Text("dllDirectoriesDoubt", search.doubt);
    }
}

void RequireDllSearch(const WideText& system)
{
    if (system.empty() && CMachineScope::IsHive()) {
        throw CUsageError(
            "the DLLs of a stopped machine are not where this one's are: --system DIRECTORY must "
            "name its system directory");
    }
}

void RequireDirectory(const WideText& system)
{
    if (!system.empty() && !IsDllDirectory(system.c_str())) {
        throw CUsageError("--system: there is no directory " + Shown(system));
    }
}
