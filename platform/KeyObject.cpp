#include "KeyObject.h"

namespace Native {
namespace {

/// What one bit of a request stands for.
struct CMapping
{
    REGSAM samRequested;
    REGSAM samGranted;
};

constexpr CMapping MAPPINGS[] = {
    {MAXIMUM_ALLOWED, KEY_ALL_ACCESS},
    {GENERIC_READ, KEY_READ},
    {GENERIC_WRITE, KEY_WRITE},
};

REGSAM MapAccess(REGSAM samDesired)
{
    REGSAM samGranted = samDesired;
    for (const CMapping& mapping : MAPPINGS) {
        if ((samDesired & mapping.samRequested) != 0) {
            samGranted |= mapping.samGranted;
        }
    }
    return samGranted;
}

} // namespace

CKeyObject::CKeyObject(std::shared_ptr<CTreeKey> pKey, REGSAM samDesired)
    : m_pKey(std::move(pKey)), m_samGranted(MapAccess(samDesired))
{
}

std::shared_ptr<CKeyObject> CKeyObject::FromHandle(HKEY hKey)
{
    if (hKey == HKEY_LOCAL_MACHINE) {
        return std::make_shared<CKeyObject>(RegistryTree::GetRoot(), KEY_ALL_ACCESS);
    }
    return HandleTable::Find<CKeyObject>(hKey);
}

} // namespace Native
