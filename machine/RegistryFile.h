#pragma once

#include <string>

/// The registry of a machine that lies in a .reg file, for targets that have no registry of their own.
class CRegistryFile
{
public:
    enum class Absence
    {
        IsNewMachine, ///< the file is made when the registry is saved
        IsError,
    };

    /// Loads the registry. An empty path means no file. Throws CSetupError.
    CRegistryFile(const std::string& path, Absence absence);

    /// Adds the contents of a .reg file to the registry, on Windows to the system's own. Throws CSetupError.
    static void Import(const std::string& path);

    /// Saves the registry where it came from, without its volatile keys. Throws CSetupError.
    void Save() const;

    /// From now on, what the machine brings to its disk is saved there too, should the process end before
    /// Save. To be asked before other threads run.
    void KeepFlushed() const;

private:
    std::string m_path;
};
