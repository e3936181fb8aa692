#include "ResyncModel.h"

#include <algorithm>
#include <cctype>
#include <functional>

namespace Model {
namespace {

const std::string HOST = "lum_gina.dll";

// Built in: those that end a chain, and those that do not.
const Ginas TABLE = {
    {"msgina.dll", "", true, false},
    {"sbgina_sim.dll", "", true, false},
    {"TRGINA.DLL", "", true, false},
    {"qslogon.dll", "", true, false},
    {"wpnGina.dll", "msgina.dll", false, false},
    {"PLinkGina.dll", "msgina.dll", false, false},
    {"BVGina01.DLL", "msgina.dll", false, false},
    {HOST, "msgina.dll", false, false},
    {"kvs_gina.dll", "", false, false},
};

bool IsSame(const std::string& left, const std::string& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return std::tolower(a) == std::tolower(b); });
}

const CGina* Find(const Ginas& ginas, const std::string& name)
{
    const auto found =
        std::find_if(ginas.begin(), ginas.end(), [&](const CGina& g) { return IsSame(g.name, name); });
    return found != ginas.end() ? &*found : nullptr;
}

Names::const_iterator Locate(const Names& chain, const std::string& name)
{
    return std::find_if(chain.begin(), chain.end(), [&](const std::string& n) { return IsSame(n, name); });
}

bool Has(const Names& chain, const std::string& name)
{
    return Locate(chain, name) != chain.end();
}

void Drop(Names& chain, const std::string& name)
{
    if (Has(chain, name)) {
        chain.erase(Locate(chain, name));
    }
}

std::string Get(const Values& values, const std::string& key)
{
    const auto found = values.find(key);
    return found != values.end() ? found->second : "";
}

bool Ends(const CManager& manager, const std::string& name, bool bIfUnknown)
{
    const CGina* pGina = Find(manager.known, name);
    return pGina != nullptr ? pGina->bTerminator : bIfUnknown;
}

/// How far the chains agree.
std::size_t CountCommon(const Names& left, const Names& right)
{
    std::size_t n = 0;
    while (n < left.size() && n < right.size() && IsSame(left[n], right[n])) {
        ++n;
    }
    return n;
}

bool IsIncompatible(const CManager& manager, const Names& chain, std::size_t n)
{
    const CGina* pGina = n < chain.size() ? Find(manager.known, chain[n]) : nullptr;
    return pGina != nullptr && pGina->bIncompatible;
}

/// What follows when the host has been cut out of a chain that got shorter.
void Reclaim(CManager& own, const CManager& fresh, Values& values, const Ginas& records)
{
    values["Winlogon"] = own.chain.front();
    const CManager again = Build(values, records, true);
    const CGina* pOnly = fresh.chain.size() == 1 ? Find(own.known, fresh.chain[0]) : nullptr;
    if (again.bIncomplete) {
        Drop(own.chain, again.chain.back());
    } else if (fresh.chain.size() == 1 && pOnly == nullptr) {
        return;
    } else if (pOnly != nullptr && !pOnly->bIncompatible && pOnly->bTerminator) {
        if (Ends(own, own.chain.back(), true)) {
            own.chain.pop_back();
        }
        own.chain.push_back(fresh.chain[0]);
    } else if (pOnly != nullptr && !pOnly->bIncompatible) {
        own.chain.insert(own.chain.end() - 1, fresh.chain[0]);
    }
    Write(own, values);
}

} // namespace

CManager Build(Values& values, const Ginas& records, bool bNoRepair)
{
    CManager manager{TABLE, {}, false};
    std::string last = "Winlogon";
    for (std::string next = Get(values, last);; next = Get(values, last)) {
        if (next.empty() && last == "Winlogon") {
            return manager;
        }
        if (next.empty() && !bNoRepair) {
            const std::string& fallback = Find(manager.known, last)->fallback;
            next = values[last] = fallback.empty() || Has(manager.chain, fallback) ? "msgina.dll" : fallback;
        }
        manager.bIncomplete = next.empty() || Has(manager.chain, next);
        if (manager.bIncomplete) {
            return manager;
        }
        if (Find(manager.known, next) == nullptr && Find(records, next) != nullptr) {
            manager.known.push_back(*Find(records, next));
        }
        manager.chain.push_back(next);
        const CGina* pGina = Find(manager.known, next);
        manager.bIncomplete = pGina == nullptr;
        if (pGina == nullptr || pGina->bTerminator) {
            return manager;
        }
        last = pGina->name;
    }
}

void Remove(CManager& manager, const std::string& name, Values& values)
{
    if (manager.bIncomplete) {
        return;
    }
    Drop(manager.chain, name);
    if (manager.chain.size() == 1 && IsSame(manager.chain[0], "msgina.dll")) {
        manager.chain.clear();
    }
    Write(manager, values);
}

void Write(const CManager& manager, Values& values)
{
    if (manager.bIncomplete) {
        return;
    }
    if (manager.chain.empty()) {
        values.erase("Winlogon");
        return;
    }
    values["Winlogon"] = manager.chain.front();
    for (std::size_t n = 0; n < manager.chain.size(); ++n) {
        const CGina* pGina = Find(manager.known, manager.chain[n]);
        const bool bLast = n + 1 == manager.chain.size();
        // That one alone has no default; a record's may be empty.
        if (pGina != nullptr && !pGina->bTerminator && !(bLast && IsSame(pGina->name, "kvs_gina.dll"))) {
            values[pGina->name] = bLast ? pGina->fallback : manager.chain[n + 1];
        }
    }
}

void Resync(CManager& own, const CManager& fresh, Values& values, const Ginas& records)
{
    for (std::size_t n = own.known.size(); n < fresh.known.size(); ++n) {
        own.known.push_back(fresh.known[n]);
    }
    const std::size_t nOwn = own.chain.size();
    const std::size_t nFresh = fresh.chain.size();
    const std::size_t n = CountCommon(own.chain, fresh.chain);
    const bool bHost = Has(fresh.chain, HOST);
    const bool bLost = nFresh != 0 && fresh.bIncomplete && !IsSame(fresh.chain.back(), HOST) &&
                       Find(fresh.known, fresh.chain.back()) != nullptr;
    const auto write = [&] { Write(own, values); };

    // The first row that applies is what happens.
    struct
    {
        bool bApplies;
        std::function<void()> act;
    } const rows[] = {
        {own.bIncomplete, [] {}},
        {fresh.bIncomplete && !bLost, write},
        {fresh.bIncomplete, [&] { Drop(own.chain, fresh.chain.back()), write(); }},
        {nOwn < nFresh && !bHost, [&] { own.chain.insert(own.chain.begin(), HOST), write(); }},
        {nOwn < nFresh && IsIncompatible(own, fresh.chain, n), write},
        {nOwn < nFresh, [&] { own.chain = fresh.chain; }},
        {nOwn > nFresh && bHost, [] {}},
        {nOwn > nFresh, [&] { Reclaim(own, fresh, values, records); }},
        {!bHost, write},
        {IsIncompatible(fresh, fresh.chain, n), [&] { own.chain.erase(own.chain.begin() + n), write(); }},
        {true, [] {}},
    };
    std::find_if(std::begin(rows), std::end(rows), [](const auto& row) { return row.bApplies; })->act();
}

} // namespace Model
