#pragma once

#include <optional>
#include <set>

#include "CallFrame.h"
#include "ChainWatch.h"
#include "Library.h"

/// The outcome of one step.
struct CStepReport
{
    int nLine = 0;
    std::string step;
    /// The objects of the chain that the call entered; empty when that is not known.
    std::string way;
    /// The arguments that reached the GINA.
    std::string reached;
    std::string cameBack;
    /// What the GINA side called in Winlogon meanwhile.
    std::vector<std::string> callbacks;
    /// What a command printed.
    std::vector<std::string> output;
    /// Why this step is not as it should be; empty when it is.
    std::vector<std::string> differences;
};

/// Lives the steps of a day through a GINA library, with the stand-in GINA behind it.
class CRunner
{
public:
    /// gina is the DLL that Winlogon loads, standin the stand-in that ends up behind it (or the same).
    /// dwVersion is the interface version that Winlogon offers. traceLog is the library's trace log, which
    /// tells what the library does with its plugins; without it nothing is known of them. Throws CSetupError.
    CRunner(const std::string& gina, const std::string& standin, DWORD dwVersion,
            const std::string& traceLog = "");

    /// Throws CSetupError when a library cannot be loaded or cannot do what the step asks for.
    CStepReport Run(const CStep& step);

    const StandinInterface& GetStandin() const { return *m_pStandin; }

    /// The number of different entry points that Winlogon called so far.
    std::size_t GetCalledCount() const { return m_called.size(); }

private:
    void Attach(CStepReport& report);
    void Detach(CStepReport& report);
    void Call(const CStep& step, CStepReport& report);
    void RunOnMachine(const CStep& step, CStepReport& report);
    /// Why Winlogon cannot make a call now; empty when it can, with the entry in pfnEntry.
    std::string FindEntry(const CWlxCall& call, FARPROC& pfnEntry) const;
    void SetUpStandin(const CStep& step);
    const StandinRecord* FindRecord(StandinCall call) const;
    /// Compares what the stand-in recorded with what came back, and names the plugin that explains a
    /// difference.
    void Judge(const CStep& step, CCallFrame& frame, LONG nResult, CStepReport& report);
    /// Keeps the version and the context that a call brought.
    void NoteAgreement(const CCallFrame& frame, LONG nResult);

    std::string m_gina;
    std::string m_standin;
    DWORD m_dwVersion;
    CLibrary m_standinLibrary;
    const StandinInterface* m_pStandin;
    CLibrary m_ginaLibrary;
    CChainWatch m_watch;
    /// Agreed in WlxNegotiate; 0 before that.
    DWORD m_dwAgreed = 0;
    std::set<StandinCall> m_called;
};
