#include "DayFile.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "DayWords.h"

namespace {

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
    void ParseArgument(const CDayWord& word);
    void SetArgument(DWORD dwIndex, const CDayWord& word);
    void ParseGina();
    void ParseFailure();
    void ParseExpectation();
    void ParseAnswering();
    /// The next word, which must be a plain one; szExpected tells what was wanted when there is none.
    std::string TakeWord(const std::string& expected);
    DWORD TakeCode(const CCodes& codes);
    LONG TakeResult();
    std::string ListArguments() const;

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
    if (word == "Attach" || word == "Detach") {
        m_step.kind = word == "Attach" ? StepKind::Attach : StepKind::Detach;
        return;
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
        Refuse("unknown step \"" + word + '"',
               "Attach, Detach, the name of an entry point, as WlxNegotiate, or a step of the machine's");
    }
}

void CStepParser::ParseClause()
{
    const CDayWord& word = m_words[m_nNext++];
    if (m_step.kind != StepKind::Call) {
        Refuse('"' + word.name + "\" behind Attach or Detach", "nothing");
    }
    if (word.bHasValue) {
        ParseArgument(word);
    } else if (word.name == "gina") {
        ParseGina();
    } else if (word.name == "expect") {
        ParseExpectation();
    } else if (word.name == "answered") {
        ParseAnswering();
    } else {
        Refuse("unknown word \"" + word.name + '"', ListArguments() + "gina, expect or answered by");
    }
}

void CStepParser::ParseArgument(const CDayWord& word)
{
    for (DWORD dwIndex = 0; dwIndex < STANDIN_MAX_ARGUMENTS; ++dwIndex) {
        const CArgument& argument = m_step.pCall->arguments[dwIndex];
        if (argument.CanBeSet() && word.name == argument.szName) {
            SetArgument(dwIndex, word);
            return;
        }
    }
    Refuse("unknown argument \"" + word.name + '"', ListArguments() + "gina, expect or answered by");
}

void CStepParser::SetArgument(DWORD dwIndex, const CDayWord& word)
{
    if (m_step.numbers[dwIndex].has_value() || m_step.texts[dwIndex].has_value()) {
        Refuse(word.name + "= a second time", "it once");
    }
    const CArgument& argument = m_step.pCall->arguments[dwIndex];
    if (argument.bText) {
        std::optional<WideText>& text = m_step.texts[dwIndex].emplace();
        if (word.bQuoted || word.value != "NULL") {
            text = ToWide(word.value);
        }
        return;
    }
    m_step.numbers[dwIndex] = argument.pCodes->Parse(word.value);
    if (!m_step.numbers[dwIndex].has_value()) {
        Refuse(word.name + '=' + word.value, argument.pCodes->GetExpected());
    }
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
    if (m_nNext < m_words.size() && m_words[m_nNext].name == "SKIPPED") {
        ++m_nNext;
        m_step.bExpectSkipped = true;
        return;
    }
    m_step.expected = TakeResult();
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

std::string CStepParser::ListArguments() const
{
    std::string list;
    for (const CArgument& argument : m_step.pCall->arguments) {
        list += argument.CanBeSet() ? argument.szName + std::string("=, ") : "";
    }
    return list;
}

/// The library is loaded once at a time, and called only while it is.
void CheckOrder(const CStep& step, bool& bAttached)
{
    if (bAttached == (step.kind == StepKind::Attach)) {
        throw std::runtime_error(bAttached ? "Attach while the library is loaded; expected Detach before it"
                                           : "a step without the library; expected Attach before it");
    }
    bAttached = step.kind != StepKind::Detach;
}

struct CFileCloser
{
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};

} // namespace

std::vector<CStep> ParseDay(const std::string& text, const std::string& name)
{
    std::vector<CStep> steps;
    bool bAttached = false;
    int nLine = 1;
    for (std::size_t nStart = 0; nStart < text.size(); ++nLine) {
        const std::size_t nEnd = std::min(text.find('\n', nStart), text.size());
        try {
            std::vector<CDayWord> words = SplitDayLine(text.substr(nStart, nEnd - nStart));
            if (!words.empty()) {
                steps.push_back(CStepParser(std::move(words), nLine).Parse());
                CheckOrder(steps.back(), bAttached);
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
