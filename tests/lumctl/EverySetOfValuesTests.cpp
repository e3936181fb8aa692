#include <algorithm>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>

#include "LumctlMachine.h"

namespace {

/// Every machine that comes up, as far as that matters to a change: each of the known GINAs is in the chain,
/// has a value that is whole, stale or leads back, or has none, in all combinations. Chains are written with
/// the first letters of their GINAs. Two kinds of machines are left out, since they boot as others do at each
/// moment. First, those with values of GINAs that are neither in the chain nor put into it. A boot meets such
/// a GINA only by a stale value of one that is put in. Its own value stays until the new chain is complete.
/// So the stale value might as well lead where it leads, or nowhere. Second, those that differ in names only,
/// which are just compared: GINAs with equal records stand for one another. Of w, p and B those come first
/// that come first in the chain, and q stands for all that end a chain and are not the system's own.
class EverySetOfValues : public CLumctlMachine
{
protected:
    static std::string NameOf(char ch)
    {
        static const std::map<char, std::string> NAMES = {
            {'m', "msgina.dll"},  {'q', "qslogon.dll"},   {'l', "lum_gina.dll"}, {'k', "kvs_gina.dll"},
            {'w', "wpnGina.dll"}, {'p', "PLinkGina.dll"}, {'B', "BVGina01.DLL"},
        };
        return NAMES.at(ch);
    }

    static bool Has(const std::string& ginas, char ch) { return ginas.find(ch) != std::string::npos; }

    /// Tries all chains that begin with these GINAs.
    void TryChains(const std::string& ginas)
    {
        std::string met = ginas;
        std::copy_if(m_put.begin(), m_put.end(), std::back_inserter(met),
                     [&](char ch) { return !Has(ginas, ch); });
        for (const std::string& chain : {ginas + "m", ginas + "q", ginas}) {
            // Winlogon and the host do without a value.
            if (chain != ginas || ginas.empty() || ginas.back() == 'l') {
                std::string names;
                for (const char ch : chain) {
                    names += NameOf(ch) + " ";
                }
                TryStaleValues(ValuesOf(names), met, ginas.size());
            }
        }
        for (const char ch : std::string(Has(ginas, 'p') ? "lkB" : Has(ginas, 'w') ? "lkp" : "lkw")) {
            if (!Has(ginas, ch)) {
                TryChains(ginas + ch);
            }
        }
    }

    /// Tries all values of the GINAs from the one with this number on.
    void TryStaleValues(const Values& values, const std::string& met, std::size_t nGina)
    {
        if (nGina == met.size()) {
            TryChanges(values);
            return;
        }
        TryStaleValues(values, met, nGina + 1);
        for (const char ch : met + "m") {
            Values more = values;
            more[NameOf(met[nGina])] = NameOf(ch);
            TryStaleValues(more, met, nGina + 1);
        }
    }

    /// The values after each write that a dry run shows.
    static std::vector<Values> MomentsOf(const std::string& command)
    {
        static const std::regex line("  \\w+: .* -> (\\(none\\)|\"(.*)\")");
        std::vector<Values> moments = {GetValues()};
        std::istringstream output(Run(command + " --force --dry-run").output);
        std::string key;
        std::smatch match;
        for (std::string text; std::getline(output, text);) {
            if (text.starts_with("HKEY_LOCAL_MACHINE\\")) {
                key = text.substr(text.find('\\') + 1);
            } else if (std::regex_match(text, match, line)) {
                moments.push_back(moments.back());
                moments.back().erase(OwnerOf(key));
                if (match[2].matched) {
                    moments.back()[OwnerOf(key)] = match[2];
                }
            }
        }
        return moments;
    }

    void TryChanges(const Values& before)
    {
        SetValues(before);
        for (const std::string& command : m_commands) {
            const std::vector<Values> moments = MomentsOf("chain " + command);
            m_nMoments += moments.size() - 1;
            for (const char* szGone : {"", "wpnGina.dll", "kvs_gina.dll"}) {
                for (const Values& moment : moments) {
                    EXPECT_TRUE(Boot(moment, {szGone}).empty() || !Boot(before, {szGone}).empty() ||
                                !Boot(moments.back(), {szGone}).empty())
                        << command << " on " << testing::PrintToString(before) << ": "
                        << testing::PrintToString(moment) << ", without " << szGone;
                }
            }
        }
    }

    std::string m_put; ///< the GINAs that the commands put in
    std::vector<std::string> m_commands;
    std::size_t m_nMoments = 0;
};

TEST_F(EverySetOfValues, LeavesAMachineThatComesUpAtEachMoment)
{
    // Nobody looks at the DLLs here.
    SetDlls("");
    for (const char* szSaved : {"", "kvs_gina.dll lum_gina.dll msgina.dll"}) {
        SetValues(ValuesOf(szSaved));
        ASSERT_EQ(STATUS_DONE, Run("chain backup --force saved.reg").status);
        m_put = *szSaved != 0 ? "kl" : "";
        m_commands = {"restore saved.reg"};
        TryChains("");
    }
    m_put = "l";
    m_commands = {"enable"};
    TryChains("");
    m_put = "";
    m_commands = {"disable",
                  "remove wpnGina.dll",
                  "remove PLinkGina.dll",
                  "remove BVGina01.DLL",
                  "remove kvs_gina.dll",
                  "remove qslogon.dll"};
    TryChains("");
    EXPECT_LT(4000u, m_nMoments);
}

} // namespace
