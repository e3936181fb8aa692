// What the registry classes do when the platform fails: the exception that leaves and the lines that are
// written, for each operation. Failures are injected, so this is for the native target.

#include <functional>
#include <iterator>
#include <memory>
#include <set>

#include "Exceptions.h"
#include "FailingAllocation.h"
#include "RegistryClasses.h"
#include "TestMachine.h"
#include "platform/FaultInjection.h"

namespace {

constexpr auto OPEN = PlatformCall::RegOpenKeyExW;
constexpr auto CREATE = PlatformCall::RegCreateKeyExW;
constexpr auto CLOSE = PlatformCall::RegCloseKey;
constexpr auto READ = PlatformCall::RegQueryValueExW;
constexpr auto WRITE = PlatformCall::RegSetValueExW;
constexpr auto REMOVE = PlatformCall::RegDeleteValueW;

constexpr WCHAR KEY[] = TEXT("SOFTWARE\\ORX\\Test");
constexpr WCHAR NAME[] = TEXT("A name too long for its object");

/// One use of a call that fails. Uses by the trace facility do not count.
struct CFailure
{
    PlatformCall call;
    DWORD dwUse;
    DWORD dwError;

    const WCHAR* GetName() const
    {
        const bool bOfKey = call == OPEN || call == CREATE;
        // Closing has no name, and tracing closes no key: it finds none to read its mask in.
        return call == CLOSE ? nullptr : bOfKey ? KEY : NAME;
    }
};

/// The line that an exception about the key or the value writes.
std::string OfKey(const char* szVerb, const char* szError)
{
    return std::string("[EXCEPTION] Unable to ") + szVerb +
           " registry key, Registry Key: SOFTWARE\\ORX\\Test, Error: " + szError;
}
std::string OfValue(const char* szVerb, const char* szError = "0x5")
{
    return std::string("[EXCEPTION] Unable to ") + szVerb +
           ", Registry Value: A name too long for its object, Error: " + szError;
}
std::string Init(const char* szClass)
{
    return std::string("[EXCEPTION] Unable to instantiate ") + szClass + " object";
}

/// "true", "false" or what the exception says that leaves.
template <typename Operation>
std::string GetOutcome(const Operation& operation)
{
    try {
        return operation() ? "true" : "false";
    }
#define OUTCOME(CLASS, SHORT)                                                                                \
    catch (const CLASS&) {                                                                                   \
        return SHORT;                                                                                        \
    }
    OUTCOME(CUnableToOpenRegistryKeyException, "cannot open")
    OUTCOME(CUnableToCreateRegistryKeyException, "cannot create")
    OUTCOME(CUnableToCloseRegistryKeyException, "cannot close")
    OUTCOME(CUnableToReadRegistryException, "cannot read")
    OUTCOME(CUnableToWriteRegistryException, "cannot write")
    OUTCOME(CUnableToDeleteRegistryValueException, "cannot delete")
    OUTCOME(CRegistryStringInitException, "no CRegistryString")
    OUTCOME(CRegistryDwordInitException, "no CRegistryDword")
#undef OUTCOME
}

class FailingRegistryClasses : public CTestMachine
{
protected:
    template <typename Value>
    static std::unique_ptr<Value> Make(bool bReadNow = false)
    {
        return std::make_unique<Value>(LUM_GINA_APP, LUM_GINA_MTM, HKEY_LOCAL_MACHINE, KEY, NAME,
                                       KEY_ALL_ACCESS, true, true, false, true, bReadNow, 0);
    }
    static bool MakeKey()
    {
        CRegistryKey(LUM_GINA_APP, LUM_GINA_MTM, HKEY_LOCAL_MACHINE, KEY, KEY_ALL_ACCESS, true, true, 0);
        return true;
    }

