#pragma once

#include "GlobalObject.h"
#include "guard/FaultGuard.h"

/// Puts tag and key of a record back at the end of a scope in which a plugin has it. A plugin may write
/// anything there, and what becomes of the record later is traced under them.
class CKeptOrigin
{
public:
    /// Null for no record. Throws CForeignFault for one that cannot be read.
    explicit CKeptOrigin(CGlobalObject* pObject) : m_pObject(pObject), m_origin(Read(pObject)) {}
    ~CKeptOrigin()
    {
        try {
            CallWithinHost([this] {
                if (m_pObject != nullptr) {
                    PutBack(*m_pObject, m_origin);
                }
            });
        } catch (...) {
            // The plugin has made away with the record: there is nothing left to put right.
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

    /// Another thread may read the field meanwhile, so that one that has not changed is left alone.
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
        return CallWithinHost([=] {
            return pObject != nullptr ? CMessageOrigin(*pObject) : CMessageOrigin{nullptr, nullptr};
        });
    }

    CGlobalObject* m_pObject;
    CMessageOrigin m_origin;
};
