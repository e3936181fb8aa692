#pragma once

#include <atomic>

#include "GlobalObject.h"
#include "Operation.h"

/// Destroys an item of a list. An item type that is destroyed in another way overloads this beside its class.
template <typename T>
void DestroyListItem(T* pItem)
{
    delete pItem;
}

/// What a list node carries: an item, which it owns, and a value stored with it.
///
/// Plugins are handed nodes of the GINA object list, so the order and size of the fields are fixed.
template <typename T>
class CListData : public CGlobalObject
{
public:
    CListData(const WCHAR* szAPPArg, const WCHAR* szMTMArg, T* pItem, DWORD dwTag) noexcept
        : CGlobalObject(szAPPArg, szMTMArg), m_pItem(pItem), m_dwTag(dwTag)
    {
        const CConstructionTrace trace(*this, TEXT("CListData"));
    }

    ~CListData()
    {
        const CDestructionTrace trace(*this, TEXT("CListData"));
        if (m_pItem != nullptr) {
            DeleteVariable(*this, TEXT("m_pItem"), [this] { DestroyListItem(m_pItem); });
        }
    }

    CListData(const CListData&) = delete;
    CListData& operator=(const CListData&) = delete;

    T* m_pItem;
    DWORD m_dwTag;
};

/// A node: the data and the links to its neighbours, null at the ends of the list.
template <typename T>
class NodeType : public CListData<T>
{
public:
    using CListData<T>::CListData;

    /// The next node. Another thread may insert one meanwhile.
    NodeType* GetNext() noexcept { return std::atomic_ref(pNext).load(std::memory_order_acquire); }

    NodeType* pNext = nullptr;
    NodeType* pPrev = nullptr;
};
