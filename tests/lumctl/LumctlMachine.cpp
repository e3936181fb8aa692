#include "LumctlMachine.h"

#include <cstdio>
#include <fstream>
#include <iterator>

#include "CommandError.h"
#include "CommandLine.h"
#include "CommandLineRunner.h"
#include "SetupError.h"

namespace {

// Tests run in a folder of their own beside the one of programs and DLLs.
const std::string BUILD_FOLDER = "../../../bin/";
const std::string FOLDER = "ginas";

} // namespace

const char* const CLumctlMachine::ALL_DLLS = "lum_gina.dll=lum_gina.dll msgina.dll wpnGina.dll PLinkGina.dll "
                                             "qslogon.dll kvs_gina.dll BVGina01.DLL rec.dll";

CLumctlMachine::CLumctlMachine()
{
    CreateDirectoryW(Widen(FOLDER).c_str(), nullptr);
    SetDlls(ALL_DLLS);
    // What is missing on such a machine would fill the log.
    SetTraceMask(0);
}

CLumctlMachine::CRun CLumctlMachine::Run(const std::string& commandLine)
{
    std::vector<std::string> words = SplitNames("lumctl " + commandLine);
    if (commandLine.find("backup") == std::string::npos) {
        words.insert(words.end(), {"--system", FOLDER});
    }
    std::vector<const char*> argv;
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
    }
    CRun run = {STATUS_DONE, "", ""};
    try {
        run.status = RunCommandLine(static_cast<int>(argv.size()), argv.data(), run.output);
    } catch (const CCommandError& error) {
        run.status = error.status;
        run.error = error.what();
    } catch (const CUsageError& error) {
        run.status = STATUS_USAGE;
        run.error = error.what();
    } catch (const CSetupError& error) {
        run.status = STATUS_FAILED;
        run.error = error.what();
    }
    return run;
}

void CLumctlMachine::SetDlls(const std::string& names)
{
    for (const std::string& name : SplitNames(std::string(ALL_DLLS) + " x.dll")) {
        std::remove((FOLDER + "/" + name.substr(0, name.find('='))).c_str());
    }
    for (const std::string& name : SplitNames(names)) {
        const std::size_t nEquals = name.find('=');
        const std::string source =
            nEquals == std::string::npos ? std::string("standin_gina.dll") : name.substr(nEquals + 1);
        WriteFile(FOLDER + "/" + name.substr(0, nEquals),
                  source.empty() ? "no DLL" : ReadFile(BUILD_FOLDER + source));
    }
}

std::string CLumctlMachine::ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return std::string((std::istreambuf_iterator<char>(file)), {});
}

void CLumctlMachine::WriteFile(const std::string& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    EXPECT_TRUE(file.flush()) << path;
}
