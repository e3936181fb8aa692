#pragma once

#include "TraceTail.h"
#include "Way.h"

/// A plugin that left the chain, or never came into it.
struct CLoss
{
    std::string dll;
    /// What happened to it, in words.
    std::string what;
};

/// Watches the chain of GINAs in the library's trace log. The library traces the entry and the exit of each
/// object that a call enters, so no plugin needs to help, and any plugin can be watched.
class CChainWatch
{
public:
    /// Empty for no trace log: then no way is known. The log must have the levels for entries, exits and
    /// constructions, and warnings.
    explicit CChainWatch(const std::string& traceLog);

    /// The library is loaded anew: it will try these plugins, and pass calls on to this GINA.
    void Attach(std::vector<std::string> plugins, const std::string& gina);

    /// An administrator's command has been carried out and may have changed the chain. The log does not say
    /// which plugins were moved.
    void FollowCommand(const std::vector<std::string>& words);

    /// The way of the call that was made since the last time.
    CWay TakeWay();

    /// The plugins that left the chain since the last time.
    std::vector<CLoss> TakeLosses();

private:
    struct COpenOperation
    {
        std::string className;
        std::string operation;
        /// Of the way; nothing for an operation of the host.
        std::optional<std::size_t> hop;
    };

    void AwaitQuiet();
    void See(const CTraceLine& line, CWay& way);
    void SeeObject(const CTraceLine& line, CWay& way);
    void SeeLeftOut(const CTraceLine& line, const char* szWhy);
    void Enter(const CTraceLine& line, CWay& way);
    void Leave(const CTraceLine& line, CWay& way);
    CHop MakeHop(const CTraceLine& line, std::size_t nDepth);
    std::string TakeConfigured();
    std::size_t CountOpenObjects() const;

    CTraceTail m_tail;
    std::string m_gina;
    /// Of the configured plugins, those that the library has not tried yet.
    std::vector<std::string> m_untried;
    /// The plugins of the chain.
    std::vector<std::string> m_plugins;
    /// The next of them to be initialised.
    std::size_t m_nInitialized = 0;
    std::vector<COpenOperation> m_open;
    std::vector<CLoss> m_losses;
};
