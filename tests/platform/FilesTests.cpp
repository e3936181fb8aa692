#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

using WideText = std::basic_string<WCHAR>;

constexpr WCHAR FILE_NAME[] = TEXT("files_test\\file.txt");
constexpr char NARROW_NAME[] = "files_test/file.txt";

HANDLE Open(const WCHAR* szPath, DWORD dwAccess, DWORD dwDisposition,
            DWORD dwShareMode = FILE_SHARE_READ | FILE_SHARE_WRITE)
{
    return CreateFileW(szPath, dwAccess, dwShareMode, nullptr, dwDisposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::string Contents()
{
    std::ifstream file(NARROW_NAME, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class Files : public testing::Test
{
protected:
    Files()
    {
        std::filesystem::remove_all("files_test");
        EXPECT_TRUE(CreateDirectoryW(TEXT("files_test"), nullptr));
    }
    ~Files() override { std::filesystem::remove_all("files_test"); }
};

TEST_F(Files, MakesOneDirectory)
{
    const struct
    {
        const WCHAR* szPath;
        BOOL bExpected;
        DWORD dwError;
    } rows[] = {
        {TEXT("files_test\\a"), TRUE, ERROR_SUCCESS},
        {TEXT("files_test\\a"), FALSE, ERROR_ALREADY_EXISTS},
        {TEXT("files_test\\b\\"), TRUE, ERROR_SUCCESS},
        {TEXT("files_test\\no\\c"), FALSE, ERROR_PATH_NOT_FOUND},
        {TEXT(""), FALSE, ERROR_PATH_NOT_FOUND},
    };
    for (const auto& row : rows) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(CreateDirectoryW(row.szPath, nullptr) != FALSE, row.bExpected != FALSE);
        EXPECT_EQ(GetLastError(), row.dwError);
    }
}

TEST_F(Files, OpensAsTheDispositionSays)
{
    const struct
    {
        const char* szWhat;
        bool bExists;
        DWORD dwDisposition;
        bool bOpens;
        DWORD dwError;
        const char* szContents;
    } rows[] = {
        {"new", false, CREATE_NEW, true, ERROR_SUCCESS, ""},
        {"new over old", true, CREATE_NEW, false, ERROR_FILE_EXISTS, "old"},
        {"anew", false, CREATE_ALWAYS, true, ERROR_SUCCESS, ""},
        {"anew over old", true, CREATE_ALWAYS, true, ERROR_ALREADY_EXISTS, ""},
        {"missing", false, OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, ""},
        {"existing", true, OPEN_EXISTING, true, ERROR_SUCCESS, "old"},
        {"open a new one", false, OPEN_ALWAYS, true, ERROR_SUCCESS, ""},
        {"open the old one", true, OPEN_ALWAYS, true, ERROR_ALREADY_EXISTS, "old"},
        {"cut off nothing", false, TRUNCATE_EXISTING, false, ERROR_FILE_NOT_FOUND, ""},
        {"cut off", true, TRUNCATE_EXISTING, true, ERROR_SUCCESS, ""},
        {"no such disposition", true, 6, false, ERROR_INVALID_PARAMETER, "old"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szWhat);
        std::remove(NARROW_NAME);
        if (row.bExists) {
            std::ofstream(NARROW_NAME) << "old";
        }
        SetLastError(ERROR_GEN_FAILURE);
        const HANDLE hFile = Open(FILE_NAME, GENERIC_WRITE, row.dwDisposition);
        EXPECT_EQ(GetLastError(), row.dwError);
        EXPECT_EQ(hFile != INVALID_HANDLE_VALUE, row.bOpens);
        EXPECT_EQ(Contents(), row.szContents);
        if (row.bOpens) {
            EXPECT_TRUE(CloseHandle(hFile));
        }
    }
}

TEST_F(Files, TellsWhyAFileCannotBeOpened)
{
    std::ofstream(NARROW_NAME).flush();
    const struct
    {
        const WCHAR* szPath;
        DWORD dwError;
    } rows[] = {
        {TEXT("files_test\\no\\file.txt"), ERROR_PATH_NOT_FOUND},
        {TEXT("files_test"), ERROR_ACCESS_DENIED},
        {TEXT("files_test\\file.txt\\"), ERROR_INVALID_NAME},
        {TEXT(""), ERROR_PATH_NOT_FOUND},
        {nullptr, ERROR_PATH_NOT_FOUND},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Open(row.szPath, GENERIC_WRITE, OPEN_EXISTING), INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), row.dwError);
    }
}

TEST_F(Files, SharesAsBothOpenersSay)
{
    constexpr DWORD SHARE_ALL = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const struct
    {
        DWORD dwFirstAccess;
        DWORD dwFirstShare;
        DWORD dwAccess;
        DWORD dwShare;
        bool bOpens;
    } rows[] = {
        {GENERIC_WRITE, SHARE_ALL, GENERIC_WRITE, SHARE_ALL, true},
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, true},
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_WRITE, SHARE_ALL, false},
        {GENERIC_WRITE, SHARE_ALL, GENERIC_READ, FILE_SHARE_READ, false},
        {GENERIC_READ, 0, GENERIC_READ, SHARE_ALL, false},
    };
    for (const auto& row : rows) {
        const HANDLE hFirst = Open(FILE_NAME, row.dwFirstAccess, OPEN_ALWAYS, row.dwFirstShare);
        ASSERT_NE(hFirst, INVALID_HANDLE_VALUE);
        const HANDLE hSecond = Open(FILE_NAME, row.dwAccess, OPEN_EXISTING, row.dwShare);
        const DWORD dwError = GetLastError();
        EXPECT_EQ(hSecond != INVALID_HANDLE_VALUE, row.bOpens);
        EXPECT_EQ(dwError, DWORD(row.bOpens ? ERROR_SUCCESS : ERROR_SHARING_VIOLATION));
        CloseHandle(hFirst);
        if (row.bOpens) {
            CloseHandle(hSecond);
        }
    }
}

