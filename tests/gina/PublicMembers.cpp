// Compiles only: the members that others go by, and that no other suite names. The rest have their tests.

#include "LUMGina.h"
#include "LUMThreadObjects.h"
#include "RegistryClasses.h"
#include "ResourceObject.h"
#include "chaining/RegistryManager.h"

namespace {

template <auto... Members>
constexpr bool HAS = sizeof...(Members) != 0;

static_assert(HAS<&CRegistryKey::m_hKeyRoot, &CRegistryKey::m_szSubKey, &CRegistryKey::m_samDesired,
                  &CRegistryKey::m_hKey, &CRegistryKey::m_bCreate, &CRegistryKey::m_bOpen,
                  &CRegistryValue::m_szValueName, &CRegistryString::m_szRegString, &CRegistryDword::m_dwValue,
                  &CThreadObject::m_szThreadName, &CThreadObject::CleanThread, &CResourceObject::m_hInst,
                  &CResourceObject::m_szResourceDLL, &CResourceObject::GetVersionResource>);

static_assert(HAS<&CLUMRegistry::m_pPlugins, &CLUMRegistry::m_pGinaDLL, &CLUMRegistry::m_pEnabled,
                  &CLUMRegistry::m_pPipeInterval, &CLUMRegistry::m_pRegistryMonitorInterval,
                  &CLUMRegistry::m_dwNumPlugins, &CLUMRegistry::m_szPlugins, &CLUMRegistry::IsPluginListed,
                  &CWinlogonRegistry::m_pGinaDLL>);

static_assert(HAS<&CGinaChainingObject::m_szGinaDLL, &CGinaChainingInfoObject::m_szSubKey,
                  &CGinaChainingInfoObject::m_szOldGinaDLLKey, &CGinaChainingInfoObject::m_szDefaultGinaDLL,
                  &CGinaChainingInfoObject::m_pOldGinaDLL, &CGinaChainingInfoObject::m_bTerminator,
                  &CGinaChainingInfoObject::m_bStandalone, &CGinaChainingInfoObject::m_bMustBeFirst,
                  &CGinaChainingInfoObject::m_bIsIncompatible, &CRegistryManager::m_pKnownGinaList,
                  &CRegistryManager::m_pGinaChainingList, &CRegistryManager::m_bChainIncomplete,
                  &CRegistryManager::m_pLUMRegistry, &CRegistryManager::m_pWinlogonRegistry>);

static_assert(HAS<&CGinaContext::m_hInstance, &CGinaContext::m_hWlx, &CGinaContext::GetInstanceHandle,
                  &CGinaContext::GetWlxHandle, &CGinaPluginContext::m_hInstance, &CGinaPluginContext::m_hWlx,
                  &CGinaPluginContext::SetGinaPluginInfo, &CWinlogonObject::m_dwVersion,
                  &CWinlogonObject::m_pWinlogonFunctions>);

static_assert(
    HAS<&CLUMObject::m_pRegistryManager, &CLUMObject::m_pGinaObjectList, &CLUMPipeThreadObject::m_pLUMGina,
        &CLUMPipeThreadObject::m_pLUMObject, &CLUMRegMonitorThreadObject::m_pRegistryManager,
        &CLUMRegMonitorThreadObject::m_pWinlogonRegistry>);

} // namespace
