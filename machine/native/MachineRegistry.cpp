#include "machine/MachineRegistry.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

#include <unistd.h>

#include "machine/RegFile.h"
#include "platform/RegistryTree.h"
#include "platform/SystemError.h"

namespace Native {
namespace {

struct CFileCloser
{
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};
using File = std::unique_ptr<std::FILE, CFileCloser>;

/// ERROR_SUCCESS, or why the file could not be read.
DWORD ReadWholeFile(const std::string& path, std::string& bytes)
{
    const File pFile(std::fopen(path.c_str(), "rbe"));
    if (pFile == nullptr) {
        return FromErrno(errno);
    }
    char buffer[4096];
    for (std::size_t cb = 0; (cb = std::fread(buffer, 1, sizeof(buffer), pFile.get())) != 0;) {
        bytes.append(buffer, cb);
    }
    return std::ferror(pFile.get()) != 0 ? FromErrno(errno) : ERROR_SUCCESS;
}

/// ERROR_SUCCESS, or why a complete file could not be written.
DWORD WriteWholeFile(const std::string& path, const std::string& bytes)
{
    std::FILE* pFile = std::fopen(path.c_str(), "wbe");
    if (pFile == nullptr) {
        return FromErrno(errno);
    }
    bool bWritten = std::fwrite(bytes.data(), 1, bytes.size(), pFile) == bytes.size();
    bWritten = std::fflush(pFile) == 0 && fsync(fileno(pFile)) == 0 && bWritten;
    const DWORD dwError = bWritten ? ERROR_SUCCESS : FromErrno(errno);
    return std::fclose(pFile) == 0 || dwError != ERROR_SUCCESS ? dwError : FromErrno(errno);
}

/// Replaces the old file by the new one in one step, so that there is a complete file at any time.
DWORD ReplaceFile(const std::string& path, const std::string& bytes)
{
    const std::string newPath = path + ".new";
    DWORD dwError = WriteWholeFile(newPath, bytes);
    if (dwError == ERROR_SUCCESS && std::rename(newPath.c_str(), path.c_str()) != 0) {
        dwError = FromErrno(errno);
    }
    if (dwError != ERROR_SUCCESS) {
        std::remove(newPath.c_str());
    }
    return dwError;
}

void DeleteKey(std::vector<WideText> path)
{
    const WideText name = path.back();
    path.pop_back();
    const std::shared_ptr<CTreeKey> pParent = CTreeKey::Find(RegistryTree::GetRoot(), path);
    if (pParent != nullptr && pParent->keys.count(name) != 0) {
        pParent->Remove(pParent->keys.find(name));
    }
}

std::shared_ptr<CTreeKey> MakeKey(const std::vector<WideText>& path)
{
    std::shared_ptr<CTreeKey> pKey = RegistryTree::GetRoot();
    for (const WideText& name : path) {
        pKey = pKey->Make(name, pKey->bVolatile);
    }
    return pKey;
}

void Apply(const CRegFileChange& change)
{
    if (!change.value && change.bDelete) {
        DeleteKey(change.key);
        return;
    }
    const std::shared_ptr<CTreeKey> pKey = MakeKey(change.key);
    if (change.value && change.bDelete) {
        pKey->values.erase(*change.value);
    } else if (change.value) {
        pKey->values[*change.value] = *change.data;
    }
}

bool WriteKey(const CTreeKey& key, const WideText& path, CRegFileWriter& file)
{
    bool bWritten = file.AddKey(path);
    for (const auto& [name, data] : key.values) {
        bWritten = file.AddValue(name, &data) && bWritten;
    }
    const WideText start = path.empty() ? path : path + TEXT("\\");
    return bWritten && std::all_of(key.keys.begin(), key.keys.end(), [&](const auto& child) {
               return child.second->bVolatile || WriteKey(*child.second, start + child.first, file);
           });
}

} // namespace
} // namespace Native

using namespace Native;

LONG MachineRegistry::Load(const WCHAR* szFile, std::string* pReason)
{
    std::string bytes;
    const DWORD dwError = ReadWholeFile(ToPath(szFile), bytes);
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
        if (!WriteKey(*RegistryTree::GetRoot(), WideText(), file)) {
            return ERROR_INVALID_NAME;
        }
    }
    return static_cast<LONG>(ReplaceFile(ToPath(szFile), file.GetBytes()));
}

LONG MachineRegistry::Clear()
{
    const std::lock_guard lock(RegistryTree::g_mutex);
    RegistryTree::GetRoot()->RemoveAll();
    return ERROR_SUCCESS;
}

LONG MachineRegistry::ForgetVolatile()
{
    const std::lock_guard lock(RegistryTree::g_mutex);
    RegistryTree::GetRoot()->RemoveVolatile();
    return ERROR_SUCCESS;
}
