#pragma once

#include "ControlChannel.h"
#include "ControlProtocol.h"
#include "GinaPluginInfo.h"
#include "Owned.h"

// The fields of requests. Each is made by reading it from the channel, and throws what that throws. A name
// that is too long, as one that there is no memory for, is a CMemAllocException.

inline constexpr WCHAR VAR_GINA_DLL[] = TEXT("szGinaDLL");
inline constexpr WCHAR VAR_PLUGIN[] = TEXT("szPlugin");
inline constexpr WCHAR VAR_RECORD_GINA_DLL[] = TEXT("m_szGinaDLL");

/// A counted name. Variable is what messages call its buffer.
template <const auto& Variable>
class CCountedName
{
public:
    explicit CCountedName(CControlChannel& channel) : m_szName(ReadName(channel, Variable)) {}

    operator const WCHAR*() const noexcept { return m_szName; }

private:
    static COwnedText ReadName(CControlChannel& channel, const WCHAR* szVariable);

    COwnedText m_szName;
};

using CGinaName = CCountedName<VAR_GINA_DLL>;
using CPluginName = CCountedName<VAR_PLUGIN>;

/// A fixed name. One without a terminating zero is longer than a name may be.
class CFixedName
{
public:
    explicit CFixedName(CControlChannel& channel);

    operator const WCHAR*() const noexcept { return m_szName; }

private:
    WCHAR m_szName[NAME_CAPACITY];
};

/// A record. Its pointers belong to another process, so what is made from them has no strings.
class CRecord
{
public:
    explicit CRecord(CControlChannel& channel);

    /// Reads the DLL name that travels behind the record; the empty name stands for none.
    void ReadGinaDLL(CControlChannel& channel);

    operator const CGinaPluginInfo&() const noexcept { return m_Info; }
    CGinaPluginInfo* Get() const noexcept { return &m_Info; }

private:
    /// Plugins that are asked about a record may write to it.
    mutable CGinaPluginInfo m_Info;
};

/// A record with its DLL name.
class CNamedRecord : public CRecord
{
public:
    explicit CNamedRecord(CControlChannel& channel) : CRecord(channel) { ReadGinaDLL(channel); }
};

/// One byte: non-zero is true.
class CFlag
{
public:
    explicit CFlag(CControlChannel& channel);

    operator bool() const noexcept { return m_bSet; }

private:
    bool m_bSet;
};

class CNumber
{
public:
    explicit CNumber(CControlChannel& channel);

    operator DWORD() const noexcept { return m_dwValue; }

private:
    DWORD m_dwValue;
};

/// A name and whether the change is to take effect at once.
struct CPluginChange
{
    explicit CPluginChange(CControlChannel& channel) : szPlugin(channel), bDynamic(channel) {}

    CPluginName szPlugin;
    CFlag bDynamic;
};

/// What a plugin is asked, and which one. The names of both records come last.
struct CPluginQuery
{
    explicit CPluginQuery(CControlChannel& channel);

    CRecord passedOn;
    CRecord target;
    CNumber param1;
    CNumber param2;
    CNumber param3;
};

/// For requests without fields.
struct CNoFields
{
    explicit CNoFields(CControlChannel&) noexcept {}
};
