#include "CommandLine.h"

#include <algorithm>

COption TextOption(const char* szName, std::string& target)
{
    return {szName, true, [&target](const std::string& value) { target = value; }};
}

COption FlagOption(const char* szName, bool& bTarget)
{
    return {szName, false, [&bTarget](const std::string&) { bTarget = true; }};
}

std::vector<std::string> ParseCommandLine(int argc, const char* const* argv,
                                          const std::vector<COption>& options)
{
    std::vector<std::string> others;
    bool bOptions = true;
    for (int nArgument = 1; nArgument < argc; ++nArgument) {
        const std::string argument = argv[nArgument];
        if (bOptions && argument == "--") {
            bOptions = false;
            continue;
        }
        if (!bOptions || argument.empty() || argument[0] != '-') {
            others.push_back(argument);
            continue;
        }
        const std::size_t nEquals = argument.find('=');
        const std::string name = argument.substr(0, nEquals);
        const auto option = std::find_if(options.begin(), options.end(),
                                         [&](const COption& candidate) { return candidate.name == name; });
        if (option == options.end()) {
            throw CUsageError("unknown option " + name);
        }
        if (!option->bTakesValue && nEquals != std::string::npos) {
            throw CUsageError(name + " takes no value");
        }
        std::string value;
        if (nEquals != std::string::npos) {
            value = argument.substr(nEquals + 1);
        } else if (option->bTakesValue && ++nArgument != argc) {
            value = argv[nArgument];
        }
        if (option->bTakesValue && value.empty()) {
            throw CUsageError(name + " needs a value");
        }
        option->apply(value);
    }
    return others;
}
