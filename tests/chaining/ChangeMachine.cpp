#include "ChangeMachine.h"

namespace {

using Text = std::basic_string<WCHAR>;

const WCHAR* Arg(const Text& text)
{
    return text == TEXT("-") ? nullptr : text.c_str();
}

} // namespace

std::function<bool()> CChangeMachine::Prepare(const CRow& row)
{
    DeleteGinaKeys();
    SetRecord("rec.dll", "msgina.dll,0,0,0,0");
    SetRecord("inc.dll", "wpnGina.dll,0,0,0,1");
    SetRecord("turned.dll", "msgina.dll,0,0,0,0");
    SetRecord("term.dll", "NULL,1,0,0,0");
    SetRecord("incterm.dll", "NULL,1,0,0,1");
    SetRecord("bad.dll", "msgina.dll,0,0,0");
    Values values = ValuesOf(row.szBefore);
    if (!m_stale.empty()) {
        values.emplace("lum_gina.dll", m_stale);
    }
    SetValues(values);
    m_pManager = Build();
    std::function<bool()> change;
    const std::string changes = row.szChange;
    for (std::size_t nBegin = 0; nBegin < changes.size();) {
        const std::size_t nEnd = std::min(changes.find(", ", nBegin), changes.size());
        if (change) {
            change();
        }
        change = MakeChange(SplitNames(changes.substr(nBegin, nEnd - nBegin)));
        nBegin = nEnd + 2;
    }
    return change;
}

std::function<bool()> CChangeMachine::MakeChange(const std::vector<std::string>& words)
{
    const Text name = words.size() > 1 ? Widen(words[1]) : Text();
    if (words[0] == "remove") {
        return [=, this] { return m_pManager->RemoveGinaFromChainingList(Arg(name)); };
    }
    if (words[0] == "insert") {
        const Text before = words.size() > 3 ? Widen(words[3]) : TEXT("-");
        const bool bAtFront = words.size() == 3;
        return [=, this] { return m_pManager->InsertGinaIntoChainingList(Arg(name), Arg(before), bAtFront); };
    }
    const auto split = [](const std::string& word) {
        return std::pair(word.substr(0, word.find('=')), word.substr(word.find('=') + 1));
    };
    if (words[0] == "record") {
        return [=] {
            SetRecord(split(words[1]).first.c_str(), split(words[1]).second.c_str());
            return true;
        };
    }
    Values values = GetValues();
    for (std::size_t n = 1; n < words.size(); ++n) {
        values[split(words[n]).first] = split(words[n]).second;
    }
    SetValues(values);
    m_pFresh = Build(true);
    return [this] {
        m_pManager->ResyncWithRegistry(*m_pFresh);
        return true;
    };
}
