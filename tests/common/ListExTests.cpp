#include <algorithm>
#include <memory>
#include <random>

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

    static std::string Contents(const CItemList& of)
    {
        std::string text;
        for (const auto* pNode = of.m_pHead; pNode != nullptr; pNode = pNode->pNext) {
            text += Narrow(pNode->m_pItem->m_Name.c_str()) + (pNode == of.m_pCursor ? "* " : " ");
        }
        return text;
    }

    CItemList list;
};

TEST_F(ListEx, EmptyListRefuses)
{
    CItem* pItem = nullptr;
    const CItem other(TEXT("other"));
    EXPECT_FALSE(list.GetItem(pItem));
    EXPECT_FALSE(list.SetItem(&other));
    EXPECT_FALSE(list.Next());
    EXPECT_FALSE(list.Prev());
    EXPECT_FALSE(list.Remove());
    EXPECT_FALSE(list.Remove(TEXT("a")));
    EXPECT_FALSE(list.MoveTo(TEXT("a")));
    EXPECT_FALSE(list.IsInList(TEXT("a")));
    EXPECT_FALSE(list.MoveItemUp());
    EXPECT_FALSE(list.MoveItemDown());
    EXPECT_TRUE(list.Flush());
    EXPECT_TRUE(list == CItemList(LUM_GINA_APP, LUM_GINA_MTM));
}

