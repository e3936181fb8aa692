// What the registry classes do when the platform fails: the exception that leaves and the lines that are
// written, for each operation. Failures are injected, so this is for the native target.

#include <functional>
#include <iterator>
#include <memory>

#include "Exceptions.h"
#include "FailingAllocation.h"
#include "RegistryClasses.h"
#include "TestMachine.h"
#include "platform/FaultInjection.h"

namespace {

using Lines = std::vector<std::string>;
using Call = PlatformCall;

constexpr WCHAR KEY[] = TEXT("SOFTWARE\\ORX\\Test");
constexpr WCHAR NAME[] = TEXT("A name too long for its object");

/// One use of a call that fails. Uses by the trace facility do not count.
struct CFailure
{
    Call call;
    DWORD dwUse;
    DWORD dwError;

    const WCHAR* GetName() const
    {
        const bool bOfKey = call == Call::RegOpenKeyExW || call == Call::RegCreateKeyExW;
        // Closing has no name, and tracing closes no key: it finds none to read its mask in.
        return call == Call::RegCloseKey ? nullptr : bOfKey ? KEY : NAME;
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

constexpr char UNHANDLED[] = "[WARNING] An unhandled exception occurred";
constexpr char FAILED[] = "[WARNING] The requested operation failed or it was cancelled";

/// "true", "false" or the exception that leaves.
template <typename Operation>
std::string GetOutcome(const Operation& operation)
{
    try {
        return operation() ? "true" : "false";
    }
#define OUTCOME(CLASS)                                                                                       \
    catch (const CLASS&) {                                                                                   \
        return #CLASS;                                                                                       \
    }
    OUTCOME(CUnableToOpenRegistryKeyException)
    OUTCOME(CUnableToCreateRegistryKeyException)
    OUTCOME(CUnableToCloseRegistryKeyException)
    OUTCOME(CUnableToReadRegistryException)
    OUTCOME(CUnableToWriteRegistryException)
    OUTCOME(CUnableToDeleteRegistryValueException)
    OUTCOME(CRegistryKeyInitException)
    OUTCOME(CRegistryValueInitException)
    OUTCOME(CRegistryStringInitException)
    OUTCOME(CRegistryDwordInitException)
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
    struct
    {
        std::function<bool()> operation;
        std::vector<CFailure> failures;
        const char* szOutcome;
        Lines lines;
    } const rows[] = {
        {openKey, {{Call::RegOpenKeyExW, 1, 5}}, "CUnableToOpenRegistryKeyException", {OfKey("open", "0x5")}},
        {openKey, {{Call::RegOpenKeyExW, 1, 6}}, "true", {}},
        {openKey,
         {{Call::RegOpenKeyExW, 1, 2}, {Call::RegCreateKeyExW, 1, 5}},
         "CUnableToCreateRegistryKeyException",
         {OfKey("create", "0x5")}},
        {openKey,
         {{Call::RegOpenKeyExW, 1, 2}, {Call::RegOpenKeyExW, 2, 0x3fa}},
         "CUnableToOpenRegistryKeyException",
         {OfKey("open", "0x3fa")}},
        // The first close is of the key that is open, the second of the one just created.
        {openKey, {{Call::RegCloseKey, 1, 6}}, "false", {OfKey("close", "0x6")}},
        {openKey,
         {{Call::RegOpenKeyExW, 1, 2}, {Call::RegCloseKey, 2, 6}},
         "false",
         {OfKey("close", "0x6"), FAILED}},
        {createKey,
         {{Call::RegCreateKeyExW, 1, 5}},
         "CUnableToCreateRegistryKeyException",
         {OfKey("create", "0x5")}},
        {createKey, {{Call::RegCloseKey, 2, 6}}, "false", {OfKey("close", "0x6")}},
        {closeKey,
         {{Call::RegCloseKey, 1, 6}},
         "CUnableToCloseRegistryKeyException",
         {OfKey("close", "0x6")}},
        {[this] { return text->DeleteRegistryValue(); },
         {{Call::RegDeleteValueW, 1, 5}},
         "CUnableToDeleteRegistryValueException",
         {"[EXCEPTION] Unable to delete registry value, Registry Value: A name too long for its object, "
          "Error: 0x5"}},
        {getText,
         {{Call::RegQueryValueExW, 1, 5}},
         "CUnableToReadRegistryException",
         {OfValue("read from registry")}},
        {[this] { return text->ReadRegistry(); },
         {{Call::RegQueryValueExW, 1, 0x3fa}},
         "CUnableToReadRegistryException",
         {OfValue("read from registry", "0x3fa")}},
        {setText,
         {{Call::RegSetValueExW, 1, 5}},
         "CUnableToWriteRegistryException",
         {OfValue("write to registry")}},
        {[this] { return text->WriteRegistry(); },
         {{Call::RegSetValueExW, 1, 5}},
         "CUnableToWriteRegistryException",
         {OfValue("write to registry")}},
        {getNumber,
         {{Call::RegQueryValueExW, 1, 5}},
         "CUnableToReadRegistryException",
         {OfValue("read from registry")}},
        {[this] { return number->ReadRegistry(); },
         {{Call::RegQueryValueExW, 1, 5}},
         "CUnableToReadRegistryException",
         {OfValue("read from registry")}},
        {setNumber,
         {{Call::RegSetValueExW, 1, 5}},
         "CUnableToWriteRegistryException",
         {OfValue("write to registry")}},
        {[this] { return number->WriteRegistry(); },
         {{Call::RegSetValueExW, 1, 5}},
         "CUnableToWriteRegistryException",
         {OfValue("write to registry")}},
        // Missing, to be created, and that fails.
        {getText,
         {{Call::RegQueryValueExW, 1, 2}, {Call::RegSetValueExW, 1, 5}},
         "false",
         {OfValue("write to registry"), UNHANDLED}},
        {getNumber,
         {{Call::RegQueryValueExW, 1, 2}, {Call::RegSetValueExW, 1, 5}},
         "false",
         {OfValue("write to registry"), UNHANDLED}},
        {makeText,
         {{Call::RegOpenKeyExW, 1, 5}},
         "CUnableToOpenRegistryKeyException",
         {OfKey("open", "0x5")}},
        {makeNumber,
         {{Call::RegOpenKeyExW, 1, 2}, {Call::RegCreateKeyExW, 1, 5}},
         "CUnableToCreateRegistryKeyException",
         {OfKey("create", "0x5")}},
        {makeText,
         {{Call::RegQueryValueExW, 1, 5}},
         "CUnableToReadRegistryException",
         {OfValue("read from registry")}},
        {makeNumber,
         {{Call::RegQueryValueExW, 1, 5}},
         "CUnableToReadRegistryException",
         {OfValue("read from registry")}},
        {makeNumber,
         {{Call::RegQueryValueExW, 1, 2}, {Call::RegSetValueExW, 1, 5}},
         "CRegistryDwordInitException",
         {OfValue("write to registry"), UNHANDLED, Init("CRegistryDword")}},
        {makeText,
         {{Call::RegOpenKeyExW, 1, 2}, {Call::RegCloseKey, 1, 6}},
         "CRegistryStringInitException",
         {OfKey("close", "0x6"), FAILED, Init("CRegistryKey"), Init("CRegistryValue"),
          Init("CRegistryString")}},
        {MakeKey,
         {{Call::RegCloseKey, 1, 6}},
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
        const CFaultInjection fault(Call::RegSetValueExW, 1, ERROR_ACCESS_DENIED, nullptr,
                                    FaultRepeat::FromThenOn);
        EXPECT_THROW(text->SetRegistryString(TEXT("new"), true), CUnableToWriteRegistryException);
        EXPECT_THROW(number->SetRegistryDword(7, true), CUnableToWriteRegistryException);
    }
    {
        const CFaultInjection fault(Call::RegQueryValueExW, 1, ERROR_ACCESS_DENIED, nullptr,
                                    FaultRepeat::FromThenOn);
        EXPECT_THROW(text->ReadRegistry(), CUnableToReadRegistryException);
        EXPECT_THROW(number->ReadRegistry(), CUnableToReadRegistryException);
    }
    EXPECT_TRUE(text->GetRegistryString(szBuffer, 10, false));
    EXPECT_EQ("new", Narrow(szBuffer));
    EXPECT_TRUE(number->GetRegistryDword(&dwNumber, false));
    EXPECT_EQ(7u, dwNumber);
}

/// Values of both kinds cannot be made without memory, wherever it is missing.
TEST_F(FailingRegistryClasses, WithoutMemoryThereIsNoObject)
{
    const std::string noMemory = "[EXCEPTION] Memory could not be allocated, Variable: ";
    const std::pair<std::function<bool()>, std::string> rows[] = {
        {[] { return Make<CRegistryString>() != nullptr; }, "CRegistryString"},
        {[] { return Make<CRegistryDword>() != nullptr; }, "CRegistryDword"},
    };
    for (const auto& [make, className] : rows) {
        const Lines noKey = {noMemory + "m_szSubKey", Init("CRegistryKey"), Init("CRegistryValue"),
                             Init(className.c_str())};
        const Lines noValue = {noMemory + "m_szValueName", Init("CRegistryValue"), Init(className.c_str())};
        int nKeys = 0;
        int nNames = 0;
        // The first is the object itself; most of the rest are of tracing and the platform.
        for (int nBefore = 1; nBefore < 60; ++nBefore) {
            ClearLog();
            const std::string outcome = GetOutcome([nBefore, &makeValue = make] {
                const CFailingAllocation failing(nBefore);
                return makeValue();
            });
            nKeys += Log() == noKey ? 1 : 0;
            nNames += Log() == noValue ? 1 : 0;
            EXPECT_TRUE(outcome == "true" || outcome == className + "InitException" ||
                        outcome == "CUnableToOpenRegistryKeyException")
                << nBefore << " " << outcome;
        }
        EXPECT_EQ(1, nKeys);
        EXPECT_EQ(1, nNames);
    }
}

} // namespace
