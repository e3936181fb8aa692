#pragma once

#include <atomic>
#include <new>

#include "Exceptions.h"
#include "GlobalObject.h"
#include "ListData.h"
#include "Operation.h"

/// A doubly linked list of item pointers with a cursor: the one container behind every list of the host.
///
/// The list owns its items: removing a node destroys its item. Operations return true for success and never
/// throw. A list has no lock. An owner that shares one between threads locks the whole sequence of moving the
/// cursor and reading, not each call.
///
/// What T must offer depends on the operations used: operator==(const WCHAR*) for those with a key,
/// operator==(const T&) for operator==, a constructor (szAPP, szMTM, const T*) or a copy constructor for
/// copies.
template <typename T>
class CListEx : public CGlobalObject
{
public:
    using Node = NodeType<T>;

    CListEx(const WCHAR* szAPPArg, const WCHAR* szMTMArg) noexcept : CGlobalObject(szAPPArg, szMTMArg)
    {
        const CConstructionTrace trace(*this, s_szClass);
    }

    ~CListEx()
    {
        const CDestructionTrace trace(*this, s_szClass);
        Flush();
    }

    CListEx(const CListEx&) = delete;
    CListEx& operator=(const CListEx&) = delete;

    /// Moves the cursor to the first node.
    void Begin() noexcept
    {
        RunVoid(TEXT("Begin"), [this] { m_pCursor = m_pHead; });
    }

    /// Moves the cursor to the last node.
    void End() noexcept
    {
        RunVoid(TEXT("End"), [this] { m_pCursor = m_pTail; });
    }

    /// Moves the cursor to the next node. False, without moving, at the last node or without a current one.
    bool Next() noexcept
    {
        return Run(TEXT("Next"), [this] { return MoveCursor(&Node::pNext); });
    }

    /// Moves the cursor to the node before. False, without moving, at the first node or without a current
    /// one.
    bool Prev() noexcept
    {
        return Run(TEXT("Prev"), [this] { return MoveCursor(&Node::pPrev); });
    }

    /// Stores the current item in pItem; the list still owns it. Without a current node: false, and pItem is
    /// unchanged.
    bool GetItem(T*& pItem) noexcept
    {
        return Run(TEXT("GetItem"), [&] {
            if (m_pCursor == nullptr) {
                return false;
            }
            pItem = m_pCursor->m_pItem;
            return true;
        });
    }

    /// Replaces the current item by a copy of pItem, which stays the caller's.
    bool SetItem(const T* pItem) noexcept
    {
        return Run(TEXT("SetItem"), [&] {
            if (m_pCursor == nullptr || pItem == nullptr) {
                return false;
            }
            T* pCopy = CopyItem(pItem);
            if (m_pCursor->m_pItem != nullptr) {
                DeleteVariable(*this, TEXT("m_pItem"), [this] { DestroyListItem(m_pCursor->m_pItem); });
            }
            m_pCursor->m_pItem = pCopy;
            return true;
        });
    }

    /// Inserts a node before the current one and leaves the cursor where it is. In an empty list the new node
    /// becomes current. The list owns pItem only if this succeeds.
    bool Insert(T* pItem, DWORD dwTag) noexcept
    {
        return Run(TEXT("Insert"), [&] {
            if (m_pCursor == nullptr && m_pHead != nullptr) {
                return false;
            }
            Node* pNode = CreateNode(pItem, dwTag, TEXT("NodeType< T, S >"));
            LinkBefore(pNode, m_pCursor);
            m_pCursor = m_dwCount == 1 ? pNode : m_pCursor;
            return true;
        });
    }

    /// Appends a node and leaves the cursor where it is. In an empty list the new node becomes current. The
    /// list owns pItem only if this succeeds.
    bool Add(T* pItem, DWORD dwTag) noexcept
    {
        return Run(TEXT("Add"), [&] { return Append(pItem, dwTag); });
    }

    /// Removes the current node and destroys its item; the cursor goes to the first node.
    bool Remove() noexcept
    {
        return Run(TEXT("Remove"), [this] {
            Node* pNode = nullptr;
            if (!TakeOut(pNode)) {
                return false;
            }
            DestroyNode(pNode);
            return true;
        });
    }

