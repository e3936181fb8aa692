#pragma once

#include "KernelObject.h"

namespace Native {

/// Something that ReadFile and WriteFile move bytes from and to. The operations throw CCallError.
class CByteObject : public CKernelObject
{
public:
    virtual DWORD Read(void* pBuffer, DWORD cbBuffer) = 0;
    virtual DWORD Write(const void* pBuffer, DWORD cbBuffer) = 0;
};

} // namespace Native