TEST_F(Files, ReadsAndWritesWhereThePointerIs)
{
    const HANDLE hFile = Open(FILE_NAME, GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
    DWORD cbMoved = 99;
    EXPECT_TRUE(WriteFile(hFile, "abcdef", 6, &cbMoved, nullptr));
    EXPECT_EQ(cbMoved, 6u);
    EXPECT_EQ(SetFilePointer(hFile, 2, nullptr, FILE_BEGIN), 2u);
    EXPECT_TRUE(WriteFile(hFile, "C", 1, &cbMoved, nullptr));
    EXPECT_EQ(SetFilePointer(hFile, -2, nullptr, FILE_CURRENT), 1u);
    char buffer[8] = {};
    EXPECT_TRUE(ReadFile(hFile, buffer, 3, &cbMoved, nullptr));
    EXPECT_EQ(std::string(buffer, cbMoved), "bCd");
    EXPECT_EQ(SetFilePointer(hFile, 0, nullptr, FILE_END), 6u);
    EXPECT_TRUE(ReadFile(hFile, buffer, 3, &cbMoved, nullptr)) << "the end is no error";
    EXPECT_EQ(cbMoved, 0u);
    EXPECT_EQ(SetFilePointer(hFile, -7, nullptr, FILE_END), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_NEGATIVE_SEEK));
    EXPECT_EQ(SetFilePointer(hFile, 0, nullptr, 3), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
    LONG lHigh = 1;
    EXPECT_EQ(SetFilePointer(hFile, 5, &lHigh, FILE_BEGIN), 5u);
    EXPECT_EQ(lHigh, 1);
    lHigh = 0;
    SetLastError(ERROR_GEN_FAILURE);
    EXPECT_EQ(SetFilePointer(hFile, -1, &lHigh, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_SUCCESS)) << "a position, not a failure";
    EXPECT_TRUE(CloseHandle(hFile));
    EXPECT_EQ(Contents(), "abCdef");
}

TEST_F(Files, AppendsAtTheEndThatIsThereWhenItWrites)
{
    const HANDLE hFirst = Open(FILE_NAME, FILE_APPEND_DATA, OPEN_ALWAYS);
    const HANDLE hSecond = Open(FILE_NAME, FILE_APPEND_DATA, OPEN_ALWAYS);
    DWORD cbMoved = 0;
    for (const HANDLE hFile : {hFirst, hSecond, hFirst}) {
        EXPECT_EQ(SetFilePointer(hFile, 0, nullptr, FILE_BEGIN), 0u);
        EXPECT_TRUE(WriteFile(hFile, "ab", 2, &cbMoved, nullptr));
    }
    EXPECT_TRUE(CloseHandle(hFirst));
    EXPECT_TRUE(CloseHandle(hSecond));
    EXPECT_EQ(Contents(), "ababab");
}

TEST_F(Files, HoldsAHandleToItsAccessAndKnowsClosedOnes)
{
    char buffer[4] = {};
    DWORD cbMoved = 0;
    const HANDLE hWrite = Open(FILE_NAME, GENERIC_WRITE, CREATE_NEW);
    EXPECT_FALSE(ReadFile(hWrite, buffer, 4, &cbMoved, nullptr));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
    const HANDLE hRead = Open(FILE_NAME, GENERIC_READ, OPEN_EXISTING);
    EXPECT_FALSE(WriteFile(hRead, "x", 1, &cbMoved, nullptr));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
    EXPECT_TRUE(CloseHandle(hWrite));
    EXPECT_TRUE(CloseHandle(hRead));
    EXPECT_FALSE(CloseHandle(hRead));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(WriteFile(hWrite, "x", 1, &cbMoved, nullptr));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
    EXPECT_EQ(SetFilePointer(hWrite, 0, nullptr, FILE_END), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
}

} // namespace
