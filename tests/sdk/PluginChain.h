#pragma once

#include "Exceptions.h"
#include "GinaPluginObject.h"
#include "GinaStandardObject.h"
#include "DllDriver.h"
#include "TestMachine.h"

/// A chain that a test puts together itself, and the DLLs that it is made of.
class CPluginChain : public CTestMachine
{
protected:
    CPluginChain()
        : a(TEXT("test_plugin_a.dll")), b(TEXT("test_plugin_b.dll")), gina(TEXT("standin_gina.dll"))
    {
    }

    template <typename Object>
    CGinaObject& Add(const WCHAR* szDLL)
    {
        auto* pObject =
            new Object(LUM_GINA_APP, LUM_GINA_MTM, HOST, szDLL, LUM_INTERFACE_VERSION, WLX_VERSION_1_4);
        EXPECT_TRUE(chain.Add(pObject, 0));
        return *pObject;
    }
    CGinaObject& AddPlugin(const WCHAR* szDLL) { return Add<CGinaPluginObject>(szDLL); }
    CGinaObject& AddGina() { return Add<CGinaStandardObject>(gina_name); }

    CGinaObject& First() { return *chain.m_pHead->m_pItem; }
    GinaNode* FirstNode() { return chain.m_pHead; }

    static inline HINSTANCE const HOST = reinterpret_cast<HINSTANCE>(0x1000);
    static inline PVOID const CONTEXT = reinterpret_cast<PVOID>(0x2000);
    static constexpr WCHAR gina_name[] = TEXT("standin_gina.dll");

    CPluginDriver a;
    CPluginDriver b;
    CStandin gina;
    CGinaObjectList chain{LUM_GINA_APP, LUM_GINA_MTM};
};
