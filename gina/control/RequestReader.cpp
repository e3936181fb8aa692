#include "RequestReader.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

using namespace ControlProtocol;

namespace {

using enum Field;

#define REQUEST(NAME, CALLER, REPLY, ...)                                                                    \
    {                                                                                                        \
        NAME, TEXT("Received request: ") TEXT(#NAME), Caller::CALLER, Reply::REPLY,                          \
        {                                                                                                    \
            __VA_ARGS__                                                                                      \
        }                                                                                                    \
    }

// clang-format off
constexpr CRequestForm FORMS[] = {
    REQUEST(LUM_DECREASE_PRIORITY,        Impersonated, Byte,          Record, RecordName),
    REQUEST(LUM_INCREASE_PRIORITY,        Impersonated, Byte,          Record, RecordName),
    REQUEST(LUM_GET_PASSTHROUGH_GINA,     Impersonated, RecordAlone),
    REQUEST(LUM_IS_GINA_IN_CHAINING_LIST, Impersonated, Byte,          GinaName),
    REQUEST(LUM_IS_GINA_IN_PLUGIN_LIST,   Impersonated, Byte,          PluginName),
    REQUEST(LUM_QUERY_PLUGIN,             Impersonated, Byte,          Record, Record, Number, Number, Number,
                                                                       RecordName, RecordName),
    REQUEST(LUM_QUERY_PLUGIN_INFO,        Impersonated, ByteAndRecord, FixedName),
    REQUEST(LUM_ENABLE_GINA,              Impersonated, Byte,          Flag),
    REQUEST(LUM_REMOVE_PLUGIN,            Impersonated, Byte,          PluginName, Flag),
    REQUEST(LUM_ADD_PLUGIN,               Impersonated, Byte,          PluginName, Flag),
    REQUEST(LUM_REMOVE_GINA,              Impersonated, Byte,          FixedName),
    REQUEST(LUM_VERIFY_LUM_GINA,          Anyone,       Byte),
    REQUEST(LUM_ENABLE_ACTIVE_REG,        Impersonated, Byte,          Flag),
    REQUEST(LUM_GET_LUM_GINA_VERSION,     Anyone,       Version),
};
// clang-format on
#undef REQUEST

constexpr std::size_t Count(const CRequestForm& form, std::initializer_list<Field> kinds)
{
    return std::count_if(std::begin(form.fields), std::end(form.fields), [&](Field field) {
        return std::find(kinds.begin(), kinds.end(), field) != kinds.end();
    });
}

/// Whether CRequest has room for the fields of the form, and LONGEST_REQUEST for its bytes.
constexpr bool HasRoom(const CRequestForm& form)
{
    const std::size_t nCounted = Count(form, {GinaName, PluginName, RecordName});
    const std::size_t nFixed = Count(form, {FixedName});
    const std::size_t cbForm =
        sizeof(BYTE) + Count(form, {Flag}) + Count(form, {Record}) * sizeof(CWireRecord) +
        (Count(form, {Number}) + nCounted) * sizeof(DWORD) + nCounted * LONGEST_NAME * sizeof(WCHAR) +
        nFixed * NAME_CAPACITY * sizeof(WCHAR);
    return cbForm <= LONGEST_REQUEST && Count(form, {Record}) <= std::size(CRequest().records) &&
           Count(form, {Number}) <= std::size(CRequest().dwNumbers) && Count(form, {Flag}) <= 1 &&
           nCounted + nFixed <= std::size(CRequest().szNames);
}
static_assert(std::all_of(std::begin(FORMS), std::end(FORMS), HasRoom));

#define COUNT_REQUEST(NAME, CODE) +1
static_assert(std::size(FORMS) == LUM_CONTROL_REQUESTS(COUNT_REQUEST));
#undef COUNT_REQUEST

/// Puts a request together, field by field. Each operation is false when the bytes are refused.
class CRequestReader
{
public:
    explicit CRequestReader(std::span<const BYTE> bytes) noexcept : m_bytes(bytes) {}

    std::variant<CRequest, CRefusal> Read() noexcept
    {
        if (ReadCode() && ReadFields()) {
            return m_request;
        }
        return m_refusal;
    }

private:
    bool ReadCode() noexcept
    {
        if (!Take(m_request.byCode)) {
            return false;
        }
        m_pForm = FindRequestForm(m_request.byCode);
        return m_pForm != nullptr || Refuse({CRefusal::Reason::UnknownCode});
    }

    bool ReadFields() noexcept
    {
        return std::all_of(std::begin(m_pForm->fields), std::end(m_pForm->fields),
                           [this](Field field) { return ReadField(field); });
    }

    bool ReadField(Field field) noexcept
    {
        switch (field) {
        case Record:
            return Take(m_request.records[m_nRecords++]);
        case Number:
            return Take(m_request.dwNumbers[m_nNumbers++]);
        case Flag:
            return ReadFlag();
        case GinaName:
            return ReadCountedName(TEXT("szGinaDLL"));
        case PluginName:
            return ReadCountedName(TEXT("szPlugin"));
        case RecordName:
            return ReadCountedName(TEXT("m_szGinaDLL"));
        case FixedName:
            return ReadFixedName();
        case None:
            break;
        }
        return true;
    }

    bool ReadFlag() noexcept
    {
        BYTE byFlag = 0;
        const bool bTaken = Take(byFlag);
        m_request.bFlag = byFlag != 0;
        return bTaken;
    }

    /// The length comes from the client and may be anything.
    bool ReadCountedName(const WCHAR* szVariable) noexcept
    {
        DWORD cchName = 0;
        return Take(cchName) &&
               (cchName <= LONGEST_NAME || Refuse({CRefusal::Reason::NameTooLong, 0, szVariable})) &&
               Take(m_request.szNames[m_nNames++], cchName * sizeof(WCHAR));
    }

    bool ReadFixedName() noexcept
    {
        auto& szName = m_request.szNames[m_nNames++];
        const bool bTaken = Take(szName);
        szName[LONGEST_NAME] = 0;
        return bTaken;
    }

    template <typename Value>
    bool Take(Value& value) noexcept
    {
        return Take(&value, sizeof(value));
    }

    bool Take(void* pTarget, std::size_t cbTarget) noexcept
    {
        if (m_bytes.size() < cbTarget) {
            return Refuse({CRefusal::Reason::Unfinished, cbTarget - m_bytes.size()});
        }
        std::copy_n(m_bytes.begin(), cbTarget, static_cast<BYTE*>(pTarget));
        m_bytes = m_bytes.subspan(cbTarget);
        return true;
    }

    bool Refuse(const CRefusal& refusal) noexcept
    {
        m_refusal = refusal;
        return false;
    }

    std::span<const BYTE> m_bytes;
    const CRequestForm* m_pForm = nullptr;
    CRequest m_request;
    CRefusal m_refusal;
    int m_nRecords = 0;
    int m_nNumbers = 0;
    int m_nNames = 0;
};

} // namespace

const CRequestForm* FindRequestForm(BYTE byCode) noexcept
{
    const auto form = std::find_if(std::begin(FORMS), std::end(FORMS),
                                   [=](const CRequestForm& candidate) { return candidate.byCode == byCode; });
    return form != std::end(FORMS) ? form : nullptr;
}

std::variant<CRequest, CRefusal> ReadRequest(std::span<const BYTE> bytes) noexcept
{
    return CRequestReader(bytes).Read();
}
