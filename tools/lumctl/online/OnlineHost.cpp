#include "OnlineHost.h"

#include <cstdio>
#include <cstdlib>

#include "CommandError.h"
#include "CommandLine.h"
#include "JsonWriter.h"
#include "MachineScope.h"
#include "chain/OfflineChain.h"
#include "machine/Text.h"

namespace {

constexpr DWORD DEFAULT_SECONDS = 30;
constexpr DWORD LONGEST_SECONDS = 3600;
constexpr DWORD PATIENCE_MILLISECONDS = 1500;

struct CFailure
{
    ControlStatus status;
    ExitStatus exitStatus;
    const char* szReason;
};

constexpr CFailure FAILURES[] = {
    {ControlStatus::BadName, STATUS_USAGE, "the name is longer than 259 characters"},
    {ControlStatus::NoServer, STATUS_FAILED, "no host is in service"},
    {ControlStatus::AccessDenied, STATUS_FAILED, "only administrators may talk to the host"},
    {ControlStatus::ForeignServer, STATUS_FAILED,
     "the pipe belongs to neither the system nor an administrator: it is not the host's; nothing was sent"},
    {ControlStatus::TimedOut, STATUS_UNCERTAIN, "the host did not answer in time; it may still do it"},
    {ControlStatus::Cancelled, STATUS_UNCERTAIN, "given up; the host may still do it"},
    {ControlStatus::NoAnswer, STATUS_UNCERTAIN, "the host ended the connection without an answer"},
    {ControlStatus::BadAnswer, STATUS_UNCERTAIN, "what answered is not the host, or another version of it"},
};

/// What the way to another machine ends with.
struct CNetworkError
{
    DWORD dwError;
    const char* szReason;
};

constexpr CNetworkError NETWORK_ERRORS[] = {
    // Natively no name of a pipe leads to another machine.
    {ERROR_PATH_NOT_FOUND, "another machine can be asked from Windows only"},
    {51 /* ERROR_REM_NOT_LIST */, "the machine does not answer; its file and printer sharing must be on"},
    {53 /* ERROR_BAD_NETPATH */,
     "the machine was not found; its name must be right, and its file and printer sharing on"},
    {1326 /* ERROR_LOGON_FAILURE */, "the machine does not know this user, or not with this password; net "
                                     "use \\\\NAME\\IPC$ /user:NAME\\USER "
                                     "first, as an administrator of it"},
};

DWORD ReadTimeout(const std::string& text)
{
    if (text.empty()) {
        return DEFAULT_SECONDS * 1000;
    }
    char* pEnd = nullptr;
    const unsigned long nSeconds = std::strtoul(text.c_str(), &pEnd, 10);
    if (*pEnd != '\0' || text[0] < '0' || text[0] > '9' || nSeconds > LONGEST_SECONDS) {
        throw CUsageError("--timeout needs a number of seconds, at most 3600");
    }
    return static_cast<DWORD>(nSeconds) * 1000;
}

/// Each command says once that it waits, however many requests it sends.
CControlWait MakeWait(const std::string& timeout)
{
    return {ReadTimeout(timeout), [bSaid = false](DWORD dwWaited) mutable {
                if (!bSaid && dwWaited > PATIENCE_MILLISECONDS) {
                    std::fprintf(stderr,
                                 "lumctl: waiting for the host, which takes a request every few seconds\n");
                    bSaid = true;
                }
                return true;
            }};
}

} // namespace

COnlineHost::COnlineHost(const CArguments& arguments)
    : m_machine(arguments.machine), m_client(MakeWait(arguments.timeout), ToWide(arguments.machine))
{
}

bool COnlineHost::IsThere()
{
    const ControlStatus status = m_client.Verify();
    return status != ControlStatus::NoServer && Ask(status);
}

bool COnlineHost::Ask(ControlStatus status) const
{
    if (status == ControlStatus::Success || status == ControlStatus::Refused) {
        return status == ControlStatus::Success;
    }
    const bool bSent = m_client.MayHaveBeenSent();
    for (const CFailure& failure : FAILURES) {
        if (failure.status == status && (failure.exitStatus != STATUS_FAILED || !bSent)) {
            throw CCommandError(failure.szReason + OnMachine(), failure.exitStatus);
        }
    }
    const DWORD dwError = m_client.GetSystemError();
    for (const CNetworkError& row : NETWORK_ERRORS) {
        if (!m_machine.empty() && !bSent && row.dwError == dwError) {
            throw CCommandError(row.szReason + OnMachine());
        }
    }
    throw CCommandError(Format("the pipe of the host failed with error %u%s", static_cast<unsigned>(dwError),
                               bSent ? "; the host may have done it" : ""),
                        bSent ? STATUS_UNCERTAIN : STATUS_FAILED);
}

std::string COnlineHost::OnMachine() const
{
    return m_machine.empty() ? m_machine : " (on " + m_machine + ")";
}

std::string DescribeHostInService()
{
    static constexpr char IN_SERVICE[] = "lum_gina.dll is in service on this machine";
    if (!CMachineScope::IsThisMachine()) {
        return std::string();
    }
    if (COfflineChain::IsHostInService()) {
        return IN_SERVICE;
    }
    switch (CControlClient(MakeWait(std::string())).Verify()) {
    case ControlStatus::NoServer:
    case ControlStatus::ForeignServer:
        return std::string();
    case ControlStatus::Success:
        return IN_SERVICE;
    default:
        return "the pipe of lum_gina.dll is there and does not answer (lumctl ping says why), so it may "
               "be in service on this machine";
    }
}

void PrintAnswer(const CArguments& arguments, const char* szName, bool bAnswer, const char* szText,
                 std::string& output)
{
    if (!arguments.bJson) {
        output += szText;
        return;
    }
    // What was found on the way is no part of the object.
    output.clear();
    CJsonWriter json(output);
    json.BeginObject();
    json.Bool(szName, bAnswer);
    json.EndObject();
}
