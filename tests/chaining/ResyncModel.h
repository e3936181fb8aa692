#pragma once

#include <map>
#include <string>
#include <vector>

// What a resynchronisation comes to, restated from what it is for and compared with what it does.
namespace Model {

using Values = std::map<std::string, std::string>;
using Names = std::vector<std::string>;

struct CGina
{
    std::string name;
    std::string fallback; ///< empty for none
    bool bTerminator = false;
    bool bIncompatible = false;
};
using Ginas = std::vector<CGina>;

struct CManager
{
    Ginas known;
    Names chain;
    bool bIncomplete = false;
};

/// Reads the chain, and repairs the values unless bNoRepair. records: the GINAs that have a record.
CManager Build(Values& values, const Ginas& records, bool bNoRepair);
void Remove(CManager& manager, const std::string& name, Values& values);
void Write(const CManager& manager, Values& values);
void Resync(CManager& own, const CManager& fresh, Values& values, const Ginas& records);

} // namespace Model
