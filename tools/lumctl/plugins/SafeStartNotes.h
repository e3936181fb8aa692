#pragma once

#include "chain/ValueChange.h"

/// What the settings and the host's notes say of a start without some plugins. Safe start writes the notes.
class CSafeStartNotes
{
public:
    /// Reads them. Throws CCommandError.
    CSafeStartNotes();

    bool IsWithoutPlugins() const { return m_bWithoutPlugins; }
    /// The plugin in which the start has ended or is just now; empty for none.
    const WideText& GetInPlugin() const { return m_inPlugin; }

    /// Why the next start leaves a configured plugin out; empty when it does not.
    std::string WhyLeftOut(const WideText& plugin) const;

private:
    bool IsRequired(const WideText& plugin) const;

    bool m_bWithoutPlugins;
    DWORD m_dwLimit;
    CValueData m_required;
    WideText m_inPlugin;
};

/// Adds the deletion of what the host has noted of a plugin. The name is as it is configured.
void AddRetry(const WideText& plugin, CValueChange& change);
