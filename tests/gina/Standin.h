#pragma once

#include <string>
#include <vector>

#include <windows.h>
#include "WlxInterface.h"

#include "StandinGina.h"

/// A stand-in GINA loaded by name: stays loaded, with its settings, for the life of this object.
class CStandin
{
public:
    explicit CStandin(const WCHAR* szDLL);
    ~CStandin();
    CStandin(const CStandin&) = delete;
    CStandin& operator=(const CStandin&) = delete;

    const StandinInterface* operator->() const { return m_pInterface; }

    /// The names of the calls received so far.
    std::vector<std::string> Calls() const;

private:
    HMODULE m_hModule;
    const StandinInterface* m_pInterface;
};
