#pragma once

#include <stdexcept>
#include <string>

#include "ExitStatus.h"

/// Ends a command; the text says why, in one line.
class CCommandError : public std::runtime_error
{
public:
    explicit CCommandError(const std::string& text, ExitStatus exitStatus = STATUS_FAILED)
        : std::runtime_error(text), status(exitStatus)
    {
    }

    const ExitStatus status;
};
