#include "Lumctl.h"

#include "CommandLineRunner.h"
#include "machine/SetupError.h"

void Lumctl::Run(const CInstallSession& session, const std::vector<WideText>& words)
{
    std::string said = "lumctl";
    std::vector<std::string> arguments = {said};
    for (const WideText& word : words) {
        arguments.push_back(ToNarrow(word.c_str()));
        said += " " + Shown(word);
    }
    std::vector<const char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    said += "\n";
    bool bIsChange = false;
    try {
        const ExitStatus status = RunCommandLine(static_cast<int>(argv.size()), argv.data(), said, bIsChange);
        if (status == STATUS_DONE) {
            session.Log(said);
            return;
        }
        said += "exit status " + std::to_string(status);
    } catch (const std::exception& error) {
        said += error.what();
    }
    throw CSetupError(said);
}
