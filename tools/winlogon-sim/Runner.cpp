#include "Runner.h"

#include "Comparison.h"
#include "Machine.h"
#include "machine/SetupError.h"
#include "Winlogon.h"
#include "guard/FaultGuard.h"

namespace {

// The out-pointers whose values Winlogon itself needs later: arguments of WlxNegotiate and WlxInitialize.
constexpr DWORD NEGOTIATED_VERSION = 1;
constexpr DWORD INITIALIZED_CONTEXT = 4;

const StandinInterface* FindStandin(const CLibrary& library, const std::string& name)
{
    const FARPROC pfn = library.FindExport("StandinGina");
    if (pfn == nullptr) {
        throw CSetupError(name + " is not a stand-in GINA (see --standin): it does not export StandinGina");
    }
    const auto pfnStandinGina = reinterpret_cast<PFN_STANDIN_GINA>(reinterpret_cast<void*>(pfn));
    const StandinInterface* pStandin = pfnStandinGina();
    if (pStandin->dwSize != sizeof(StandinInterface)) {
        throw CSetupError(name + " is a stand-in GINA of another build");
    }
    return pStandin;
}

/// Makes the call as Winlogon does. A fault that arrives here would stop a real machine.
LONG Invoke(const CCallFrame& frame, FARPROC pfnEntry, CStepReport& report)
{
    try {
        return CallIntoDLL([&] { return frame.GetCall().pfnInvoke(pfnEntry, frame.GetValues()); });
    } catch (const CForeignFault& fault) {
        report.differences.push_back(
            Format("exception 0x%08x reached Winlogon", static_cast<unsigned>(fault.GetCode())));
    } catch (...) {
        report.differences.push_back("a C++ exception reached Winlogon");
    }
    return frame.GetCall().GetDefaultResult();
}

void CheckExpectation(const CStep& step, LONG nResult, CStepReport& report)
{
    if (step.ending != CallEnding::ComesBack) {
        report.differences.push_back("the day expects that the call does not come back");
    }
    if (step.bExpectSkipped) {
        report.differences.push_back("the day expects that Winlogon does not make this call");
    }
    if (step.expected.has_value() && !step.pCall->IsSameResult(*step.expected, nResult)) {
        const CCodes& codes = step.pCall->GetResultCodes();
        report.differences.push_back("the day expects " + codes.Describe(*step.expected) + ", " +
                                     codes.Describe(nResult) + " came back");
    }
}

void Append(std::vector<std::string>& list, const std::vector<std::string>& items)
{
    list.insert(list.end(), items.begin(), items.end());
}

/// The plugin that decided what came back; null when the GINA did or nothing is known.
const CHop* FindAnsweringPlugin(const CWay& way)
{
    const CHop* pAnswering = way.GetAnswering();
    return pAnswering != nullptr && pAnswering->bPlugin ? pAnswering : nullptr;
}

const CHop* FindFailedPlugin(const CWay& way)
{
    const CHop* pFailed = way.GetFailed();
    return pFailed != nullptr && pFailed->bPlugin ? pFailed : nullptr;
}

/// What the plugins made of the GINA's result; nothing when they left it alone.
std::optional<LONG> GetPluginsResult(const CWlxCall& call, const CWay& way)
{
    if (FindFailedPlugin(way) != nullptr) {
        return call.GetDefaultResult();
    }
    const CHop* pPlugin = FindAnsweringPlugin(way);
    return pPlugin != nullptr ? pPlugin->result : std::nullopt;
}

/// No plugin may leave the chain or fail, but for the one that the day expects to.
void CheckLosses(const CStep& step, const CWay& way, std::vector<CLoss> losses, CStepReport& report)
{
    if (const CHop* pFailed = FindFailedPlugin(way); pFailed != nullptr) {
        losses.insert(losses.begin(), {GetShortName(pFailed->dll), "failed inside the call"});
    }
    bool bLost = false;
    for (const CLoss& loss : losses) {
        if (!step.lostPlugin.empty() && IsSameDLL(loss.dll, step.lostPlugin)) {
            bLost = true;
        } else {
            report.differences.push_back(loss.dll + ' ' + loss.what);
        }
    }
    if (!step.lostPlugin.empty() && !bLost) {
        report.differences.push_back("the day expects that " + GetShortName(step.lostPlugin) +
                                     " fails or leaves the chain");
    }
}

/// The plugin that the day expects must decide what comes back.
void CheckAnswer(const CStep& step, const CWay& way, CStepReport& report)
{
    const CHop* pAnswering = way.GetAnswering();
    if (!step.answeringPlugin.empty() &&
        (pAnswering == nullptr || !IsSameDLL(pAnswering->dll, step.answeringPlugin)))
    {
        report.differences.push_back(
            "the day expects that " + GetShortName(step.answeringPlugin) + " answers, " +
            (!way.IsKnown() ? "and without a full trace log nobody knows who did"
                            : (pAnswering != nullptr ? GetShortName(pAnswering->dll) : "nobody") + " did"));
    }
}

/// Releases what the GINA allocated, but only what is certainly the GINA's.
void ReleaseOutValues(CCallFrame& frame, const StandinRecord& record)
{
    for (DWORD dwIndex = 0; dwIndex < STANDIN_MAX_ARGUMENTS; ++dwIndex) {
        if (record.written[dwIndex] != 0 && frame.GetOut(dwIndex).number == record.written[dwIndex]) {
            frame.ReleaseOut(dwIndex);
        }
    }
}

} // namespace

