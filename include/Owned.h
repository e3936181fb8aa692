#pragma once

#include <memory>
#include <type_traits>
#include <utility>

#include <windows.h>

/// Owns an object on the heap, or an array with COwned<T[]>. Converts to a plain pointer to it, which is null
/// if it owns none. Moving hands the object on.
template <typename T, typename Deleter = std::default_delete<T>>
class COwned
{
public:
    using Pointer = std::remove_extent_t<T>*;

    COwned() noexcept = default;
    explicit COwned(Pointer pObject) noexcept : m_pObject(pObject) {}

    operator Pointer() const noexcept { return m_pObject.get(); }
    Pointer operator->() const noexcept { return m_pObject.get(); }

    /// Destroys the object, and owns pObject from then on.
    void Reset(Pointer pObject = nullptr) noexcept { m_pObject.reset(pObject); }

    /// Hands the object to the caller, and owns none from then on.
    Pointer Release() noexcept { return m_pObject.release(); }

private:
    std::unique_ptr<T, Deleter> m_pObject;
};

template <typename T, typename... Args>
COwned<T> MakeOwned(Args&&... args)
{
    return COwned<T>(new T(std::forward<Args>(args)...));
}

/// A text on the heap.
using COwnedText = COwned<WCHAR[]>;
