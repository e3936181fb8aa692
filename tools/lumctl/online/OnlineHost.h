#pragma once

#include "Command.h"
#include "ControlClient.h"

/// Of a change that it refused.
inline constexpr char NOT_DONE_BY_HOST[] = "the host could not do it; its trace log says why";

/// The host in service, as the commands talk to it.
class COnlineHost
{
public:
    /// Waits as long as the command line allows, and says so when that takes a while.
    explicit COnlineHost(const CArguments& arguments);

    CControlClient& Client() { return m_client; }

    /// Whether a host answers. Throws CCommandError when that cannot be told.
    bool IsThere();
    /// The answer to a question; for a change, whether it was made. Throws CCommandError for anything but yes
    /// or no.
    bool Ask(ControlStatus status) const;

private:
    std::string OnMachine() const;

    const std::string m_machine; ///< empty for this one
    CControlClient m_client;
};

/// How it is known that a host is, or may be, in service on this machine, for a message; empty when there is
/// none, as always on another machine. The registry says so until any Winlogon session ends, although the
/// host may go on; then this asks its pipe, which may take a while, and says so. Throws CCommandError.
std::string DescribeHostInService();

/// The answer of a command: szText, or with --json an object with a truth value of that name alone.
void PrintAnswer(const CArguments& arguments, const char* szName, bool bAnswer, const char* szText,
                 std::string& output);
