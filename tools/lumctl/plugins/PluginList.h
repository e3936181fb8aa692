#pragma once

#include "registry/ChainValues.h"

inline constexpr WCHAR PLUGINS_VALUE[] = TEXT("Plugins");
/// Where the configured plugins stand.
CValuePlace PluginsPlace();

/// The host does not find the DLL of such an entry.
bool HasBlanksAround(const WideText& name);

/// The configured plugins, in the order in which they are loaded. Entries are what stands between two commas;
/// the host passes over empty ones, and so does this.
class CPluginList
{
public:
    explicit CPluginList(const WideText& text);

    std::vector<WideText> GetNames() const { return m_names; }

    /// The entry that the host would take for this name, and one that loads the same DLL; null for none.
    const WideText* Find(const WideText& name) const;
    const WideText* FindSameDll(const WideText& name) const;

    void Add(const WideText& name) { m_names.push_back(name); }
    /// These take an entry that Find finds. Move: false when it stands at that end already.
    void Remove(const WideText& name);
    bool Move(const WideText& name, bool bUp);

    WideText GetText() const;

private:
    std::vector<WideText> m_names;
};
