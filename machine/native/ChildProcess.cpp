#include "machine/ChildProcess.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/LibrarySearch.h"
#include "platform/SystemError.h"
#include "platform/Text.h"

extern char** environ;

namespace {

constexpr DWORD POLL_MILLISECONDS = 5;
constexpr DWORD BY_SIGNAL = 128;

/// The pipe through which this process reads what the child writes.
class COutput
{
public:
    COutput() { m_nError = pipe2(m_ends, O_CLOEXEC) == 0 ? 0 : errno; }
    ~COutput()
    {
        CloseWritingEnd();
        close(m_ends[0]);
    }
    COutput(const COutput&) = delete;
    COutput& operator=(const COutput&) = delete;

    int GetError() const { return m_nError; }
    int GetWritingEnd() const { return m_ends[1]; }
    void CloseWritingEnd()
    {
        close(m_ends[1]);
        m_ends[1] = -1;
        fcntl(m_ends[0], F_SETFL, O_NONBLOCK);
    }
    /// Takes what is there by now.
    void Drain(std::string& output) const
    {
        char buffer[4096];
        for (ssize_t nRead = 0; (nRead = read(m_ends[0], buffer, sizeof(buffer))) > 0;) {
            output.append(buffer, static_cast<std::size_t>(nRead));
        }
    }

private:
    int m_ends[2] = {-1, -1};
    int m_nError;
};

std::string FindProgram(const std::string& name)
{
    const std::string self = Native::GetProgramPath();
    const std::string beside = self.substr(0, self.find_last_of('/') + 1) + name;
    return access(beside.c_str(), X_OK) == 0 ? beside : name;
}

/// 0, or why the program cannot be started.
int Start(const std::vector<std::basic_string<WCHAR>>& words, int nOutput, pid_t& child)
{
    std::vector<std::string> arguments;
    std::vector<char*> pointers;
    for (const auto& word : words) {
        arguments.push_back(Native::ToUtf8(word));
    }
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, nOutput, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, nOutput, STDERR_FILENO);
    const int nError =
        posix_spawnp(&child, FindProgram(arguments[0]).c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return nError;
}

} // namespace

LONG Platform::RunChild(const std::vector<std::basic_string<WCHAR>>& words, DWORD dwTimeoutMilliseconds,
                        CChildEnd& end, void (*show)(std::string& output))
{
    COutput output;
    pid_t child = 0;
    int nError = output.GetError();
    if (nError == 0) {
        nError = Start(words, output.GetWritingEnd(), child);
    }
    if (nError != 0) {
        return static_cast<LONG>(Native::FromErrno(nError));
    }
    output.CloseWritingEnd();
    const DWORD dwStart = GetTickCount();
    LONG lResult = ERROR_SUCCESS;
    int nStatus = 0;
    while (waitpid(child, &nStatus, WNOHANG) == 0) {
        output.Drain(end.output);
        show(end.output);
        if (dwTimeoutMilliseconds != INFINITE && GetTickCount() - dwStart >= dwTimeoutMilliseconds) {
            kill(child, SIGKILL);
            lResult = ERROR_TIMEOUT;
        }
        Sleep(POLL_MILLISECONDS);
    }
    output.Drain(end.output);
    show(end.output);
    end.dwExitStatus =
        static_cast<DWORD>(WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : BY_SIGNAL + DWORD(WTERMSIG(nStatus)));
    return lResult;
}

void Platform::EndThisProcess(DWORD dwExitStatus)
{
    _exit(static_cast<int>(dwExitStatus));
}
