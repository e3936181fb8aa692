#include <memory>

#include "GinaNames.h"
#include "FailingAllocation.h"
#include "ListEx.h"
#include "TestMachine.h"

namespace {

using Text = std::basic_string<WCHAR>;

/// An item with a name, which counts its living kind and may refuse to be destroyed quietly.
class CItem
{
public:
    explicit CItem(Text name) : m_Name(std::move(name)) { ++s_nAlive; }
    CItem(const WCHAR*, const WCHAR*, const CItem* pOther) : CItem(pOther->m_Name) {}
    ~CItem() noexcept(false)
    {
        --s_nAlive;
        if (m_Name == TEXT("throws")) {
            throw 1;
        }
    }
    bool operator==(const WCHAR* szName) const { return EqualNames(m_Name.c_str(), szName); }
    bool operator==(const CItem& other) const { return EqualNames(m_Name.c_str(), other.m_Name.c_str()); }

    Text m_Name;
    static inline int s_nAlive = 0;
};

using CItemList = CListEx<CItem>;

class ListEx : public CTestMachine
{
protected:
    ListEx() : list(LUM_GINA_APP, LUM_GINA_MTM) { CItem::s_nAlive = 0; }

    void Fill(CItemList& target, std::initializer_list<const WCHAR*> names)
    {
        for (const WCHAR* szName : names) {
            EXPECT_TRUE(target.Add(new CItem(szName), 0));
        }
    }

    /// The names in their order, the current one with a star.
    static std::string Contents(const CItemList& of)
    {
        std::string text;
        DWORD dwCount = 0;
        const CItemList::Node* pPrev = nullptr;
        for (const auto* pNode = of.m_pHead; pNode != nullptr; pNode = pNode->pNext) {
            EXPECT_EQ(pPrev, pNode->pPrev);
            pPrev = pNode;
            ++dwCount;
            text += Narrow(pNode->m_pItem->m_Name.c_str()) + (pNode == of.m_pCursor ? "* " : " ");
        }
        EXPECT_EQ(pPrev, of.m_pTail);
        EXPECT_EQ(dwCount, of.m_dwCount);
        return text;
    }

    /// Carries out "operation" or "operation name".
    bool Do(const std::string& step)
    {
        const std::size_t nBlank = step.find(' ');
        const std::string operation = step.substr(0, nBlank);
        const Text name = nBlank == std::string::npos ? Text() : Widen(step.substr(nBlank + 1));
        CItem* pItem = nullptr;
        EXPECT_EQ(list.m_pCursor != nullptr, list.GetItem(pItem));
        if (operation == "add") {
            return list.Add(new CItem(name), 0);
        }
        if (operation == "insert") {
            auto item = std::make_unique<CItem>(name);
            return list.Insert(item.get(), 0) && item.release() != nullptr;
        }
        if (operation == "set") {
            const CItem item(name);
            return list.SetItem(&item);
        }
        if (operation == "begin" || operation == "end") {
            operation == "end" ? list.End() : list.Begin();
            return true;
        }
        return operation == "to"     ? list.MoveTo(name.c_str())
               : operation == "has"  ? list.IsInList(name.c_str())
               : operation == "next" ? list.Next()
               : operation == "prev" ? list.Prev()
               : operation == "up"   ? list.MoveItemUp()
               : operation == "down" ? list.MoveItemDown()
               : name.empty()        ? list.Remove()
                                     : list.Remove(name.c_str());
    }

