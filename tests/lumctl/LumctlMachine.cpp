#include "LumctlMachine.h"

#include <cstdio>
#include <fstream>
#include <iterator>

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
    std::vector<std::string> words = SplitWords(commandLine);
    if (commandLine.find("backup") == std::string::npos) {
        words.insert(words.end(), {"--system", FOLDER});
    }
    return RunLumctl(words);
}

void CLumctlMachine::SetDlls(const std::string& names)
{
    static std::string current;
    if (names == current) {
        return;
    }
    current = names;
    for (const std::string& name : SplitNames(std::string(ALL_DLLS) + " x.dll a.dll b.dll LUM_GI~1.DLL")) {
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
