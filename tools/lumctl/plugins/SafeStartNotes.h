#pragma once

#include "registry/ValueChange.h"

/// What the settings and the host's notes say of a start without some plugins. Safe start writes the notes.
class CSafeStartNotes
{
public:
    /// Reads them. Throws CCommandError.
    CSafeStartNotes();

    bool IsWithoutPlugins() const { return m_bWithoutPlugins; }
    /// The plugin in which the start has ended or is just now; empty for none.
    const WideText& GetInPlugin() const { return m_inPlugin; }

    /// Why the next start leaves a configured plugin out; empty when it does not. dll: where its DLL was
    /// found. bFindable: whether that is where the machine finds it.
    std::string WhyLeftOut(const WideText& plugin, const WideText& dll, bool bFindable) const;

private:
    /// What its DLL was like when it came to be left out.
    CValueData FindStamp(const WideText& plugin) const;
    bool IsRequired(const WideText& plugin) const;

    bool m_bWithoutPlugins;
    DWORD m_dwLimit;
    CValueData m_required;
    WideText m_inPlugin;
    CValueData m_stamp; ///< of its DLL
    DWORD m_dwEnded;    ///< how many starts in a row ended in it
};

/// Adds the deletion of what the host has noted of a plugin. The name is as it is configured.
void AddRetry(const WideText& plugin, CValueChange& change);
