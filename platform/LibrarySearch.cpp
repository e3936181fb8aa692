#include "LibrarySearch.h"

#include <filesystem>

namespace Native {
namespace {

/// The file of that name, in whatever case of its letters; empty when there is none.
std::string FindIn(const std::string& directory, const WideText& name)
{
    const std::filesystem::path exact = std::filesystem::path(directory) / ToUtf8(name);
    std::error_code error;
    if (std::filesystem::exists(exact, error)) {
        return exact.string();
    }
    const std::filesystem::directory_iterator end;
    for (std::filesystem::directory_iterator entry(directory, error); entry != end; entry.increment(error)) {
        WideText found;
        if (FromUtf8(entry->path().filename().string(), found) && CompareNoCase(found, name) == 0) {
            return entry->path().string();
        }
    }
    return std::string();
}

} // namespace

std::string GetProgramPath()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

std::vector<std::string> ListLibraryDirectories()
{
    const std::string program = GetProgramPath();
    return {program.substr(0, program.find_last_of('/')), "."};
}

std::string FindLibrary(const WideText& name)
{
    std::string path;
    for (const std::string& directory : ListLibraryDirectories()) {
        path = path.empty() ? FindIn(directory, name) : path;
    }
    return path;
}

std::string FindLibraryFile(const WideText& name, const WideText& directory)
{
    if (name.find_first_of(TEXT("\\/")) != WideText::npos) {
        const std::string path = ToPath(name.c_str());
        std::error_code error;
        return std::filesystem::exists(path, error) ? path : std::string();
    }
    return directory.empty() ? FindLibrary(name) : FindIn(ToPath(directory.c_str()), name);
}

} // namespace Native
