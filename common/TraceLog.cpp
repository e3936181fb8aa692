#include "TraceLog.h"

#include <iterator>
#include <string>
#include <string_view>

#include "GinaNames.h"
#include "KeptKey.h"

namespace {

using WideText = std::basic_string<WCHAR>;

constexpr WCHAR DEBUG_KEY[] = TEXT("Software\\ORX\\Security\\Debug");
constexpr WCHAR MASK_VALUE[] = TEXT("Debug");
constexpr std::size_t LABEL_CAPACITY = 30;

struct CLevelLabel
{
    DWORD dwLevel;
    const WCHAR* szLabel;
};

constexpr CLevelLabel LEVEL_LABELS[] = {
    {LEVEL_DEBUG, TEXT("DEBUG")},
    {LEVEL_ENTRY, TEXT("ENTRY")},
    {LEVEL_EXIT, TEXT("EXIT ")},
    {LEVEL_NOTIFICATION, TEXT("NOTIFICATION")},
    {LEVEL_WARNING, TEXT("WARNING")},
    {LEVEL_EXCEPTION, TEXT("EXCEPTION")},
    {LEVEL_CRITICAL, TEXT("CRITICAL")},
    {LEVEL_ERROR, TEXT("ERROR")},
    {LEVEL_CONSTRUCTION_ENTRY, TEXT("CONSTRUCTION ENTRY")},
    {LEVEL_CONSTRUCTION_EXIT, TEXT("CONSTRUCTION EXIT")},
    {LEVEL_DESTRUCTION_ENTRY, TEXT("DESTRUCTION ENTRY")},
    {LEVEL_DESTRUCTION_EXIT, TEXT("DESTRUCTION EXIT")},
};

constexpr WCHAR UNKNOWN_LEVEL_LABEL[] = TEXT("HEADER");

constexpr bool LabelsFit()
{
    for (const CLevelLabel& row : LEVEL_LABELS) {
        if (std::char_traits<WCHAR>::length(row.szLabel) >= LABEL_CAPACITY) {
            return false;
        }
    }
    return true;
}
// So no label is ever cut.
static_assert(LabelsFit());

// Closed when the library is unloaded, after its DllMain.
constinit CKeptKey s_DebugKey(DEBUG_KEY);

/// The mask that a key holds; the default when it has none.
DWORD QueryMask(CKeptKey& key) noexcept
{
    DWORD dwMask = 0;
    DWORD cbMask = sizeof(dwMask);
    return key.Query(MASK_VALUE, &dwMask, &cbMask) && cbMask == sizeof(dwMask) ? dwMask : DEFAULT_TRACE_MASK;
}

/// The path of the log file configured for a tag; empty when there is none.
WideText GetLogPath(const WCHAR* szTag)
{
    WCHAR szPath[NAME_CAPACITY + 1] = {};
    DWORD cbPath = NAME_CAPACITY * sizeof(WCHAR);
    return s_DebugKey.Query(szTag, szPath, &cbPath) ? WideText(szPath) : WideText();
}

/// Makes the last level of the directory that the file is to lie in; usually it exists.
void CreateLogDirectory(const WideText& path)
{
    const std::size_t nSeparator = path.find_last_of(TEXT("\\/:"));
    if (nSeparator != WideText::npos) {
        CreateDirectoryW(path.substr(0, nSeparator + 1).c_str(), nullptr);
    }
}

void AppendTwoDigits(WideText& text, WORD wNumber)
{
    text += static_cast<WCHAR>('0' + wNumber / 10 % 10);
    text += static_cast<WCHAR>('0' + wNumber % 10);
}

/// The local time in 24 characters, as in "Fri May 14 21:06:44 2004".
WideText GetTimeText()
{
    static constexpr WCHAR DAYS[] = TEXT("SunMonTueWedThuFriSat");
    static constexpr WCHAR MONTHS[] = TEXT("JanFebMarAprMayJunJulAugSepOctNovDec");
    SYSTEMTIME now;
    GetLocalTime(&now);

    WideText text(DAYS + 3 * now.wDayOfWeek, 3);
    text += ' ';
    text.append(MONTHS + 3 * (now.wMonth - 1), 3);
    text += ' ';
    AppendTwoDigits(text, now.wDay);
    WCHAR chSeparator = ' ';
    for (const WORD wPart : {now.wHour, now.wMinute, now.wSecond}) {
        text += chSeparator;
        AppendTwoDigits(text, wPart);
        chSeparator = ':';
    }
    text += ' ';
    AppendTwoDigits(text, now.wYear / 100);
    AppendTwoDigits(text, now.wYear % 100);
    return text;
}

/// Converts to the system's ANSI code page; empty when that fails.
std::string ToAnsi(const WideText& text)
{
    constexpr DWORD FLAGS = WC_COMPOSITECHECK | WC_DEFAULTCHAR;
    const int cchText = static_cast<int>(text.size());
    const int cbAnsi =
        WideCharToMultiByte(CP_ACP, FLAGS, text.c_str(), cchText, nullptr, 0, nullptr, nullptr);
    std::string ansi(static_cast<std::size_t>(cbAnsi), '\0');
    WideCharToMultiByte(CP_ACP, FLAGS, text.c_str(), cchText, ansi.data(), cbAnsi, nullptr, nullptr);
    return ansi;
}

bool AppendToFile(const WideText& path, const std::string& bytes) noexcept
{
    // Other threads write at the same time. A handle with FILE_APPEND_DATA alone makes the system put each
    // write at the end. The end that SetFilePointer finds may belong to another line by the time of the
    // write.
    const HANDLE hFile = CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE) {
        return false;
    }
    SetFilePointer(hFile, 0, nullptr, FILE_END);
    DWORD cbWritten = 0;
    const BOOL bWritten =
        WriteFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &cbWritten, nullptr);
    CloseHandle(hFile);
    return bWritten != FALSE && cbWritten == bytes.size();
}

} // namespace

const WCHAR* GetLevelLabel(DWORD dwLevel) noexcept
{
    for (const CLevelLabel& row : LEVEL_LABELS) {
        if (row.dwLevel == dwLevel) {
            return row.szLabel;
        }
    }
    return UNKNOWN_LEVEL_LABEL;
}

bool IsTraceEnabled(DWORD dwLevel, const WCHAR* szMTM) noexcept
{
    DWORD dwMask = DEFAULT_TRACE_MASK;
    if (szMTM != nullptr && *szMTM != 0) {
        CKeptKey other(szMTM);
        dwMask = QueryMask(std::basic_string_view(szMTM) == LUM_GINA_MTM ? g_OwnKey : other);
    }
    return (dwLevel & dwMask) == dwLevel;
}

bool WriteLogLine(const WCHAR* szTag, const WCHAR* szLabel, const WCHAR* szText) noexcept
{
    try {
        const WideText path = GetLogPath(szTag);
        if (path.empty()) {
            return false;
        }
        CreateLogDirectory(path);
        WideText line = GetTimeText();
        line.append(TEXT(" ")).append(szTag).append(TEXT(": [")).append(szLabel).append(TEXT("] "));
        line.append(szText).append(TEXT("\r\n"));
        const std::string ansi = ToAnsi(line);
        return !ansi.empty() && AppendToFile(path, ansi);
    } catch (...) {
        return false;
    }
}
