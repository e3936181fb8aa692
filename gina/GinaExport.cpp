#include "GinaExport.h"

CGinaExportBase::CGinaExportBase(CExportTable& table, const char* szName, DWORD dwAboveVersion,
                                 Missing missing) noexcept
    : m_szName(szName), m_dwAboveVersion(dwAboveVersion), m_missing(missing)
{
    (table.m_pLast != nullptr ? table.m_pLast->m_pNext : table.m_pFirst) = this;
    table.m_pLast = this;
}
