#pragma once

#include <cxxabi.h>

namespace FaultGuard {

/// The C++ exceptions that this thread is handling at one moment.
///
/// A fault that happens in a catch block leaves the block without its end being reached. The runtime
/// would believe for ever that the thread is still in it, and keep the exception.
class COpenHandlers
{
public:
    COpenHandlers() noexcept : m_State(GetState()) {}

    /// Ends the handlers that have been entered since.
    void CloseLaterOnes() const noexcept
    {
        while (GetState().pCaught != nullptr && GetState().pCaught != m_State.pCaught) {
            abi::__cxa_end_catch();
        }
        GetState().nUncaught = m_State.nUncaught;
    }

private:
    // The runtime's record of a thread, whose layout the C++ ABI fixes but its header does not show.
    struct CState
    {
        void* pCaught;
        unsigned int nUncaught;
    };

    static CState& GetState() noexcept { return *reinterpret_cast<CState*>(abi::__cxa_get_globals()); }

    CState m_State;
};

} // namespace FaultGuard
