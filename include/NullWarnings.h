#pragma once

#include "Operation.h"

/// Runs a getter: entry and exit trace, and a warning when the value is null, which is returned all the same.
template <typename Value>
Value PullValue(const CMessageOrigin& origin, const WCHAR* szClass, CTracePoint point,
                const Value& value) noexcept
{
    const COperation op(origin, szClass, point);
    return op.Run(Absorb<>(), [&] {
        if (value == nullptr) {
            op.Warn(ERR_PULLING_NULL);
        }
        return value;
    });
}

/// Runs a setter: entry and exit trace, and a warning when the value is null, which is stored all the same.
template <typename Value>
void PushValue(const CMessageOrigin& origin, const WCHAR* szClass, CTracePoint point, Value& target,
               Value value) noexcept
{
    const COperation op(origin, szClass, point);
    op.Run(Absorb<>(), [&] {
        if (value == nullptr) {
            op.Warn(ERR_PUSHING_NULL);
        }
        target = value;
    });
}
