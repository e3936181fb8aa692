#include "LoadedModules.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <list>
#include <mutex>

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include "Call.h"
#include "SystemError.h"
#include "guard/FaultGuard.h"

namespace Native {
namespace {

struct CModule
{
    void* pLibrary; ///< of dlopen; also the HMODULE
    std::string path;
    DWORD dwReferences;

    HMODULE GetHandle() const { return static_cast<HMODULE>(pLibrary); }
};

using DllMainFunction = BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID);

// A DllMain may load other DLLs, on the thread that is inside the loader.
std::recursive_mutex g_mutex;

auto& GetModules()
{
    static auto& modules = *new std::list<CModule>;
    return modules;
}

auto FindModule(const void* pLibrary)
{
    auto& modules = GetModules();
    return std::find_if(modules.begin(), modules.end(),
                        [&](const CModule& module) { return module.pLibrary == pLibrary; });
}

CModule& GetModule(HMODULE hModule)
{
    const auto module = FindModule(hModule);
    Require(module != GetModules().end(), ERROR_MOD_NOT_FOUND);
    return *module;
}

/// Null when no DLL of that file name is loaded, or it is being unloaded.
CModule* FindNamed(const WideText& name)
{
    for (CModule& module : GetModules()) {
        WideText path;
        FromUtf8(module.path.substr(module.path.find_last_of('/') + 1), path);
        if (module.dwReferences != 0 && CompareNoCase(path, name) == 0) {
            return &module;
        }
    }
    return nullptr;
}

/// Whether the file is one of this system at all.
bool IsLibrary(const std::string& path)
{
    char header[SELFMAG] = {};
    std::ifstream file(path, std::ios::binary);
    return file.read(header, sizeof(header)) && std::memcmp(header, ELFMAG, SELFMAG) == 0;
}

/// Tells why dlopen failed. Windows has an error code for each reason; dlopen leaves only a text.
DWORD ExplainFailure(const std::string& path)
{
    const char* szText = dlerror();
    const std::string text = szText != nullptr ? szText : "";
    if (access(path.c_str(), R_OK) != 0) {
        return errno == ENOENT ? ERROR_MOD_NOT_FOUND : FromErrno(errno);
    }
    if (std::filesystem::is_directory(path)) {
        return ERROR_ACCESS_DENIED;
    }
    if (!IsLibrary(path)) {
        return ERROR_BAD_EXE_FORMAT;
    }
    if (text.find("undefined symbol") != std::string::npos) {
        return ERROR_PROC_NOT_FOUND;
    }
    const bool bMissing = text.find("cannot open shared object file") != std::string::npos;
    return bMissing ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT;
}

void* FindOwnSymbol(void* pLibrary, const char* szName)
{
    void* pSymbol = dlsym(pLibrary, szName);
    Dl_info info = {};
    void* pOwner = nullptr;
    void* pSelf = nullptr;
    const bool bOwn = pSymbol != nullptr && dladdr1(pSymbol, &info, &pOwner, RTLD_DL_LINKMAP) != 0 &&
                      dlinfo(pLibrary, RTLD_DI_LINKMAP, &pSelf) == 0 && pOwner == pSelf;
    return bOwn ? pSymbol : nullptr;
}

/// What DllMain returns; TRUE when there is none. A fault or exception in it is an error of the call.
BOOL CallDllMain(const CModule& module, DWORD dwReason)
{
    const auto pfnDllMain = reinterpret_cast<DllMainFunction>(FindOwnSymbol(module.pLibrary, "DllMain"));
    if (pfnDllMain == nullptr) {
        return TRUE;
    }
    const HINSTANCE hInstance = module.GetHandle();
    try {
        return CallIntoDLL([&] { return pfnDllMain(hInstance, dwReason, nullptr); });
    } catch (const CForeignFault& fault) {
        constexpr DWORD ACCESS_VIOLATION = 0xC0000005;
        Require(fault.GetCode() != ACCESS_VIOLATION, ERROR_NOACCESS);
        throw CCallError{ERROR_DLL_INIT_FAILED};
    } catch (...) {
        throw CCallError{ERROR_DLL_INIT_FAILED};
    }
}

/// Calls DllMain for the last time and unloads the DLL.
void Unload(CModule& module)
{
    const auto position = FindModule(module.pLibrary);
    try {
        CallDllMain(module, DLL_PROCESS_DETACH);
    } catch (const CCallError&) {
        // Nobody can refuse to be unloaded.
    }
    void* pLibrary = module.pLibrary;
    GetModules().erase(position);
    dlclose(pLibrary);
}

HMODULE Attach(CModule& module)
{
    try {
        Require(CallDllMain(module, DLL_PROCESS_ATTACH) != FALSE, ERROR_DLL_INIT_FAILED);
    } catch (const CCallError&) {
        // A DLL that has refused to attach is told to detach as well.
        module.dwReferences = 0;
        Unload(module);
        throw;
    }
    return module.GetHandle();
}

std::string GetFullPath(const std::string& path)
{
    std::error_code error;
    return std::filesystem::absolute(path, error).lexically_normal().string();
}

} // namespace

HMODULE LoadedModules::Load(const std::string& path)
{
    const std::lock_guard lock(g_mutex);
    // Made before the file is opened, so that a lack of memory leaves nothing behind.
    std::list<CModule> loading = {{nullptr, GetFullPath(path), 1}};
    CModule& module = loading.front();
    module.pLibrary = dlopen(module.path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module.pLibrary == nullptr) {
        throw CCallError{ExplainFailure(module.path)};
    }
    const auto loaded = FindModule(module.pLibrary);
    if (loaded != GetModules().end()) {
        dlclose(module.pLibrary);
        // A DLL that is being unloaded takes no new references.
        Require(loaded->dwReferences != 0, ERROR_DLL_INIT_FAILED);
        ++loaded->dwReferences;
        return loaded->GetHandle();
    }
    GetModules().splice(GetModules().end(), loading);
    return Attach(module);
}

HMODULE LoadedModules::Find(const WideText& name)
{
    const std::lock_guard lock(g_mutex);
    const CModule* pModule = FindNamed(name);
    return pModule != nullptr ? pModule->GetHandle() : nullptr;
}

HMODULE LoadedModules::LoadAgain(const WideText& name)
{
    const std::lock_guard lock(g_mutex);
    CModule* pModule = FindNamed(name);
    if (pModule == nullptr) {
        return nullptr;
    }
    ++pModule->dwReferences;
    return pModule->GetHandle();
}

void LoadedModules::Free(HMODULE hModule)
{
    const std::lock_guard lock(g_mutex);
    CModule& module = GetModule(hModule);
    // During the last call of its DllMain there is no reference left.
    Require(module.dwReferences != 0, ERROR_MOD_NOT_FOUND);
    if (--module.dwReferences == 0) {
        Unload(module);
    }
}

void* LoadedModules::FindExport(HMODULE hModule, const char* szName)
{
    const std::lock_guard lock(g_mutex);
    return FindOwnSymbol(GetModule(hModule).pLibrary, szName);
}

std::string LoadedModules::GetPath(HMODULE hModule)
{
    const std::lock_guard lock(g_mutex);
    return GetModule(hModule).path;
}

} // namespace Native
