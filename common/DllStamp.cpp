#include "DllStamp.h"

#include "GinaNames.h"

namespace {

constexpr WCHAR EXTENSION[] = TEXT(".dll");

void AppendHex(std::basic_string<WCHAR>& text, DWORD dwNumber)
{
    constexpr int DIGIT_BITS = 4;
    for (int nShift = 8 * sizeof(dwNumber) - DIGIT_BITS; nShift >= 0; nShift -= DIGIT_BITS) {
        text += static_cast<WCHAR>("0123456789abcdef"[dwNumber >> nShift & 0xF]);
    }
}

} // namespace

std::basic_string<WCHAR> GetDllStamp(const WCHAR* szDll)
{
    std::basic_string<WCHAR> stamp;
    WCHAR szPath[NAME_CAPACITY] = {};
    const DWORD cchPath = SearchPathW(nullptr, szDll, EXTENSION, NAME_CAPACITY, szPath, nullptr);
    WIN32_FILE_ATTRIBUTE_DATA file = {};
    if (cchPath == 0 || cchPath >= NAME_CAPACITY ||
        !GetFileAttributesExW(szPath, GetFileExInfoStandard, &file)) {
        return stamp;
    }
    AppendHex(stamp, file.nFileSizeHigh);
    AppendHex(stamp, file.nFileSizeLow);
    stamp += ' ';
    AppendHex(stamp, file.ftLastWriteTime.dwHighDateTime);
    AppendHex(stamp, file.ftLastWriteTime.dwLowDateTime);
    return stamp;
}
