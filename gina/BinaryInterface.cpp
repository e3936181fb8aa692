#include <cstddef>

#include "GinaObject.h"
#include "LUMObject.h"

// Checks the offsets at which plugins read. A test checks the order of CGinaObject's slots.

namespace {

// C++ leaves the layout of derived classes to the compiler. The assertions below check it.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

constexpr bool IsAt(std::size_t nActual, std::size_t nExpected)
{
    // Only the 32-bit library has plugins.
    return sizeof(void*) != 4 || nActual == nExpected;
}

static_assert(IsAt(sizeof(GinaNode), 24));
static_assert(IsAt(offsetof(GinaNode, szAPP), 0));
static_assert(IsAt(offsetof(GinaNode, szMTM), 4));
static_assert(IsAt(offsetof(GinaNode, m_pItem), 8));
static_assert(IsAt(offsetof(GinaNode, m_dwTag), 12));
static_assert(IsAt(offsetof(GinaNode, pNext), 16));
static_assert(IsAt(offsetof(GinaNode, pPrev), 20));

static_assert(IsAt(offsetof(CGinaObject, szAPP), 4));
static_assert(IsAt(offsetof(CGinaObject, szMTM), 8));
static_assert(IsAt(offsetof(CGinaObject, m_pGinaPluginContext), 12));

static_assert(IsAt(sizeof(CGinaPluginInfo), 32));
static_assert(IsAt(offsetof(CGinaPluginInfo, szAPP), 0));
static_assert(IsAt(offsetof(CGinaPluginInfo, szMTM), 4));
static_assert(IsAt(offsetof(CGinaPluginInfo, m_dwSpare1), 8));
static_assert(IsAt(offsetof(CGinaPluginInfo, m_szFriendlyName), 12));
static_assert(IsAt(offsetof(CGinaPluginInfo, m_szGinaDLL), 16));
static_assert(IsAt(offsetof(CGinaPluginInfo, m_dwWlxVersion), 20));
static_assert(IsAt(offsetof(CGinaPluginInfo, m_dwLUMVersion), 24));
static_assert(IsAt(offsetof(CGinaPluginInfo, m_dwSpare2), 28));

static_assert(IsAt(sizeof(CGinaPluginContext), 52));
static_assert(IsAt(offsetof(CGinaPluginContext, szAPP), 0));
static_assert(IsAt(offsetof(CGinaPluginContext, szMTM), 4));
static_assert(IsAt(offsetof(CGinaPluginContext, m_hDLLInstance), 8));
static_assert(IsAt(offsetof(CGinaPluginContext, m_hInstance), 12));
static_assert(IsAt(offsetof(CGinaPluginContext, m_hWlx), 16));
static_assert(IsAt(offsetof(CGinaPluginContext, m_GinaPluginInfo), 20));

static_assert(IsAt(offsetof(CLUMObject, szAPP), 0));
static_assert(IsAt(offsetof(CLUMObject, szMTM), 4));
static_assert(IsAt(offsetof(CLUMObject, m_pRegistryManager), 8));
static_assert(IsAt(offsetof(CLUMObject, m_pGinaObjectList), 12));
static_assert(IsAt(offsetof(CLUMObject, m_pLUMRegistry), 16));

} // namespace
