#include "platform/MachineRegistry.h"

LONG MachineRegistry::Load(const WCHAR*, std::string*)
{
    return ERROR_CALL_NOT_IMPLEMENTED;
}

LONG MachineRegistry::Save(const WCHAR*)
{
    return ERROR_CALL_NOT_IMPLEMENTED;
}

LONG MachineRegistry::Clear()
{
    return ERROR_CALL_NOT_IMPLEMENTED;
}

LONG MachineRegistry::ForgetVolatile()
{
    return ERROR_CALL_NOT_IMPLEMENTED;
}
