#pragma once

#include "Operation.h"

/// Runs a getter: traces entry and exit, warns if the value is null, and returns it in any case.
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

/// Runs a setter: traces entry and exit, warns if the value is null, and stores it in any case.
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