    /// Takes the current node out of the list and hands it to the caller, who destroys it with DestroyNode.
    /// The cursor goes to the first node.
    bool Remove(Node*& pNode) noexcept
    {
        return Run(TEXT("Remove"), [&] { return TakeOut(pNode); });
    }

    /// Destroys a node that was taken out, and its item.
    void DestroyNode(Node* pNode) const noexcept { Destroy(pNode, TEXT("m_pCursor")); }

    /// Removes the first node whose item equals the key.
    bool Remove(const WCHAR* szKey) noexcept
    {
        return Run(TEXT("Remove"), [&] { return MoveTo(szKey) && Remove(); });
    }

    /// Moves the cursor to the first node whose item equals the key. If there is none: to the last node, and
    /// false.
    bool MoveTo(const WCHAR* szKey) noexcept
    {
        return Run(TEXT("MoveTo"), [&] {
            Node* pNode = Find(szKey);
            m_pCursor = pNode != nullptr ? pNode : m_pTail;
            return pNode != nullptr;
        });
    }

    /// Whether an item equals the key; the cursor stays.
    bool IsInList(const WCHAR* szKey) noexcept
    {
        return Run(TEXT("IsInList"), [&] { return Find(szKey) != nullptr; });
    }

    /// Replaces the contents by copies of the source's items and tags. False when the source is empty
    /// or a copy failed; what was copied up to then stays.
    bool CopyList(const CListEx& source) noexcept
    {
        return Run(TEXT("CopyList"), [&] {
            if (m_dwCount != 0) {
                Flush();
            }
            for (const Node* pNode = source.m_pHead; pNode != nullptr; pNode = pNode->pNext) {
                if (!AddCopy(*pNode)) {
                    return false;
                }
            }
            return source.m_dwCount != 0;
        });
    }

    /// Destroys all nodes and items, first to last.
    bool Flush() noexcept
    {
        return Run(TEXT("Flush"), [this] {
            m_pCursor = nullptr;
            // A plugin may have overwritten the nodes: follow the forward links only, and write to no
            // neighbour.
            while (m_pHead != nullptr) {
                Node* pTempCursor = m_pHead;
                m_pHead = pTempCursor->pNext;
                pTempCursor->pNext = nullptr;
                pTempCursor->pPrev = nullptr;
                --m_dwCount;
                Destroy(pTempCursor, TEXT("pTempCursor"));
            }
            m_pTail = nullptr;
            return true;
        });
    }

    /// Whether both lists have equal items in the same order. A node without an item equals only another such
    /// node.
    bool operator==(const CListEx& other) const noexcept
    {
        return Run(TEXT("operator=="), [&] {
            const Node* pOther = other.m_pHead;
            for (const Node* pNode = m_pHead; pNode != nullptr && pOther != nullptr; pNode = pNode->pNext) {
                const T* pItem = pNode->m_pItem;
                const T* pOtherItem = pOther->m_pItem;
                if (pItem == nullptr || pOtherItem == nullptr ? pItem != pOtherItem
                                                              : !(*pItem == *pOtherItem)) {
                    return false;
                }
                pOther = pOther->pNext;
            }
            return m_dwCount == other.m_dwCount;
        });
    }

    /// Swaps the current node with the one before it. The cursor ends on the node before the moved one, or on
    /// none if the moved one is now the head. False, without change, at the head.
    bool MoveItemUp() noexcept
    {
        return Run(TEXT("MoveItemUp"), [this] {
            if (m_pCursor == nullptr || m_pCursor->pPrev == nullptr) {
                return false;
            }
            Node* pMoved = m_pCursor;
            Node* pBefore = pMoved->pPrev;
            Unlink(pMoved);
            LinkBefore(pMoved, pBefore);
            m_pCursor = pMoved->pPrev;
            return true;
        });
    }

    /// Swaps the current node with the one after it. The cursor ends on the node after the moved one, or on
    /// none if the moved one is now the tail. False, without change, at the tail.
    bool MoveItemDown() noexcept
    {
        return Run(TEXT("MoveItemDown"), [this] {
            if (m_pCursor == nullptr || m_pCursor->pNext == nullptr) {
                return false;
            }
            Node* pMoved = m_pCursor;
            Node* pBefore = pMoved->pNext->pNext;
            Unlink(pMoved);
            LinkBefore(pMoved, pBefore);
            m_pCursor = pMoved->pNext;
            return true;
        });
    }

