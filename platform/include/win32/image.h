#pragma once

#include "win32/types.h"

// The layout of the files that Windows loads, as far as a reader of exports and imports needs it.

#define IMAGE_DOS_SIGNATURE 0x5A4D
#define IMAGE_NT_SIGNATURE 0x00004550
#define IMAGE_FILE_MACHINE_I386 0x014C
#define IMAGE_FILE_DLL 0x2000
#define IMAGE_NT_OPTIONAL_HDR32_MAGIC 0x010B
#define IMAGE_DIRECTORY_ENTRY_EXPORT 0
#define IMAGE_DIRECTORY_ENTRY_IMPORT 1

struct IMAGE_DOS_HEADER
{
    WORD e_magic;
    WORD e_unused[29];
    LONG e_lfanew;
};

struct IMAGE_FILE_HEADER
{
    WORD Machine;
    WORD NumberOfSections;
    DWORD TimeDateStamp;
    DWORD PointerToSymbolTable;
    DWORD NumberOfSymbols;
    WORD SizeOfOptionalHeader;
    WORD Characteristics;
};

struct IMAGE_DATA_DIRECTORY
{
    DWORD VirtualAddress;
    DWORD Size;
};

struct IMAGE_OPTIONAL_HEADER32
{
    WORD Magic;
    WORD Unused[45];
    DWORD NumberOfRvaAndSizes;
    IMAGE_DATA_DIRECTORY DataDirectory[16];
};

struct IMAGE_NT_HEADERS32
{
    DWORD Signature;
    IMAGE_FILE_HEADER FileHeader;
    IMAGE_OPTIONAL_HEADER32 OptionalHeader;
};

struct IMAGE_SECTION_HEADER
{
    BYTE Name[8];
    DWORD VirtualSize;
    DWORD VirtualAddress;
    DWORD SizeOfRawData;
    DWORD PointerToRawData;
    DWORD Unused[4];
};

struct IMAGE_EXPORT_DIRECTORY
{
    DWORD Unused[6];
    DWORD NumberOfNames;
    DWORD AddressOfFunctions;
    DWORD AddressOfNames;
    DWORD AddressOfNameOrdinals;
};

struct IMAGE_IMPORT_DESCRIPTOR
{
    DWORD Unused[3];
    DWORD Name;
    DWORD FirstThunk;
};

static_assert(sizeof(IMAGE_DOS_HEADER) == 64 && sizeof(IMAGE_OPTIONAL_HEADER32) == 224 &&
                  sizeof(IMAGE_SECTION_HEADER) == 40 && sizeof(IMAGE_EXPORT_DIRECTORY) == 40 &&
                  sizeof(IMAGE_IMPORT_DESCRIPTOR) == 20,
              "as Windows has them");
