#pragma once

#include "GinaExport.h"
#include "machine/DllFile.h"
#include "machine/Text.h"

/// The exports that a DLL lacks. bAll: of the whole table; otherwise of those without which a DLL of any
/// version is refused.
std::vector<std::string> FindMissingExports(const CDllFile& dll, const CExportTable& exports, bool bAll);

/// Why a DLL cannot be used as what szKind names, such as "GINA"; empty when it can. missing: the exports
/// that it lacks.
std::string DescribeTrouble(const CDllFile& dll, const std::vector<std::string>& missing, const char* szKind);

/// The remedy for one that is missing, cannot be used or will be gone. name: as the chain or a list has it.
std::string DescribeRemedy(const CDllFile& dll, const WideText& name);
