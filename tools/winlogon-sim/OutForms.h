#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "machine/Text.h"

/// What a GINA left behind an out-pointer.
struct COutValue
{
    std::uint64_t number = 0;
    WideText text;

    bool operator==(const COutValue&) const = default;
    bool IsNothing() const { return number == 0 && text.empty(); }
};

/// One form of out-pointer: the storage behind it and how to read it. The value is in the form in which
/// the stand-in GINA records what it wrote.
struct COutForm
{
    std::size_t cbStorage;
    COutValue (*pfnRead)(const void* pStorage);
    std::string (*pfnDescribe)(const COutValue& value);
    /// Releases what the GINA allocated for its caller; null when it allocates nothing.
    void (*pfnRelease)(void* pStorage);
};

extern const COutForm OUT_VERSION;
extern const COutForm OUT_DWORD;
extern const COutForm OUT_BOOL;
extern const COutForm OUT_POINTER;
extern const COutForm OUT_LUID;
extern const COutForm OUT_STATUS;
extern const COutForm OUT_NOTIFY_INFO;
extern const COutForm OUT_PROFILE;
