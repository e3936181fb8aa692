#pragma once

#include "Message.h"

/// The base of every traced class: under which tag and key its messages are written.
///
/// The two pointers are part of records that plugins read, so nothing may be added here.
class CGlobalObject
{
public:
    /// A null argument is reported and leaves an object whose messages go to "MESSAGE_APP" with the
    /// default mask. The strings are not owned.
    CGlobalObject(const WCHAR* szAPP, const WCHAR* szMTM) noexcept;

    operator CMessageOrigin() const noexcept { return {szAPP, szMTM}; }

    const WCHAR* szAPP;
    const WCHAR* szMTM;
};
