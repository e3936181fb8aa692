#pragma once

/// Makes the n-th allocation from now by operator new fail, once; 0 is the next one.
class CFailingAllocation
{
public:
    explicit CFailingAllocation(int nBefore);
    ~CFailingAllocation();
    CFailingAllocation(const CFailingAllocation&) = delete;
    CFailingAllocation& operator=(const CFailingAllocation&) = delete;
};
