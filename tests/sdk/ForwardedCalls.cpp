#include "ForwardedCalls.h"

#include <cstddef>
#include <type_traits>
#include <utility>

#include "../abi/Slots.h"

namespace {

// What a GINA reads is there to be read, and what it would write to is null.
WCHAR g_szText[] = TEXT("text");

template <typename T>
T MakeArgument(std::size_t nPosition)
{
    if constexpr (std::is_same_v<T, PWSTR>) {
        return g_szText;
    } else if constexpr (std::is_same_v<T, PVOID> || std::is_same_v<T, HDESK>) {
        return reinterpret_cast<T>(0x1000 + nPosition);
    } else if constexpr (std::is_pointer_v<T>) {
        return nullptr;
    } else {
        return static_cast<T>(nPosition);
    }
}

template <auto Operation>
struct Call;
template <typename Result, typename... Parameters, Result (CGinaObject::*Operation)(GinaNode*, Parameters...)>
struct Call<Operation>
{
    static int Make(CGinaObject& object, GinaNode* pNode)
    {
        const auto call = [&]<std::size_t... Position>(std::index_sequence<Position...>)
        {
            return (object.*Operation)(pNode, MakeArgument<Parameters>(Position)...);
        };
        constexpr auto positions = std::index_sequence_for<Parameters...>();
        if constexpr (std::is_void_v<Result>) {
            call(positions);
            return 0;
        } else {
            return call(positions);
        }
    }
};

} // namespace

const CChainedCall CHAINED_CALLS[19] = {
#define CHAINED_CALL(SLOT, NAME) {#NAME, Call<&CGinaObject::NAME>::Make},
    ABI_FORWARDED_CALLS(CHAINED_CALL)
#undef CHAINED_CALL
};
