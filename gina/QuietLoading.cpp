#include "QuietLoading.h"

#include "CriticalSection.h"

namespace {

CCriticalSection s_lock;
unsigned s_nLoading = 0;
UINT s_dwModeBefore = 0;

} // namespace

CQuietLoading::CQuietLoading() noexcept
{
    const CCriticalSection::CLock lock(s_lock);
    if (s_nLoading++ == 0) {
        s_dwModeBefore = SetErrorMode(SEM_FAILCRITICALERRORS);
        SetErrorMode(s_dwModeBefore | SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    }
}

CQuietLoading::~CQuietLoading()
{
    const CCriticalSection::CLock lock(s_lock);
    if (--s_nLoading == 0) {
        SetErrorMode(s_dwModeBefore);
    }
}
