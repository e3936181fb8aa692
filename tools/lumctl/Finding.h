#pragma once

#include <string>

/// How much a finding matters to the next boot of the machine.
enum class Severity
{
    Danger,  ///< it does not come up
    Doubt,   ///< whether it comes up cannot be seen
    Warning, ///< it comes up, and not as it should be
};

struct CFinding
{
    Severity severity;
    std::string text;
    std::string remedy;
};

/// Which chain is looked at.
enum class Moment
{
    Now,
    /// As a change would leave it. Remedies that change the present chain are left out.
    AfterChange,
};