    Node* m_pHead = nullptr;
    Node* m_pTail = nullptr;
    Node* m_pCursor = nullptr;
    DWORD m_dwCount = 0;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CListEx");

    template <typename Body>
    bool Run(CTracePoint point, Body body) const noexcept
    {
        const COperation op(*this, s_szClass, point);
        return op.Run(Absorb<CMemAllocException>(), body, FailureWarning::UnlessRaised);
    }

    template <typename Body>
    void RunVoid(CTracePoint point, Body body) const noexcept
    {
        const COperation op(*this, s_szClass, point);
        op.Run(Absorb<>(), body);
    }

    Node* CreateNode(T* pItem, DWORD dwTag, const WCHAR* szVariable) const
    {
        Node* pNode = new (std::nothrow) Node(szAPP, szMTM, pItem, dwTag);
        if (pNode == nullptr) {
            throw CMemAllocException(*this, szVariable);
        }
        return pNode;
    }

    /// Gives the node the list's tag and key first: a plugin may have overwritten them.
    void Destroy(Node* pNode, const WCHAR* szVariable) const noexcept
    {
        pNode->szAPP = szAPP;
        pNode->szMTM = szMTM;
        DeleteVariable(*this, szVariable, [pNode] { delete pNode; });
    }

    bool Append(T* pItem, DWORD dwTag)
    {
        const bool bEmpty = m_pHead == nullptr;
        Node* pNode = CreateNode(pItem, dwTag, bEmpty ? TEXT("NodeType< T >") : TEXT("NodeType"));
        LinkBefore(pNode, nullptr);
        m_pCursor = bEmpty ? pNode : m_pCursor;
        return true;
    }

    bool AddCopy(const Node& source)
    {
        T* pCopy = source.m_pItem != nullptr ? CopyItem(source.m_pItem) : nullptr;
        if (Add(pCopy, source.m_dwTag)) {
            return true;
        }
        if (pCopy != nullptr) {
            DestroyListItem(pCopy);
        }
        return false;
    }

    T* CopyItem(const T* pItem) const
    {
        if constexpr (std::is_constructible_v<T, const WCHAR*, const WCHAR*, const T*>) {
            return new T(szAPP, szMTM, pItem);
        } else {
            return new T(*pItem);
        }
    }

    bool MoveCursor(Node* Node::*pLink) noexcept
    {
        if (m_pCursor == nullptr || m_pCursor->*pLink == nullptr) {
            return false;
        }
        m_pCursor = m_pCursor->*pLink;
        return true;
    }

    Node* Find(const WCHAR* szKey) const
    {
        Node* pNode = m_pHead;
        while (pNode != nullptr && !(pNode->m_pItem != nullptr && *pNode->m_pItem == szKey)) {
            pNode = pNode->pNext;
        }
        return pNode;
    }

    bool TakeOut(Node*& pNode) noexcept
    {
        if (m_pCursor == nullptr) {
            return false;
        }
        pNode = m_pCursor;
        Unlink(pNode);
        m_pCursor = m_pHead;
        return true;
    }

    /// Links a free node before pBefore, or at the end for null. The node is complete before the one pointer
    /// that leads to it is written, so readers of pNext need no lock.
    void LinkBefore(Node* pNode, Node* pBefore) noexcept
    {
        Node* pAfter = pBefore != nullptr ? pBefore->pPrev : m_pTail;
        pNode->pNext = pBefore;
        pNode->pPrev = pAfter;
        Publish(pBefore != nullptr ? pBefore->pPrev : m_pTail, pNode);
        Publish(pAfter != nullptr ? pAfter->pNext : m_pHead, pNode);
        ++m_dwCount;
    }

    static void Publish(Node*& pLink, Node* pNode) noexcept
    {
        std::atomic_ref(pLink).store(pNode, std::memory_order_release);
    }

    void Unlink(Node* pNode) noexcept
    {
        (pNode->pPrev != nullptr ? pNode->pPrev->pNext : m_pHead) = pNode->pNext;
        (pNode->pNext != nullptr ? pNode->pNext->pPrev : m_pTail) = pNode->pPrev;
        pNode->pNext = nullptr;
        pNode->pPrev = nullptr;
        --m_dwCount;
    }
};
