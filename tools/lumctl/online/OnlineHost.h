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

/// Whether a host is in service on this machine, as the registry or the pipe says: the end of any Winlogon
/// session clears what the registry has, although the host may go on. Never so on another machine. May wait
/// for an answer of the host. Throws CCommandError.
bool IsHostThere();

/// The answer of a command: szText, or with --json an object with a truth value of that name alone.
void PrintAnswer(const CArguments& arguments, const char* szName, bool bAnswer, const char* szText,
                 std::string& output);
