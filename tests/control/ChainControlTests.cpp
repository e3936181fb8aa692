#include "../chaining/ChainMachine.h"
#include "LUMObject.h"

// The operations over the chain of GINAs in the registry.

namespace {

constexpr WCHAR OWN_DLL[] = TEXT("lum_gina.dll");

class ChainControl : public CChainMachine
{
protected:
    void Start(const std::string& chain)
    {
        SetValues(ValuesOf(chain));
        manager = Build();
        object = std::make_unique<CLUMObject>(LUM_GINA_APP, LUM_GINA_MTM, manager.get(), &list,
                                              m_pConfiguration.get(), &gate);
        ClearLog();
    }

    CGinaObjectList list{LUM_GINA_APP, LUM_GINA_MTM};
    CCallGate gate;
    std::unique_ptr<CRegistryManager> manager;
    std::unique_ptr<CLUMObject> object;
};

TEST_F(ChainControl, EnablesAndDisablesTheSystem)
{
    Start("wpnGina.dll msgina.dll");
    struct
    {
        bool bEnable;
        bool bResult;
        const char* szChain;
    } const rows[] = {{true, true, "lum_gina.dll wpnGina.dll msgina.dll"},
                      {true, false, "lum_gina.dll wpnGina.dll msgina.dll"},
                      {false, true, "wpnGina.dll msgina.dll"},
                      {false, false, "wpnGina.dll msgina.dll"}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.bResult, object->LUMEnableGina(row.bEnable));
        EXPECT_EQ(row.szChain, ChainOf(*Build(true))) << "as the registry has it";
        EXPECT_EQ(row.bEnable, object->LUMIsGinaInChainingList(OWN_DLL));
    }
}

TEST_F(ChainControl, RemovesAnotherGina)
{
    Start("lum_gina.dll wpnGina.dll msgina.dll");
    EXPECT_TRUE(object->LUMIsGinaInChainingList(TEXT("WPNGINA.DLL")));
    EXPECT_TRUE(object->LUMRemoveGina(TEXT("wpnGina.dll")));
    EXPECT_EQ("lum_gina.dll msgina.dll", ChainOf(*Build(true)));
    for (const WCHAR* szName : {TEXT("wpnGina.dll"), TEXT("nowhere.dll"), static_cast<const WCHAR*>(nullptr)})
    {
        ClearLog();
        EXPECT_FALSE(object->LUMIsGinaInChainingList(szName));
        EXPECT_EQ(3, Count("[WARNING] The requested operation failed or it was cancelled"))
            << "of the operation, the manager and the list";
        EXPECT_FALSE(object->LUMRemoveGina(szName));
    }
    EXPECT_EQ("lum_gina.dll msgina.dll", ChainOf(*Build(true)));
}

} // namespace
