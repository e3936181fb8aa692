#pragma once

#include "GinaExport.h"
#include "machine/DllFile.h"
#include "machine/Text.h"

/// The remedy for one that is missing, cannot be used or will be gone.
std::string FindRemedy(const CDllFile& dll, const WideText& name);

/// The exports that a DLL lacks: of all in the table, or of those that every version calls for.
std::vector<std::string> FindMissingExports(const CDllFile& dll, const CExportTable& exports, bool bAll);

/// Why a DLL cannot be used as what szKind names, such as "GINA"; empty when it can. missing: the exports
/// that it lacks.
std::string DescribeTrouble(const CDllFile& dll, const std::vector<std::string>& missing, const char* szKind);
