#pragma once

/// Makes the n-th allocation of this thread from now fail, once; 0 is the next one.
class CFailingAllocation
{
public:
    /// Nothrow counts only the allocations of code that asks to be told by a null pointer: nothing that
    /// tracing and the platform do on the way.
    enum class Kind
    {
        Any,
        Nothrow
    };

    explicit CFailingAllocation(int nBefore, Kind kind = Kind::Any);
    ~CFailingAllocation();
    CFailingAllocation(const CFailingAllocation&) = delete;
    CFailingAllocation& operator=(const CFailingAllocation&) = delete;
};
