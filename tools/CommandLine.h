#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

// The command line of a tool: options that begin with '-', wherever they stand before a "--", and everything
// else.

/// The command line is wrong; the text says why.
class CUsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// An option that a tool has.
struct COption
{
    std::string name; ///< with its dashes
    bool bTakesValue;
    /// Called with the value, which is not empty, or with the empty text. May throw CUsageError.
    std::function<void(const std::string& value)> apply;
};

/// Options that set a variable, which must outlive them.
COption TextOption(const char* szName, std::string& target);
COption FlagOption(const char* szName, bool& bTarget);

/// Applies the options in the order in which they stand, and gives what is none. A value is the next word, or
/// stands behind a "=". argv begins with the tool's name. Throws CUsageError.
std::vector<std::string> ParseCommandLine(int argc, const char* const* argv,
                                          const std::vector<COption>& options);
