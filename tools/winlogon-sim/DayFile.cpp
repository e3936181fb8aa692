#include "DayFile.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "DayWords.h"

namespace {

/// Steps that are one word.
struct CPlainStep
{
    const char* szName;
    StepKind kind;
};

constexpr CPlainStep PLAIN_STEPS[] = {
    {"Attach", StepKind::Attach}, {"Detach", StepKind::Detach}, {"Restart", StepKind::Restart}};

/// Parses the words of one line into a step. Every message says what was found and what was expected.
class CStepParser
{
public:
    CStepParser(std::vector<CDayWord> words, int nLine) : m_words(std::move(words)) { m_step.nLine = nLine; }

    CStep Parse();

private:
    [[noreturn]] static void Refuse(const std::string& found, const std::string& expected)
    {
        throw std::runtime_error(found + "; expected " + expected);
    }

    void ParseKind(const std::string& word);
    void ParseClause();
    void ParseArgument(const CDayWord& word, CArgumentValues& values, bool (*pfnMayBeSet)(const CArgument&));
    static void SetArgument(const CArgument& argument, DWORD dwIndex, const CDayWord& word,
                            CArgumentValues& values);
    void ParseChange(CArgumentValues& values, bool (*pfnMayBeSet)(const CArgument&));
    void ParseGina();
    void ParseFailure();
    void ParseExpectation();
    void ParseAnswering();
    /// The next word, which must be a plain one; szExpected tells what was wanted when there is none.
    std::string TakeWord(const std::string& expected);
    DWORD TakeCode(const CCodes& codes);
    LONG TakeResult();
    std::string ListArguments(bool (*pfnMayBeSet)(const CArgument&)) const;

