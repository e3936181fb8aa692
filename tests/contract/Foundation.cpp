#include "Contract.h"
#include "ListEx.h"
#include "Messages.h"
#include "RegistryClasses.h"
#include "ResourceObject.h"
#include "ThreadObject.h"

namespace {

struct CItem
{
    bool operator==(const WCHAR* szKey) const { return *szKey == chName; }
    bool operator==(const CItem& other) const { return other.chName == chName; }
    WCHAR chName;
};

class CThread : public CThreadObject
{
public:
    CThread() : CThreadObject(TAG, KEY, TEXT("Contract"), false) {}
    void Thread() override
    {
        SetEvent(StartEvent);
        WaitForSingleObject(StopEvent, INFINITE);
        SetEvent(FinishEvent);
    }
};

TEST_F(Contract, FoundationList)
{
    CListEx<CItem> list(TAG, KEY);
    EXPECT_TRUE(list.Add(new CItem{'b'}, 0));
    EXPECT_TRUE(list.Insert(new CItem{'a'}, 0));
    EXPECT_TRUE(list.Add(new CItem{'c'}, 0));
    CItem* pItem = nullptr;
    EXPECT_TRUE(list.MoveTo(TEXT("a")) && list.GetItem(pItem) && pItem->chName == 'a');
    EXPECT_TRUE(list.Next() && list.Prev() && list.MoveItemDown());
    EXPECT_TRUE(list.m_pHead->m_pItem->chName == 'b' && list.m_pHead->pNext->pNext == list.m_pTail);
    list.End();
    const CItem replacement{'d'};
    EXPECT_TRUE(list.SetItem(&replacement) && !list.IsInList(TEXT("c")));
    CListEx<CItem> copy(TAG, KEY);
    EXPECT_TRUE(copy.CopyList(list) && copy == list);
    copy.Begin();
    EXPECT_TRUE(copy.Remove() && copy.Remove(TEXT("d")) && !(copy == list));
    EXPECT_EQ(1u, copy.m_dwCount);
    // Nodes without an item are like each other only.
    EXPECT_TRUE(list.Flush() && copy.Flush() && list.m_pCursor == nullptr);
    list.Add(nullptr, 0);
    copy.Add(new CItem{'a'}, 0);
    EXPECT_FALSE(list == copy || copy == list);
    EXPECT_TRUE(copy.CopyList(list) && list == copy);
    EXPECT_EQ(0, Count("[WARNING] An unhandled exception occurred"));
}

TEST_F(Contract, FoundationRegistry)
{
    CRegistryString text(TAG, KEY, HKEY_LOCAL_MACHINE, KEY, TEXT("Text"), KEY_ALL_ACCESS, true, true, true,
                         true, true, REG_OPTION_NON_VOLATILE);
    EXPECT_TRUE(text.m_hKey != nullptr && text.m_bOpen && text.m_bCreate);
    EXPECT_EQ("Text", Narrow(text.m_szValueName));
    EXPECT_EQ(Narrow(KEY), Narrow(text.m_szSubKey));
    EXPECT_TRUE(text.SetRegistryString(TEXT("value"), false));
    WCHAR szText[4];
    EXPECT_TRUE(text.GetRegistryString(szText, 4, false));
    EXPECT_EQ("val", Narrow(szText));
    EXPECT_EQ("value", Narrow(text.m_szRegString));
    EXPECT_TRUE(text.DeleteRegistryValue() && text.CloseKey() && text.CloseKey() && text.OpenKey());
    CRegistryDword number(TAG, KEY, HKEY_LOCAL_MACHINE, KEY, TEXT("Number"), KEY_ALL_ACCESS, true, true,
                          false, false, false, REG_OPTION_NON_VOLATILE);
    DWORD dwNumber = 0;
    EXPECT_TRUE(number.SetRegistryDword(5, true) && number.GetRegistryDword(&dwNumber, true));
    EXPECT_TRUE(dwNumber == 5 && number.m_dwValue == 5);
    EXPECT_TRUE(number.WriteRegistry() && number.ReadRegistry());
    CRegistryKey key(TAG, KEY, HKEY_LOCAL_MACHINE, KEY, KEY_READ, false, false, 0);
    EXPECT_TRUE(key.CreateKey() && key.OpenKey() && key.m_samDesired == KEY_READ);
    EXPECT_THROW(CRegistryKey(TAG, KEY, HKEY_LOCAL_MACHINE, TEXT("SOFTWARE\\ORX\\LUM\\Gina\\None"), KEY_READ,
                              false, true, 0),
                 CUnableToOpenRegistryKeyException);
}

TEST_F(Contract, FoundationThreadAndResource)
{
    CThread thread;
    EXPECT_EQ("Contract", Narrow(thread.m_szThreadName));
    EXPECT_TRUE(thread.StartThread() && thread.m_bRunning && thread.m_hThread != nullptr);
    EXPECT_TRUE(thread.StopThread() && !thread.m_bRunning && !thread.CleanThread());

    const HMODULE hModule = LoadLibraryW(TEXT("version_test_dll.dll"));
    {
        CResourceObject resources(TAG, KEY, hModule, 0, 0);
        EXPECT_TRUE(resources.m_hInst == hModule && resources.m_szResourceDLL == nullptr);
        VS_FIXEDFILEINFO* pInfo = nullptr;
        EXPECT_TRUE(resources.GetVersionResource(1) != nullptr && resources.LoadMenu(1, &pInfo));
        EXPECT_EQ(0x00020005u, pInfo->dwFileVersionMS);
    }
    FreeLibrary(hModule);
    EXPECT_THROW(CResourceObject(TAG, KEY, nullptr, 0, 0), CBadArgException);
}

} // namespace
