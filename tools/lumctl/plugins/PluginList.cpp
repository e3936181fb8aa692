#include "PluginList.h"

#include <algorithm>

#include "GinaNames.h"

CValuePlace PluginsPlace()
{
    return {LUM_GINA_MTM, PLUGINS_VALUE};
}

bool HasBlanksAround(const WideText& name)
{
    return name.front() == ' ' || name.back() == ' ';
}

CPluginList::CPluginList(const WideText& text)
{
    for (const WideText& name : Split(text, ',')) {
        if (!name.empty()) {
            m_names.push_back(name);
        }
    }
}

const WideText* CPluginList::Find(const WideText& name) const
{
    const auto found = std::find_if(m_names.begin(), m_names.end(), [&](const WideText& entry) {
        return EqualNames(entry.c_str(), name.c_str());
    });
    return found != m_names.end() ? &*found : nullptr;
}

const WideText* CPluginList::FindSameDll(const WideText& name) const
{
    const auto found = std::find_if(m_names.begin(), m_names.end(),
                                    [&](const WideText& entry) { return IsSameDll(entry, name); });
    return found != m_names.end() ? &*found : nullptr;
}

void CPluginList::Remove(const WideText& name)
{
    m_names.erase(m_names.begin() + (Find(name) - m_names.data()));
}

bool CPluginList::Move(const WideText& name, bool bUp)
{
    const auto nFrom = static_cast<std::size_t>(Find(name) - m_names.data());
    if (nFrom == (bUp ? 0 : m_names.size() - 1)) {
        return false;
    }
    std::swap(m_names[nFrom], m_names[bUp ? nFrom - 1 : nFrom + 1]);
    return true;
}

WideText CPluginList::GetText() const
{
    WideText text;
    for (const WideText& name : m_names) {
        text += (text.empty() ? TEXT("") : TEXT(",")) + name;
    }
    return text;
}
