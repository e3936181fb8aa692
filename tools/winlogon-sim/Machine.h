#pragma once

#include "Options.h"

/// The machine on which the day is lived: its registry, from the first setting to the last step.
class CMachine
{
public:
    /// Loads the registry when a file is named and exists, and writes the settings that the options ask
    /// for. Throws CSetupError.
    explicit CMachine(const COptions& options);

    /// Saves the registry when a file is named. Throws CSetupError.
    void Save() const;

private:
    std::string m_registry;
};
