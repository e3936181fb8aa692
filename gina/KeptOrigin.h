#pragma once

#include "GlobalObject.h"
#include "guard/FaultGuard.h"

/// Restores the tag and key of a record at the end of a scope in which a plugin has the record. A plugin may
/// overwrite them, and later traces of the record use them.
class CKeptOrigin
{
public:
    /// pObject may be null. Throws CForeignFault if it cannot be read.
    explicit CKeptOrigin(CGlobalObject* pObject) : m_pObject(pObject), m_origin(Read(pObject)) {}
    ~CKeptOrigin()
    {
        try {
            if (m_pObject != nullptr) {
                CallWithinHost([this] { PutBack(*m_pObject, m_origin); });
            }
        } catch (...) {
            // The plugin has freed the record: there is nothing left to restore.
            return;
        }
    }
    CKeptOrigin(const CKeptOrigin&) = delete;
    CKeptOrigin& operator=(const CKeptOrigin&) = delete;

    static void PutBack(CGlobalObject& object, const CMessageOrigin& origin) noexcept
    {
        PutBack(object.szAPP, origin.szAPP);
        PutBack(object.szMTM, origin.szMTM);
    }

    /// Another thread may be reading the field, so it is written only if it has changed.
    template <typename T>
    static void PutBack(T& field, T kept) noexcept
    {
        if (field != kept) {
            field = kept;
        }
    }

private:
    static CMessageOrigin Read(const CGlobalObject* pObject)
    {
        return pObject != nullptr ? CallWithinHost([=] { return CMessageOrigin(*pObject); })
                                  : CMessageOrigin{};
    }

    CGlobalObject* m_pObject;
    CMessageOrigin m_origin;
};