    std::vector<CDayWord> m_words;
    std::size_t m_nNext = 0;
    CStep m_step;
};

CStep CStepParser::Parse()
{
    ParseKind(TakeWord("a step"));
    while (m_nNext < m_words.size()) {
        ParseClause();
    }
    return m_step;
}

void CStepParser::ParseKind(const std::string& word)
{
    for (const CPlainStep& plain : PLAIN_STEPS) {
        if (word == plain.szName) {
            m_step.kind = plain.kind;
            return;
        }
    }
    m_step.pMachineStep = FindMachineStep(word);
    if (m_step.pMachineStep != nullptr) {
        m_step.kind = StepKind::Machine;
        m_step.machineStep = m_step.pMachineStep->pfnParse({m_words.begin() + 1, m_words.end()});
        m_nNext = m_words.size();
        return;
    }
    m_step.pCall = FindCall(word);
    if (m_step.pCall == nullptr) {
        Refuse("unknown step \"" + word + '"', "Attach, Detach, Restart, the name of an entry point, as "
                                               "WlxNegotiate, or a step of the machine's");
    }
}

void CStepParser::ParseClause()
{
    const CDayWord& word = m_words[m_nNext++];
    if (m_step.kind != StepKind::Call) {
        Refuse('"' + word.name + "\" behind Attach, Detach or Restart", "nothing");
    }
    if (word.bHasValue) {
        ParseArgument(word, m_step.passes, [](const CArgument& argument) { return argument.CanBeSet(); });
    } else if (word.name == "reaches") {
        ParseChange(m_step.reaches, [](const CArgument& argument) {
            return argument.CanBeSet() && argument.pOut == nullptr;
        });
    } else if (word.name == "gives") {
        ParseChange(m_step.gives, [](const CArgument& argument) { return argument.pOut != nullptr; });
    } else if (word.name == "gina") {
        ParseGina();
    } else if (word.name == "expect") {
        ParseExpectation();
    } else if (word.name == "loses") {
        m_step.lostPlugin = TakeWord("the name of a DLL");
    } else if (word.name == "answered") {
        ParseAnswering();
    } else {
        Refuse("unknown word \"" + word.name + '"',
               "ARGUMENT=VALUE, gina, expect, reaches, gives, loses or answered by");
    }
}

void CStepParser::ParseArgument(const CDayWord& word, CArgumentValues& values,
                                bool (*pfnMayBeSet)(const CArgument&))
{
    for (DWORD dwIndex = 0; dwIndex < STANDIN_MAX_ARGUMENTS; ++dwIndex) {
        const CArgument& argument = m_step.pCall->arguments[dwIndex];
        if (argument.szName != nullptr && pfnMayBeSet(argument) && word.name == argument.szName) {
            SetArgument(argument, dwIndex, word, values);
            return;
        }
    }
    Refuse("unknown argument \"" + word.name + '"', ListArguments(pfnMayBeSet));
}

void CStepParser::SetArgument(const CArgument& argument, DWORD dwIndex, const CDayWord& word,
                              CArgumentValues& values)
{
    if (values.Has(dwIndex)) {
        Refuse(word.name + "= a second time", "it once");
    }
    if (argument.bText || (argument.pOut != nullptr && word.bQuoted)) {
        std::optional<WideText>& text = values.texts[dwIndex].emplace();
        if (word.bQuoted || word.value != "NULL") {
            text = ToWide(word.value);
        }
        return;
    }
    const CCodes& codes = argument.pCodes != nullptr ? *argument.pCodes : NUMBERS;
    values.numbers[dwIndex] = codes.Parse(word.value);
    if (!values.numbers[dwIndex].has_value()) {
        Refuse(word.name + '=' + word.value, codes.GetExpected());
    }
}

/// Behind "reaches" or "gives".
void CStepParser::ParseChange(CArgumentValues& values, bool (*pfnMayBeSet)(const CArgument&))
{
    if (m_nNext == m_words.size() || !m_words[m_nNext].bHasValue) {
        Refuse("no argument", ListArguments(pfnMayBeSet));
    }
    ParseArgument(m_words[m_nNext++], values, pfnMayBeSet);
}

void CStepParser::ParseGina()
{
    const std::string verb = TakeWord("returns, negotiates or fails");
    if (verb == "returns") {
        m_step.ginaResult = TakeResult();
    } else if (verb == "negotiates" && m_step.pCall->id == StandinCall::WlxNegotiate) {
        m_step.ginaVersion = TakeCode(VERSIONS);
    } else if (verb == "fails") {
        ParseFailure();
    } else {
        Refuse("gina " + verb, "gina returns, gina fails or, in WlxNegotiate, gina negotiates");
    }
}

void CStepParser::ParseFailure()
{
    m_step.failure = static_cast<StandinFailure>(TakeCode(FAILURES));
    if (m_step.failure == StandinFailure::StructuredException) {
        m_step.dwFailureCode = TakeCode(NUMBERS);
    }
}

void CStepParser::ParseExpectation()
{
    if (m_step.bExpectSkipped || m_step.expected.has_value() || m_step.ending != CallEnding::ComesBack) {
        Refuse("expect a second time", "it once");
    }
    const std::string word = m_nNext < m_words.size() ? m_words[m_nNext].name : "";
    m_step.bExpectSkipped = word == "SKIPPED";
    m_step.ending = word == "HANG"  ? CallEnding::Hangs
                    : word == "END" ? CallEnding::EndsProcess
                                    : CallEnding::ComesBack;
    if (m_step.bExpectSkipped || m_step.ending != CallEnding::ComesBack) {
        ++m_nNext;
    } else {
        m_step.expected = TakeResult();
    }
}

void CStepParser::ParseAnswering()
{
    const std::string by = TakeWord("by");
    if (by != "by") {
        Refuse("answered " + by, "answered by");
    }
    m_step.answeringPlugin = TakeWord("the name of a DLL");
}

std::string CStepParser::TakeWord(const std::string& expected)
{
    if (m_nNext == m_words.size()) {
        Refuse("the end of the line", expected);
    }
    const CDayWord& word = m_words[m_nNext++];
    if (word.bHasValue) {
        Refuse('"' + word.name + "=\"", expected);
    }
    return word.name;
}

DWORD CStepParser::TakeCode(const CCodes& codes)
{
    const std::string word = TakeWord(codes.GetExpected());
    const std::optional<DWORD> value = codes.Parse(word);
    if (!value.has_value()) {
        Refuse('"' + word + '"', codes.GetExpected());
    }
    return *value;
}

LONG CStepParser::TakeResult()
{
    if (m_step.pCall->result == ResultKind::None) {
        Refuse("a result", std::string("none, since ") + m_step.pCall->szName + " returns nothing");
    }
    return static_cast<LONG>(TakeCode(m_step.pCall->GetResultCodes()));
}

std::string CStepParser::ListArguments(bool (*pfnMayBeSet)(const CArgument&)) const
{
    std::string list;
    for (const CArgument& argument : m_step.pCall->arguments) {
        if (argument.szName != nullptr && pfnMayBeSet(argument)) {
            list += (list.empty() ? "" : ", ") + std::string(argument.szName) + '=';
        }
    }
    return list.empty()
               ? "none, since no argument of " + std::string(m_step.pCall->szName) + " can be named here"
               : list;
}

/// The library is loaded once at a time, and called only while it is. A call that does not come back is the
/// last one before the machine restarts.
class CStepOrder
{
public:
    void Check(const CStep& step)
    {
        if (step.kind == StepKind::Restart) {
            Require(m_bEnded || !m_bAttached,
                    "Restart while the library is loaded; expected Detach before it");
            m_bEnded = m_bAttached = false;
            return;
        }
        Require(!m_bEnded, "a step behind a call that does not come back; expected Restart before it");
        Require(!m_bAttached || step.kind != StepKind::Attach,
                "Attach while the library is loaded; expected Detach before it");
        Require(m_bAttached || step.kind == StepKind::Attach,
                "a step without the library; expected Attach before it");
        m_bAttached = step.kind != StepKind::Detach;
        m_bEnded = step.ending != CallEnding::ComesBack;
    }

private:
    static void Require(bool bHolds, const char* szOtherwise)
    {
        if (!bHolds) {
            throw std::runtime_error(szOtherwise);
        }
    }