    CItemList list;
};

TEST_F(ListEx, KeepsItsOrderAndItsCursor)
{
    struct
    {
        const char* szStep;
        bool bDone;
        const char* szContents; ///< each step goes on from what the one before has left
    } const rows[] = {
        // An empty list has nothing to give.
        {"next", false, ""},
        {"prev", false, ""},
        {"remove", false, ""},
        {"remove a", false, ""},
        {"to a", false, ""},
        {"has a", false, ""},
        {"up", false, ""},
        {"down", false, ""},
        {"set a", false, ""},
        {"begin", true, ""},
        {"insert b", true, "b* "},
        {"insert a", true, "a b* "},
        {"add c", true, "a b* c "},
        {"add a", true, "a b* c a "},
        {"next", true, "a b c* a "},
        {"next", true, "a b c a* "},
        {"next", false, "a b c a* "},
        {"down", false, "a b c a* "},
        {"prev", true, "a b c* a "},
        {"to x", false, "a b c a* "},
        {"to A", true, "a* b c a "},
        {"prev", false, "a* b c a "},
        {"up", false, "a* b c a "},
        {"insert d", true, "d a* b c a "},
        {"up", true, "a d b c a "},
        // Without a current node.
        {"insert e", false, "a d b c a "},
        {"next", false, "a d b c a "},
        {"remove", false, "a d b c a "},
        {"up", false, "a d b c a "},
        {"down", false, "a d b c a "},
        {"set e", false, "a d b c a "},
        {"add e", true, "a d b c a e "},
        {"begin", true, "a* d b c a e "},
        {"down", true, "d a b* c a e "},
        {"up", true, "d* b a c a e "},
        {"end", true, "d b a c a e* "},
        {"prev", true, "d b a c a* e "},
        {"down", true, "d b a c e a "},
        {"end", true, "d b a c e a* "},
        {"up", true, "d b a c* a e "},
        {"set f", true, "d b a f* a e "},
        {"has E", true, "d b a f* a e "},
        {"has x", false, "d b a f* a e "},
        {"remove", true, "d* b a a e "},
        {"remove A", true, "d* b a e "},
        {"remove e", true, "d* b a "},
        {"remove x", false, "d b a* "},
        {"remove", true, "d* b "},
        {"remove d", true, "b* "},
        {"remove", true, ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.bDone, Do(row.szStep)) << row.szStep;
        EXPECT_EQ(row.szContents, Contents(list)) << row.szStep;
    }
    EXPECT_EQ(0, CItem::s_nAlive);
}

TEST_F(ListEx, ARemovedNodeIsTheCallersToDestroy)
{
    CItemList::Node* pNode = nullptr;
    EXPECT_FALSE(list.Remove(pNode));
    Fill(list, {TEXT("a"), TEXT("b"), TEXT("c")});
    list.MoveTo(TEXT("b"));
    ASSERT_TRUE(list.Remove(pNode));
    EXPECT_EQ("a* c ", Contents(list));
    EXPECT_EQ(3, CItem::s_nAlive);
    list.DestroyNode(pNode);
    EXPECT_EQ(2, CItem::s_nAlive);
}

TEST_F(ListEx, FlushFollowsNoLinkBackwards)
{
    Fill(list, {TEXT("a"), TEXT("b")});
    list.m_pTail->pPrev = reinterpret_cast<CItemList::Node*>(1);
    EXPECT_TRUE(list.Flush());
    EXPECT_EQ("", Contents(list));
    EXPECT_EQ(nullptr, list.m_pTail);
    EXPECT_EQ(0, CItem::s_nAlive);
}

TEST_F(ListEx, CopiesAreDeep)
{
    Fill(list, {TEXT("a"), TEXT("b")});
    CItemList copy(LUM_GINA_APP, LUM_GINA_MTM);
    Fill(copy, {TEXT("old")});
    EXPECT_TRUE(copy.CopyList(list));
    EXPECT_FALSE(copy == CItemList(LUM_GINA_APP, LUM_GINA_MTM)) << "a longer one";
    list.Flush();
    EXPECT_EQ("a* b ", Contents(copy));
    EXPECT_FALSE(copy.CopyList(list)) << "an empty one";
    // Nodes without an item are like each other only.
    list.Add(nullptr, 0);
    copy.Flush();
    Fill(copy, {TEXT("a")});
    EXPECT_FALSE(list == copy || copy == list);
    EXPECT_TRUE(copy.CopyList(list) && list == copy);
    EXPECT_EQ(0, CItem::s_nAlive);
}

TEST_F(ListEx, FailedAllocationChangesNothing)
{
    struct
    {
        const char* szVariable;
        bool bInsert;
        bool bEmpty;
    } const rows[] = {{"NodeType< T, S >", true, true},
                      {"NodeType< T, S >", true, false},
                      {"NodeType< T >", false, true},
                      {"NodeType", false, false}};
    for (const auto& row : rows) {
        list.Flush();
        ClearLog();
        if (!row.bEmpty) {
            Fill(list, {TEXT("a")});
        }
        const std::string before = Contents(list);
        auto item = std::make_unique<CItem>(TEXT("b"));
        bool bDone = true;
        {
            const CFailingAllocation noMemory(0, CFailingAllocation::Kind::Nothrow);
            bDone = row.bInsert ? list.Insert(item.get(), 0) : list.Add(item.get(), 0);
        }
        EXPECT_FALSE(bDone);
        EXPECT_EQ(before, Contents(list));
        EXPECT_EQ(
            std::vector<std::string>{std::string("[EXCEPTION] Memory could not be allocated, Variable: ") +
                                     row.szVariable},
            Log());
    }
}

TEST_F(ListEx, ItemsThatFailToGoAreReported)
{
    Fill(list, {TEXT("throws"), TEXT("b"), TEXT("throws")});
    EXPECT_TRUE(list.Remove());
    EXPECT_TRUE(list.Flush());
    const std::string line = "[WARNING] Unable to delete variable, Variable: m_pItem";
    EXPECT_EQ((std::vector<std::string>{line, line}), Log());
    EXPECT_EQ(0, CItem::s_nAlive);
}

} // namespace
