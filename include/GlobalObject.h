#pragma once

#include "Message.h"

/// The base of every traced class. It holds the tag and the key under which an object's messages are written.
///
/// Plugins read the two pointers as part of their records, so no field may be added here.
class CGlobalObject
{
public:
    /// The strings are not owned. A null argument is reported; messages of the object then go to
    /// "MESSAGE_APP" with the default mask.
    CGlobalObject(const WCHAR* szAPP, const WCHAR* szMTM) noexcept;

    operator CMessageOrigin() const noexcept { return {szAPP, szMTM}; }

    const WCHAR* szAPP;
    const WCHAR* szMTM;
};
