#pragma once

#include "PipeMachine.h"

/// A host in service, at which lumctl is used. Winlogon loads wpnGina.dll, which passes through to the host.
class COnlineMachine : public CPipeMachine
{
protected:
    COnlineMachine();
    ~COnlineMachine() override;

    /// "lum_gina | b,a,msgina | a,b | monitored": what Winlogon loads, what is called in its order, the
    /// configured plugins, and whether the chain is watched; "test_plugin_" and ".dll" left out.
    std::string Describe() const;

private:
    static void DeleteKeys();
};
