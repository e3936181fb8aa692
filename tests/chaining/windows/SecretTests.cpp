#include "../ChainMachine.h"
#include "Wipe.h"

namespace {

/// A password that the memory of the process never holds but in its registry value: the text is put together
/// character by character.
class Secret : public CChainMachine
{
protected:
    static constexpr int LENGTH = 90;

    static WCHAR At(int nIndex) { return static_cast<WCHAR>('!' + nIndex * nIndex % 89); }

    static void Write(WCHAR (&szText)[LENGTH + 1])
    {
        for (int n = 0; n < LENGTH; ++n) {
            szText[n] = At(n);
        }
        szText[LENGTH] = 0;
    }

    /// How many copies there are of any eight characters of it.
    static int CountCopies()
    {
        int nCopies = 0;
        MEMORY_BASIC_INFORMATION region;
        for (const BYTE* p = nullptr; VirtualQuery(p, &region, sizeof(region)) != 0; p += region.RegionSize) {
            constexpr DWORD READABLE =
                PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE;
            if (region.State == MEM_COMMIT && (region.Protect & READABLE) != 0 &&
                (region.Protect & PAGE_GUARD) == 0) {
                nCopies += CountCopies(reinterpret_cast<const WCHAR*>(p), region.RegionSize / sizeof(WCHAR));
            }
        }
        return nCopies;
    }

private:
    static int CountCopies(const WCHAR* pText, SIZE_T cchText)
    {
        constexpr int PART = 8;
        int nCopies = 0;
        for (SIZE_T nAt = 0; nAt + PART <= cchText; ++nAt) {
            for (int nPart = 0; nPart + PART <= LENGTH; nPart += PART) {
                int nSame = 0;
                while (nSame < PART && pText[nAt + nSame] == At(nPart + nSame)) {
                    ++nSame;
                }
                nCopies += nSame == PART;
            }
        }
        return nCopies;
    }
};

TEST_F(Secret, NoCopyOfThePasswordStaysInTheProcess)
{
    {
        WCHAR szPassword[LENGTH + 1];
        const CWipeAtEnd wipe(szPassword);
        Write(szPassword);
        SetString(WINLOGON_KEY, TEXT("DefaultPassword"), szPassword);
        ASSERT_EQ(LENGTH / 8, CountCopies());
    }
    ASSERT_EQ(0, CountCopies());
    const HMODULE hLibrary = LoadLibraryW(HOST_GINA);
    ASSERT_NE(nullptr, hLibrary);
    EXPECT_EQ(0, CountCopies()) << "after attach";
    FreeLibrary(hLibrary);
    EXPECT_EQ(0, CountCopies()) << "after detach";
    {
        CRegistryString password(LUM_GINA_APP, LUM_GINA_MTM, HKEY_LOCAL_MACHINE, WINLOGON_KEY,
                                 TEXT("DefaultPassword"), KEY_READ, false, true, true, true, true, 0);
        EXPECT_EQ(LENGTH / 8, CountCopies()) << "in use";
    }
    EXPECT_EQ(0, CountCopies()) << "after release";
}

} // namespace
