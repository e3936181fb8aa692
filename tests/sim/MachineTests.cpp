// What the library leaves in the registry of a machine, looked at in the file that the machine is saved to.
// For the native target, where a machine's registry is a file.

#include "Machine.h"

#include <cstdio>

#include <winwlx.h>

#include "GinaNames.h"
#include "Runner.h"
#include "TestMachine.h"
#include "machine/MachineRegistry.h"
#include "machine/SetupError.h"

namespace {

constexpr char FILE_NAME[] = "machine_tests.reg";
constexpr char DAY[] = "Attach\nWlxNegotiate\nWlxInitialize\n";

/// A saved registry, in UTF-16, as plain text.
std::string ReadSaved()
{
    std::string text = ReadBytes(FILE_NAME);
    std::erase_if(text, [](char ch) { return ch <= 0 || ch == '\r'; });
    return text;
}

class Machine : public CTestMachine
{
protected:
    Machine() { MachineRegistry::Clear(); }
    ~Machine() override { std::remove(FILE_NAME); }

    static void Live(const std::string& day)
    {
        CRunner runner("lum_gina.dll", "msgina.dll", WLX_VERSION_1_4);
        for (const CStep& step : ParseDay(day, "day")) {
            runner.Run(step);
        }
    }

    static std::string GetStatus()
    {
        return GetValue(VOLATILE_KEY, TEXT("Enabled")) + ' ' + GetValue(VOLATILE_KEY, TEXT("InstanceCount"));
    }
};

TEST_F(Machine, AFirstStartLeavesTheOwnConfigurationAndNothingElse)
{
    Live("Attach\n");
    EXPECT_EQ("0 0", GetStatus());
    ASSERT_EQ(ERROR_SUCCESS, MachineRegistry::Save(Widen(FILE_NAME).c_str()));
    const std::string expected = "Windows Registry Editor Version 5.00\n\n"
                                 "[HKEY_LOCAL_MACHINE]\n\n"
                                 "[HKEY_LOCAL_MACHINE\\SOFTWARE]\n\n"
                                 "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX]\n\n"
                                 "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\LUM]\n\n"
                                 "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\LUM\\Gina]\n"
                                 "\"GinaDLL\"=\"\"\n"
                                 "\"Plugins\"=\"\"\n"
                                 "\"Timeout\"=dword:00000000\n";
    EXPECT_EQ(expected, ReadSaved());
    // A second start finds it all, and a whole day adds nothing that stays.
    Live(DAY);
    EXPECT_EQ("1 1", GetStatus());
    ASSERT_EQ(ERROR_SUCCESS, MachineRegistry::Save(Widen(FILE_NAME).c_str()));
    EXPECT_EQ(expected, ReadSaved());
}

TEST_F(Machine, ARestartForgetsTheStatus)
{
    Live(DAY);
    Live(DAY + std::string("WlxShutdown\n"));
    EXPECT_EQ("0 2", GetStatus());
    MachineRegistry::ForgetVolatile();
    EXPECT_EQ("(none) (none)", GetStatus());
    Live(DAY);
    EXPECT_EQ("1 1", GetStatus());
}

TEST_F(Machine, OfSomebodyIsLeftAlone)
{
    EXPECT_NO_THROW(CMachine::RequireUnused());
    SetDword(VOLATILE_KEY, TEXT("Enabled"), 1);
    EXPECT_THROW(CMachine::RequireUnused(), CSetupError);
    MachineRegistry::Clear();
    SetString(WINLOGON_KEY, WINLOGON_GINA_DLL, TEXT("wpnGina.dll"));
    EXPECT_THROW(CMachine::RequireUnused(), CSetupError);
}

TEST_F(Machine, OfTheSimulatorForgetsTheStatusAndKeepsTheRest)
{
    COptions options;
    options.registry = FILE_NAME;
    options.standin = "msgina.dll";
    options.traceLog.clear();
    for (int nDay = 0; nDay < 2; ++nDay) {
        MachineRegistry::Clear();
        const CMachine machine(options);
        EXPECT_EQ(nDay == 0 ? "(none)" : "30", GetValue(OWN_KEY, TEXT("Timeout")));
        Live(DAY);
        EXPECT_EQ("1 1", GetStatus());
        SetDword(OWN_KEY, TEXT("Timeout"), 30);
        machine.Save();
    }
}

} // namespace