    std::unique_ptr<CRegistryString> text = Make<CRegistryString>();
    std::unique_ptr<CRegistryDword> number = Make<CRegistryDword>();
    WCHAR szBuffer[10] = {};
    DWORD dwNumber = 0;
};

TEST_F(FailingRegistryClasses, TellTheirReasonAndLeaveAsTheirException)
{
    const auto openKey = [this] { return text->OpenKey(); };
    const auto createKey = [this] { return text->CloseKey() && text->CreateKey(); };
    const auto closeKey = [this] { return text->CloseKey(); };
    const auto getText = [this] { return text->GetRegistryString(szBuffer, 10, true); };
    const auto setText = [this] { return text->SetRegistryString(TEXT("new"), false); };
    const auto getNumber = [this] { return number->GetRegistryDword(&dwNumber, true); };
    const auto setNumber = [this] { return number->SetRegistryDword(7, false); };
    const auto makeText = [] { return Make<CRegistryString>(true) != nullptr; };
    const auto makeNumber = [] { return Make<CRegistryDword>(true) != nullptr; };
    const auto readText = [this] { return text->ReadRegistry(); };
    const auto writeText = [this] { return text->WriteRegistry(); };
    const auto deleteValue = [this] { return text->DeleteRegistryValue(); };
    const auto readNumber = [this] { return number->ReadRegistry(); };
    const auto writeNumber = [this] { return number->WriteRegistry(); };
    const std::string cannotRead = OfValue("read from registry");
    const std::string cannotWrite = OfValue("write to registry");
    struct
    {
        std::function<bool()> operation;
        std::vector<CFailure> failures;
        const char* szOutcome;
        Lines lines;
    } const rows[] = {
        {openKey, {{OPEN, 1, 5}}, "cannot open", {OfKey("open", "0x5")}},
        {openKey, {{OPEN, 1, 6}}, "true", {}},
        {openKey, {{OPEN, 1, 2}, {CREATE, 1, 5}}, "cannot create", {OfKey("create", "0x5")}},
        {openKey, {{OPEN, 1, 2}, {OPEN, 2, 0x3fa}}, "cannot open", {OfKey("open", "0x3fa")}},
        // The first close is of the key that is open, the second of the one just created.
        {openKey, {{CLOSE, 1, 6}}, "false", {OfKey("close", "0x6")}},
        {openKey, {{OPEN, 1, 2}, {CLOSE, 2, 6}}, "false", {OfKey("close", "0x6"), FAILED}},
        {createKey, {{CREATE, 1, 5}}, "cannot create", {OfKey("create", "0x5")}},
        {createKey, {{CLOSE, 2, 6}}, "false", {OfKey("close", "0x6")}},
        {closeKey, {{CLOSE, 1, 6}}, "cannot close", {OfKey("close", "0x6")}},
        {deleteValue, {{REMOVE, 1, 5}}, "cannot delete", {OfValue("delete registry value")}},
        {getText, {{READ, 1, 5}}, "cannot read", {cannotRead}},
        {readText, {{READ, 1, 0x3fa}}, "cannot read", {OfValue("read from registry", "0x3fa")}},
        {setText, {{WRITE, 1, 5}}, "cannot write", {cannotWrite}},
        {writeText, {{WRITE, 1, 5}}, "cannot write", {cannotWrite}},
        {getNumber, {{READ, 1, 5}}, "cannot read", {cannotRead}},
        {readNumber, {{READ, 1, 5}}, "cannot read", {cannotRead}},
        {setNumber, {{WRITE, 1, 5}}, "cannot write", {cannotWrite}},
        {writeNumber, {{WRITE, 1, 5}}, "cannot write", {cannotWrite}},
        // Missing, to be created, and that fails.
        {getText, {{READ, 1, 2}, {WRITE, 1, 5}}, "false", {cannotWrite, UNHANDLED}},
        {getNumber, {{READ, 1, 2}, {WRITE, 1, 5}}, "false", {cannotWrite, UNHANDLED}},
        {makeText, {{OPEN, 1, 5}}, "cannot open", {OfKey("open", "0x5")}},
        {makeNumber, {{OPEN, 1, 2}, {CREATE, 1, 5}}, "cannot create", {OfKey("create", "0x5")}},
        {makeText, {{READ, 1, 5}}, "cannot read", {cannotRead}},
        {makeNumber, {{READ, 1, 5}}, "cannot read", {cannotRead}},
        {makeNumber,
         {{READ, 1, 2}, {WRITE, 1, 5}},
         "no CRegistryDword",
         {cannotWrite, UNHANDLED, Init("CRegistryDword")}},
        {makeText,
         {{OPEN, 1, 2}, {CLOSE, 1, 6}},
         "no CRegistryString",
         {OfKey("close", "0x6"), FAILED, Init("CRegistryKey"), Init("CRegistryValue"),
          Init("CRegistryString")}},
        {MakeKey,
         {{CLOSE, 1, 6}},
         "true",
         {OfKey("close", "0x6"), "[WARNING] Unable to delete variable, Variable: m_hKey"}},
    };
    for (std::size_t nRow = 0; nRow < std::size(rows); ++nRow) {
        SCOPED_TRACE(testing::Message() << "row " << nRow);
        SetDword(KEY, NAME, 0x00630062);
        text = Make<CRegistryString>();
        number = Make<CRegistryDword>();
        ClearLog();
        {
            std::vector<std::unique_ptr<CFaultInjection>> faults;
            for (const CFailure& failure : rows[nRow].failures) {
                faults.push_back(std::make_unique<CFaultInjection>(failure.call, failure.dwUse,
                                                                   failure.dwError, failure.GetName()));
            }
            EXPECT_EQ(rows[nRow].szOutcome, GetOutcome(rows[nRow].operation));
        }
        EXPECT_EQ(rows[nRow].lines, Log());
        // What follows is not affected.
        EXPECT_TRUE(text->OpenKey());
        EXPECT_TRUE(text->SetRegistryString(TEXT("later"), true));
    }
}

TEST_F(FailingRegistryClasses, TheCacheKeepsWhatCouldNotBeWrittenAndWhatWasReadBefore)
{
    {
        const CFaultInjection fault(WRITE, 1, ERROR_ACCESS_DENIED, nullptr, FaultRepeat::FromThenOn);
        EXPECT_THROW(text->SetRegistryString(TEXT("new"), true), CUnableToWriteRegistryException);
        EXPECT_THROW(number->SetRegistryDword(7, true), CUnableToWriteRegistryException);
    }
    {
        const CFaultInjection fault(READ, 1, ERROR_ACCESS_DENIED, nullptr, FaultRepeat::FromThenOn);
        EXPECT_THROW(text->ReadRegistry(), CUnableToReadRegistryException);
        EXPECT_THROW(number->ReadRegistry(), CUnableToReadRegistryException);
    }
    EXPECT_TRUE(text->GetRegistryString(szBuffer, 10, false));
    EXPECT_EQ("new", Narrow(szBuffer));
    EXPECT_TRUE(number->GetRegistryDword(&dwNumber, false));
    EXPECT_EQ(7u, dwNumber);
}

TEST_F(FailingRegistryClasses, WithoutMemoryThereIsNoObject)
{
    const auto noMemory = [](const char* szVariable, Lines lines) {
        lines.insert(lines.begin(),
                     std::string("[EXCEPTION] Memory could not be allocated, Variable: ") + szVariable);
        return lines;
    };
    const auto check = [&](auto make, const std::string& className) {
        const Lines noName = {Init("CRegistryValue"), Init(className.c_str())};
        std::set<Lines> logs;
        // The first is the object itself; most of the rest are of tracing and the platform.
        for (int nBefore = 1; nBefore < 60; ++nBefore) {
            ClearLog();
            const std::string outcome = GetOutcome([&] {
                const CFailingAllocation failing(nBefore);
                return make() != nullptr;
            });
            logs.insert(Log());
            EXPECT_TRUE(outcome == "true" || outcome == "no " + className || outcome == "cannot open")
                << nBefore << " " << outcome;
        }
        EXPECT_EQ(1u, logs.count(noMemory("m_szValueName", noName)));
        EXPECT_EQ(1u, logs.count(noMemory("m_szSubKey", {Init("CRegistryKey"), noName[0], noName[1]})));
    };
    check([] { return Make<CRegistryString>(); }, "CRegistryString");
    check([] { return Make<CRegistryDword>(); }, "CRegistryDword");
}

} // namespace
