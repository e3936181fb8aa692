#include "ChainWatch.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "Calls.h"

namespace {

constexpr char HOST[] = "CLUMGina";
constexpr char PLUGIN[] = "CGinaPluginObject";
constexpr char GINA[] = "CGinaStandardObject";
constexpr char INITIALIZE[] = "Initialize";
/// By safe start.
constexpr char LEFT_OUT[] = "Left out";

bool IsObject(const CTraceLine& line)
{
    return line.className == PLUGIN || line.className == GINA;
}

/// Whether an operation of an object serves a call of Winlogon's.
bool IsCall(const CTraceLine& line)
{
    return IsObject(line) && FindCall("Wlx" + line.operation) != nullptr;
}

bool IsCallOfWinlogon(const CTraceLine& line)
{
    return line.className == HOST && line.operation.compare(0, 6, "LUMWlx") == 0;
}

} // namespace

CChainWatch::CChainWatch(const std::string& traceLog) : m_tail(traceLog) {}

void CChainWatch::Attach(std::vector<std::string> plugins, const std::string& gina)
{
    m_untried = std::move(plugins);
    m_gina = gina;
    m_plugins.clear();
    m_nInitialized = 0;
    m_open.clear();
}

/// The library still writes lines after the command has got its answer. They belong to no call of Winlogon's,
/// and lines that two threads write at the same time can overwrite each other.
void CChainWatch::AwaitQuiet()
{
    constexpr DWORD PAUSE_MILLISECONDS = 100;
    int nPauses = 20;
    do {
        Sleep(PAUSE_MILLISECONDS);
    } while (!m_tail.Read().empty() && --nPauses != 0);
}

void CChainWatch::FollowCommand(const std::vector<std::string>& words)
{
    AwaitQuiet();
    if (words.size() < 4 || words[1] != "plugins") {
        return;
    }
    const std::string& dll = words[3];
    const bool bNow = std::find(words.begin(), words.end(), "--now") != words.end();
    const auto plugin = std::find_if(m_plugins.begin(), m_plugins.end(),
                                     [&](const std::string& other) { return IsSameDLL(other, dll); });
    if (words[2] == "add" && bNow) {
        m_plugins.push_back(dll);
    } else if (plugin == m_plugins.end()) {
        return;
    } else if (words[2] == "remove" && bNow) {
        m_plugins.erase(plugin);
    } else if (words[2] == "up" && plugin != m_plugins.begin()) {
        std::iter_swap(plugin, plugin - 1);
    } else if (words[2] == "down" && plugin + 1 != m_plugins.end()) {
        std::iter_swap(plugin, plugin + 1);
    }
}

CWay CChainWatch::TakeWay()
{
    CWay way;
    m_open.clear();
    for (const CTraceLine& line : m_tail.Read()) {
        See(line, way);
    }
    return way;
}

std::vector<CLoss> CChainWatch::TakeLosses()
{
    return std::exchange(m_losses, {});
}

void CChainWatch::See(const CTraceLine& line, CWay& way)
{
    if (line.level == "CONSTRUCTION EXIT" && IsObject(line)) {
        SeeObject(line, way);
    } else if (line.level == "WARNING" && line.operation == "Unable to create gina plugin") {
        SeeLeftOut(line, "cannot be used and is left out; the trace log says why");
    } else if (line.level == "WARNING" && line.operation == LEFT_OUT) {
        SeeLeftOut(line, "is left out, since earlier starts ended in it");
    } else if (line.level == "ENTRY" && (IsCall(line) || IsCallOfWinlogon(line))) {
        Enter(line, way);
    } else if (line.level == "EXIT" && (IsCall(line) || IsCallOfWinlogon(line))) {
        Leave(line, way);
    }
}

void CChainWatch::SeeObject(const CTraceLine& line, CWay& way)
{
    CHop hop = {m_gina, line.className == PLUGIN, 0, true, std::nullopt};
    if (hop.bPlugin) {
        hop.dll = TakeConfigured();
        m_plugins.push_back(hop.dll);
    }
    way.m_hops.push_back(hop);
}

/// The library tries plugins in their order.
std::string CChainWatch::TakeConfigured()
{
    if (m_untried.empty()) {
        return "plugin " + std::to_string(m_plugins.size() + 1);
    }
    const std::string dll = m_untried.front();
    m_untried.erase(m_untried.begin());
    return dll;
}

void CChainWatch::SeeLeftOut(const CTraceLine& line, const char* szWhy)
{
    TakeConfigured();
    m_losses.push_back({line.plugin, szWhy});
}

void CChainWatch::Enter(const CTraceLine& line, CWay& way)
{
    std::optional<std::size_t> hop;
    if (IsObject(line)) {
        hop = way.m_hops.size();
        way.m_hops.push_back(MakeHop(line, CountOpenObjects()));
    } else {
        m_nInitialized = 0;
    }
    m_open.push_back({line.className, line.operation, hop});
}

/// Each plugin calls the one behind it, so its place in the chain is the number of those that wait for it.
CHop CChainWatch::MakeHop(const CTraceLine& line, std::size_t nDepth)
{
    if (line.className == GINA) {
        return {m_gina, false, nDepth, false, std::nullopt};
    }
    const std::size_t nPlace = line.operation == INITIALIZE ? m_nInitialized++ : nDepth;
    return {nPlace < m_plugins.size() ? m_plugins[nPlace] : "plugin " + std::to_string(nPlace + 1), true,
            nDepth, false, std::nullopt};
}

std::size_t CChainWatch::CountOpenObjects() const
{
    // Calls nest, so this is behind the last call of Winlogon's.
    const auto host = std::find_if(m_open.rbegin(), m_open.rend(),
                                   [](const COpenOperation& open) { return !open.hop.has_value(); });
    return static_cast<std::size_t>(host - m_open.rbegin());
}

void CChainWatch::Leave(const CTraceLine& line, CWay& way)
{
    // An operation that an exception leaves writes no exit line.
    const auto entered = std::find_if(m_open.rbegin(), m_open.rend(), [&](const COpenOperation& open) {
        return open.className == line.className && open.operation == line.operation;
    });
    if (entered == m_open.rend()) {
        return;
    }
    if (entered->hop.has_value()) {
        CHop& hop = way.m_hops[*entered->hop];
        hop.bReturned = true;
        if (!line.result.empty()) {
            hop.result = static_cast<LONG>(std::strtoul(line.result.c_str(), nullptr, 16));
        }
        if (hop.bPlugin && line.operation == INITIALIZE && hop.result == FALSE) {
            m_losses.push_back({hop.dll, "refuses to be initialised and leaves the chain"});
            m_plugins.erase(m_plugins.begin() + static_cast<std::ptrdiff_t>(--m_nInitialized));
        }
    }
    m_open.erase(entered.base() - 1, m_open.end());
}