CRunner::CRunner(const std::string& gina, const std::string& standin, DWORD dwVersion,
                 const std::string& traceLog)
    : m_gina(gina), m_standin(standin), m_dwVersion(dwVersion), m_watch(traceLog)
{
    m_standinLibrary.Load(standin);
    m_pStandin = FindStandin(m_standinLibrary, standin);
}

CStepReport CRunner::Run(const CStep& step)
{
    CStepReport report;
    report.nLine = step.nLine;
    switch (step.kind) {
    case StepKind::Attach:
        Attach(report);
        break;
    case StepKind::Detach:
        Detach(report);
        break;
    case StepKind::Call:
        Call(step, report);
        break;
    case StepKind::Machine:
        RunOnMachine(step, report);
        break;
    case StepKind::Restart:
        break; // lives between processes
    }
    report.callbacks = Winlogon::TakeCallbacks();
    return report;
}

void CRunner::Attach(CStepReport& report)
{
    m_watch.Attach(CMachine::GetPlugins(), m_standin);
    m_ginaLibrary.Load(m_gina);
    report.step = "Attach";
    report.cameBack = m_gina + " loaded";
}

void CRunner::Detach(CStepReport& report)
{
    m_ginaLibrary.Free();
    m_dwAgreed = 0;
    Winlogon::SetContext(0);
    report.step = "Detach";
    report.cameBack = m_gina + " freed";
}

void CRunner::RunOnMachine(const CStep& step, CStepReport& report)
{
    CMachineOutcome outcome = step.pMachineStep->pfnRun(step.machineStep);
    report.step = step.pMachineStep->szName;
    report.reached = std::move(outcome.action);
    report.cameBack = std::move(outcome.result);
    report.output = std::move(outcome.output);
    if (!outcome.difference.empty()) {
        report.differences.push_back(outcome.difference);
    }
    if (step.machineStep.command.empty()) {
        return;
    }
    m_watch.FollowCommand(report.differences.empty() && step.machineStep.dwExpectedStatus == 0
                              ? step.machineStep.command
                              : std::vector<std::string>());
}

