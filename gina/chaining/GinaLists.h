#pragma once

#include "Chain.h"
#include "GinaChainingInfoObject.h"
#include "ListEx.h"

// The two lists of GINAs: what is known of each, and the chain that Winlogon loads, first to last.

using CKnownGinaList = CListEx<CGinaChainingInfoObject>;
using CGinaChain = CListEx<CGinaChainingObject>;

/// Appends an item to the list, which then owns it. Throws CMemAllocException.
template <typename T>
T& Append(CListEx<T>& list, COwned<T> pItem)
{
    if (!list.Add(pItem, 0)) {
        throw CMemAllocException(list, TEXT("pItem"));
    }
    return *pItem.Release();
}

/// A new link for the chain. Throws as the constructor of CGinaChainingObject.
COwned<CGinaChainingObject> MakeLink(const CMessageOrigin& origin, const WCHAR* szGinaDLL);

/// Inserts a new link at its place in the chain. szInsertBefore: for Place::Before. False for Nowhere and
/// NotBefore, or when there is no memory. Throws as MakeLink.
bool InsertLink(CGinaChain& chain, Place place, const WCHAR* szGinaDLL, const WCHAR* szInsertBefore);

/// Removes the link at this position.
void RemoveLink(CGinaChain& chain, std::size_t nAt);

CGinaNames NamesOf(const CGinaChain& chain);

/// Appends the built-in table. Throws when there is no memory.
void AddKnownGinas(CKnownGinaList& knownGinas);

/// What is known of a GINA, null when it is unknown.
CGinaChainingInfoObject* FindGina(CKnownGinaList& knownGinas, const WCHAR* szGinaDLL);

/// Reads the chaining record of that name and appends it to the list. Null, after reporting why, when there
/// is no such value, or it cannot be read, or is not a record. Throws when there is no memory.
CGinaChainingInfoObject* LearnGina(CKnownGinaList& knownGinas, const WCHAR* szGinaDLL);
