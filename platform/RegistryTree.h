#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "RegistryData.h"
#include "RegistryPath.h"
#include "Text.h"

namespace Native {

/// A key of the registry, with all that is below it. The default value has the empty name. Keys keep the
/// order of their names, as Windows enumerates them.
struct CTreeKey
{
    using Keys = std::map<WideText, std::shared_ptr<CTreeKey>, CLessNoCase>;

    /// The key of that path below this one; null when there is none.
    static std::shared_ptr<CTreeKey> Find(std::shared_ptr<CTreeKey> pKey, const std::vector<WideText>& path);

    /// The key named szName directly below, made if it is not there.
    std::shared_ptr<CTreeKey> Make(const WideText& name, bool bMakeVolatile);

    /// Takes a key directly below out of the tree, with all that is below it.
    void Remove(Keys::iterator key);
    void RemoveAll();
    void RemoveVolatile();

    Keys keys;
    std::map<WideText, CRegistryData, CLessNoCase> values;
    bool bVolatile = false;
    /// Out of the tree; handles may still hold it.
    bool bDeleted = false;
};

namespace RegistryTree {

/// Guards the whole tree. Touch no memory of a caller while holding it: a bad pointer of a DLL would end the
/// call without unlocking.
extern std::mutex g_mutex;

/// Keeps the registry where it outlasts the process; empty when that is nowhere. Set before threads run.
extern std::function<LONG()> g_flush;

/// The key of HKEY_LOCAL_MACHINE.
const std::shared_ptr<CTreeKey>& GetRoot();

} // namespace RegistryTree

} // namespace Native
