#include "RegistryTree.h"

namespace Native {

std::mutex RegistryTree::g_mutex;
std::function<LONG()> RegistryTree::g_flush;

std::shared_ptr<CTreeKey> CTreeKey::Find(std::shared_ptr<CTreeKey> pKey, const std::vector<WideText>& path)
{
    for (const WideText& name : path) {
        const auto found = pKey->keys.find(name);
        if (found == pKey->keys.end()) {
            return nullptr;
        }
        pKey = found->second;
    }
    return pKey;
}

std::shared_ptr<CTreeKey> CTreeKey::Make(const WideText& name, bool bMakeVolatile)
{
    const auto found = keys.find(name);
    if (found != keys.end()) {
        return found->second;
    }
    const auto pKey = std::make_shared<CTreeKey>();
    pKey->bVolatile = bMakeVolatile;
    keys.emplace(name, pKey);
    return pKey;
}

void CTreeKey::Remove(Keys::iterator key)
{
    key->second->bDeleted = true;
    key->second->RemoveAll();
    keys.erase(key);
}

void CTreeKey::RemoveAll()
{
    while (!keys.empty()) {
        Remove(keys.begin());
    }
    values.clear();
}

void CTreeKey::RemoveVolatile()
{
    for (auto key = keys.begin(); key != keys.end();) {
        const auto current = key++;
        if (current->second->bVolatile) {
            Remove(current);
        } else {
            current->second->RemoveVolatile();
        }
    }
}

const std::shared_ptr<CTreeKey>& RegistryTree::GetRoot()
{
    // Never destroyed: DLLs may use the registry until the process is gone.
    static const auto& pRoot = *new std::shared_ptr<CTreeKey>(std::make_shared<CTreeKey>());
    return pRoot;
}

} // namespace Native
