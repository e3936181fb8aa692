#include "machine/MachineRegistry.h"

#include <algorithm>
#include <memory>

#include "machine/RegFile.h"
#include "machine/WholeFile.h"
#include "platform/RegistryTree.h"

namespace Native {
namespace {

/// The keys below the other roots. Nothing here uses them, but they are written back.
CTreeKey g_others;

std::shared_ptr<CTreeKey> GetRootNamed(const WideText& root)
{
    return root == MACHINE_ROOT ? RegistryTree::GetRoot() : g_others.Make(root, false);
}

void DeleteKey(const WideText& root, std::vector<WideText> path)
{
    const WideText name = path.back();
    path.pop_back();
    const std::shared_ptr<CTreeKey> pParent = CTreeKey::Find(GetRootNamed(root), path);
    if (pParent != nullptr && pParent->keys.count(name) != 0) {
        pParent->Remove(pParent->keys.find(name));
    }
}

std::shared_ptr<CTreeKey> MakeKey(const WideText& root, const std::vector<WideText>& path)
{
    std::shared_ptr<CTreeKey> pKey = GetRootNamed(root);
    for (const WideText& name : path) {
        pKey = pKey->Make(name, pKey->bVolatile);
    }
    return pKey;
}

void Apply(const CRegFileChange& change)
{
    if (!change.value && change.bDelete) {
        DeleteKey(change.root, change.key);
        return;
    }
    const std::shared_ptr<CTreeKey> pKey = MakeKey(change.root, change.key);
    if (change.value && change.bDelete) {
        pKey->values.erase(*change.value);
    } else if (change.value) {
        pKey->values[*change.value] = *change.data;
    }
}

bool WriteKey(const CTreeKey& key, const WideText& root, const WideText& path, CRegFileWriter& file)
{
    bool bWritten = file.AddKey(path, root);
    for (const auto& [name, data] : key.values) {
        bWritten = file.AddValue(name, &data) && bWritten;
    }
    const WideText start = path.empty() ? path : path + TEXT("\\");
    return bWritten && std::all_of(key.keys.begin(), key.keys.end(), [&](const auto& child) {
               return child.second->bVolatile || WriteKey(*child.second, root, start + child.first, file);
           });
}

} // namespace
} // namespace Native

using namespace Native;

LONG MachineRegistry::Load(const WCHAR* szFile, std::string* pReason)
{
    std::string bytes;
    const DWORD dwError = LoadFile(szFile, bytes);
    if (dwError != ERROR_SUCCESS) {
        return static_cast<LONG>(dwError);
    }
    try {
        const std::vector<CRegFileChange> changes = ParseRegFile(bytes);
        const std::lock_guard lock(RegistryTree::g_mutex);
        for (const CRegFileChange& change : changes) {
            Apply(change);
        }
    } catch (const CRegFileError& error) {
        if (pReason != nullptr) {
            *pReason = error.text;
        }
        return ERROR_BADDB;
    }
    return ERROR_SUCCESS;
}

LONG MachineRegistry::Import(const WCHAR* szFile, std::string* pReason)
{
    return Load(szFile, pReason);
}

LONG MachineRegistry::Save(const WCHAR* szFile)
{
    CRegFileWriter file;
    {
        const std::lock_guard lock(RegistryTree::g_mutex);
        bool bWritten = WriteKey(*RegistryTree::GetRoot(), MACHINE_ROOT, WideText(), file);
        for (const auto& [root, pKey] : g_others.keys) {
            bWritten = WriteKey(*pKey, root, WideText(), file) && bWritten;
        }
        if (!bWritten) {
            return ERROR_INVALID_NAME;
        }
    }
    return static_cast<LONG>(StoreFile(szFile, file.GetBytes(), true));
}

LONG MachineRegistry::KeepIn(const WCHAR* szFile)
{
    RegistryTree::g_flush = [file = WideText(szFile)] { return Save(file.c_str()); };
    return ERROR_SUCCESS;
}

LONG MachineRegistry::Clear()
{
    const std::lock_guard lock(RegistryTree::g_mutex);
    RegistryTree::GetRoot()->RemoveAll();
    g_others.RemoveAll();
    return ERROR_SUCCESS;
}

LONG MachineRegistry::ForgetVolatile()
{
    const std::lock_guard lock(RegistryTree::g_mutex);
    RegistryTree::GetRoot()->RemoveVolatile();
    return ERROR_SUCCESS;
}