    bool m_bAttached = false;
    bool m_bEnded = false;
};

struct CFileCloser
{
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};

} // namespace

std::vector<CStep> ParseDay(const std::string& text, const std::string& name)
{
    std::vector<CStep> steps;
    CStepOrder order;
    int nLine = 1;
    for (std::size_t nStart = 0; nStart < text.size(); ++nLine) {
        const std::size_t nEnd = std::min(text.find('\n', nStart), text.size());
        try {
            std::vector<CDayWord> words = SplitDayLine(text.substr(nStart, nEnd - nStart));
            if (!words.empty()) {
                steps.push_back(CStepParser(std::move(words), nLine).Parse());
                order.Check(steps.back());
            }
        } catch (const std::runtime_error& error) {
            throw CDayFileError(Format("%s:%d: %s", name.c_str(), nLine, error.what()));
        }
        nStart = nEnd + 1;
    }
    if (steps.empty()) {
        throw CDayFileError(name + ": a day without steps; expected Attach");
    }
    return steps;
}

std::vector<std::vector<CStep>> SplitStarts(const std::vector<CStep>& steps)
{
    std::vector<std::vector<CStep>> starts(1);
    for (const CStep& step : steps) {
        if (step.kind == StepKind::Restart) {
            starts.emplace_back();
        } else {
            starts.back().push_back(step);
        }
    }
    return starts;
}

std::vector<CStep> ReadDayFile(const std::string& path)
{
    const std::unique_ptr<std::FILE, CFileCloser> pFile(std::fopen(path.c_str(), "rb"));
    std::string text;
    char buffer[4096];
    while (pFile != nullptr) {
        const std::size_t cbRead = std::fread(buffer, 1, sizeof(buffer), pFile.get());
        text.append(buffer, cbRead);
        if (cbRead == 0) {
            break;
        }
    }
    if (pFile == nullptr || std::ferror(pFile.get()) != 0) {
        throw CDayFileError(path + ": cannot be read");
    }
    return ParseDay(text, path);
}