void CRunner::Call(const CStep& step, CStepReport& report)
{
    const CWlxCall& call = *step.pCall;
    report.step = call.szName;
    FARPROC pfnEntry = nullptr;
    const std::string obstacle = FindEntry(call, pfnEntry);
    if (!obstacle.empty()) {
        report.cameBack = "skipped: " + obstacle;
        if (!step.bExpectSkipped) {
            report.differences.push_back("Winlogon cannot make this call: " + obstacle);
        }
        return;
    }

    SetUpStandin(step);
    CCallFrame frame(step, m_dwVersion);
    const LONG nResult = Invoke(frame, pfnEntry, report);
    m_called.insert(call.id);
    report.cameBack = DescribeCameBack(frame, nResult);
    CheckExpectation(step, nResult, report);
    NoteAgreement(frame, nResult);
    Judge(step, frame, nResult, report);
}

void CRunner::Judge(const CStep& step, CCallFrame& frame, LONG nResult, CStepReport& report)
{
    const CWay way = m_watch.TakeWay();
    report.way = way.Describe();
    CheckLosses(step, way, m_watch.TakeLosses(), report);
    CheckAnswer(step, way, report);

    const StandinRecord* pRecord = FindRecord(step.pCall->id);
    const CHop* pPlugin = FindAnsweringPlugin(way);
    const std::optional<LONG> pluginsResult = GetPluginsResult(*step.pCall, way);
    if (pPlugin != nullptr) {
        report.cameBack += (report.cameBack.empty() ? "ended by " : ", by ") + GetShortName(pPlugin->dll);
    }
    if (pRecord != nullptr) {
        report.reached = DescribeReached(frame, *pRecord);
        Append(report.differences, Compare(frame, *pRecord, nResult, pluginsResult));
        ReleaseOutValues(frame, *pRecord);
    } else if (pPlugin != nullptr || FindFailedPlugin(way) != nullptr) {
        Append(report.differences, CompareWithoutGina(frame, pluginsResult, nResult));
    } else {
        report.differences.push_back("the call did not reach the stand-in GINA " + m_standin);
    }
}

std::string CRunner::FindEntry(const CWlxCall& call, FARPROC& pfnEntry) const
{
    if (call.id != StandinCall::WlxNegotiate && m_dwAgreed < call.dwSince) {
        return m_dwAgreed == 0 ? "no version was agreed" : "not in version " + VERSIONS.Describe(m_dwAgreed);
    }
    pfnEntry = m_ginaLibrary.FindExport(call.szName);
    return pfnEntry == nullptr ? m_gina + " does not export it" : "";
}

void CRunner::SetUpStandin(const CStep& step)
{
    m_pStandin->Reset();
    const StandinCall call = step.pCall->id;
    if (step.ginaResult.has_value()) {
        m_pStandin->SetResult(call, *step.ginaResult);
    }
    if (step.ginaVersion.has_value()) {
        m_pStandin->SetVersion(*step.ginaVersion);
    }
    if (!m_pStandin->SetFailure(call, step.failure, step.dwFailureCode)) {
        throw CSetupError(Format("line %d: this system has no structured exceptions", step.nLine));
    }
}

const StandinRecord* CRunner::FindRecord(StandinCall call) const
{
    // A library whose GINA refuses may try again, so the last one counts.
    for (DWORD dwIndex = m_pStandin->GetRecordCount(); dwIndex != 0; --dwIndex) {
        const StandinRecord* pRecord = m_pStandin->GetRecord(dwIndex - 1);
        if (pRecord->call == call) {
            return pRecord;
        }
    }
    return nullptr;
}

void CRunner::NoteAgreement(const CCallFrame& frame, LONG nResult)
{
    if (frame.GetCall().id == StandinCall::WlxNegotiate) {
        m_dwAgreed = nResult != 0 ? static_cast<DWORD>(frame.GetOut(NEGOTIATED_VERSION).number) : 0;
    } else if (frame.GetCall().id == StandinCall::WlxInitialize && nResult != 0) {
        Winlogon::SetContext(static_cast<ULONG_PTR>(frame.GetOut(INITIALIZED_CONTEXT).number));
    }
}