TEST_F(ListEx, CursorRules)
{
    EXPECT_TRUE(list.Insert(new CItem(TEXT("b")), 0));
    EXPECT_EQ("b* ", Contents(list));
    EXPECT_TRUE(list.Insert(new CItem(TEXT("a")), 0));
    EXPECT_EQ("a b* ", Contents(list));
    EXPECT_TRUE(list.Add(new CItem(TEXT("c")), 0));
    EXPECT_EQ("a b* c ", Contents(list));
    EXPECT_FALSE(list.MoveTo(TEXT("x")));
    EXPECT_EQ("a b c* ", Contents(list));
    EXPECT_TRUE(list.MoveTo(TEXT("B")));
    EXPECT_TRUE(list.MoveItemUp());
    EXPECT_EQ("b a c ", Contents(list));
    EXPECT_EQ(nullptr, list.m_pCursor);
    EXPECT_FALSE(list.Insert(nullptr, 0));
    list.End();
    EXPECT_FALSE(list.MoveItemDown());
    EXPECT_TRUE(list.MoveItemUp());
    EXPECT_EQ("b* c a ", Contents(list));
    EXPECT_TRUE(list.MoveItemDown());
    EXPECT_EQ("c b a* ", Contents(list));
    EXPECT_TRUE(list.Remove(TEXT("b")));
    EXPECT_EQ("c* a ", Contents(list));
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
    EXPECT_TRUE(copy == list);
    list.Flush();
    EXPECT_EQ("a* b ", Contents(copy));
    Fill(list, {TEXT("b"), TEXT("a")});
    EXPECT_FALSE(copy == list);
    const CItem replacement(TEXT("c"));
    EXPECT_TRUE(copy.SetItem(&replacement));
    EXPECT_EQ("c* b ", Contents(copy));
    list.Flush();
    EXPECT_FALSE(copy.CopyList(list));
    EXPECT_EQ(0u, copy.m_dwCount);
    EXPECT_EQ(1, CItem::s_nAlive);
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

TEST_F(ListEx, TracesUnderItsNames)
{
    SetTraceMask(0xFFF);
    list.Next();
    EXPECT_EQ((std::vector<std::string>{"[ENTRY] CListEx::Next",
                                        "[WARNING] The requested operation failed or it was cancelled",
                                        "[EXIT ] CListEx::Next, Return: 0x0"}),
              Log());
}

/// The list as it should be: names in order, and the position of the cursor, -1 for none.
class CModel
{
public:
    std::vector<Text> names;
    int nCursor = -1;

    int Size() const { return static_cast<int>(names.size()); }
    int Find(const Text& name) const
    {
        const auto found = std::find(names.begin(), names.end(), name);
        return found == names.end() ? -1 : static_cast<int>(found - names.begin());
    }
    void InsertAt(int nPosition, const Text& name)
    {
        names.insert(names.begin() + nPosition, name);
        if (Size() == 1) {
            nCursor = 0;
        } else if (nCursor >= nPosition) {
            ++nCursor;
        }
    }
    bool Remove()
    {
        if (nCursor < 0) {
            return false;
        }
        names.erase(names.begin() + nCursor);
        nCursor = names.empty() ? -1 : 0;
        return true;
    }
    bool Step(int nBy)
    {
        if (nCursor < 0 || nCursor + nBy < 0 || nCursor + nBy >= Size()) {
            return false;
        }
        nCursor += nBy;
        return true;
    }
    bool Swap(int nBy)
    {
        if (nCursor < 0 || nCursor + nBy < 0 || nCursor + nBy >= Size()) {
            return false;
        }
        std::swap(names[static_cast<std::size_t>(nCursor)], names[static_cast<std::size_t>(nCursor + nBy)]);
        nCursor += 2 * nBy;
        nCursor = nCursor < 0 || nCursor >= Size() ? -1 : nCursor;
        return true;
    }
    bool MoveTo(const Text& name)
    {
        const int nFound = Find(name);
        nCursor = nFound < 0 ? Size() - 1 : nFound;
        return nFound >= 0;
    }
};

void CheckInvariants(const CItemList& list, const CModel& model)
{
    ASSERT_EQ(model.names.size(), list.m_dwCount);
    const NodeType<CItem>* pPrev = nullptr;
    const NodeType<CItem>* pNode = list.m_pHead;
    for (int nPosition = 0; nPosition < model.Size(); ++nPosition) {
        ASSERT_NE(nullptr, pNode);
        ASSERT_EQ(pPrev, pNode->pPrev);
        ASSERT_EQ(model.names[static_cast<std::size_t>(nPosition)], pNode->m_pItem->m_Name);
        ASSERT_EQ(nPosition == model.nCursor, pNode == list.m_pCursor);
        pPrev = pNode;
        pNode = pNode->pNext;
    }
    ASSERT_EQ(nullptr, pNode);
    ASSERT_EQ(pPrev, list.m_pTail);
    ASSERT_EQ(model.nCursor < 0, list.m_pCursor == nullptr);
}

TEST_F(ListEx, BehavesAsTheModelDoes)
{
    SetTraceMask(0);
    const unsigned int nSeed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(nSeed));
    std::mt19937 random(nSeed);
    CModel model;
    for (int nStep = 0; nStep < 4000 && !HasFatalFailure(); ++nStep) {
        const Text name(1, static_cast<WCHAR>('a' + random() % 6));
        CItem* pItem = nullptr;
        switch (random() % 14) {
        case 0:
            list.Begin();
            model.nCursor = model.names.empty() ? -1 : 0;
            break;
        case 1:
            list.End();
            model.nCursor = model.Size() - 1;
            break;
        case 2:
            ASSERT_EQ(model.Step(1), list.Next());
            break;
        case 3:
            ASSERT_EQ(model.Step(-1), list.Prev());
            break;
        case 4:
        case 5:
            ASSERT_TRUE(list.Add(new CItem(name), 0));
            model.InsertAt(model.Size(), name);
            break;
        case 6:
        case 7: {
            auto item = std::make_unique<CItem>(name);
            const bool bPossible = model.nCursor >= 0 || model.names.empty();
            ASSERT_EQ(bPossible, list.Insert(item.get(), 0));
            if (bPossible) {
                model.InsertAt(std::max(model.nCursor, 0), name);
                static_cast<void>(item.release());
            }
            break;
        }
        case 8:
            ASSERT_EQ(model.Remove(), list.Remove());
            break;
        case 9:
            ASSERT_EQ(model.MoveTo(name) && model.Remove(), list.Remove(name.c_str()));
            break;
        case 10:
            ASSERT_EQ(model.MoveTo(name), list.MoveTo(name.c_str()));
            break;
        case 11:
            ASSERT_EQ(model.Find(name) >= 0, list.IsInList(name.c_str()));
            break;
        case 12:
            ASSERT_EQ(model.Swap(-1), list.MoveItemUp());
            break;
        default:
            ASSERT_EQ(model.Swap(1), list.MoveItemDown());
            break;
        }
        ASSERT_EQ(model.nCursor >= 0, list.GetItem(pItem));
        CheckInvariants(list, model);
    }
    list.Flush();
    EXPECT_EQ(0, CItem::s_nAlive);
}

} // namespace
