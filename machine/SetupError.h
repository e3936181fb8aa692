#pragma once

#include <stdexcept>

/// The tool cannot run: a DLL, the registry or the system lacks something that it needs.
class CSetupError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};
