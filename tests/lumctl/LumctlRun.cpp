#include "LumctlRun.h"

#include <iomanip>
#include <sstream>

#include "CommandError.h"
#include "CommandLine.h"
#include "CommandLineRunner.h"
#include "machine/SetupError.h"

CLumctlRun RunLumctl(std::vector<std::string> words)
{
    words.insert(words.begin(), "lumctl");
    std::vector<const char*> argv;
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
    }
    CLumctlRun run = {STATUS_DONE, "", ""};
    bool bIsChange = false;
    try {
        run.status = RunCommandLine(static_cast<int>(argv.size()), argv.data(), run.output, bIsChange);
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

std::vector<std::string> SplitWords(const std::string& commandLine)
{
    std::istringstream text(commandLine);
    std::vector<std::string> words;
    for (std::string word; text >> std::quoted(word);) {
        words.push_back(word);
    }
    return words;
}
