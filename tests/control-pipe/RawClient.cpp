#include "RawClient.h"

#include <gtest/gtest.h>

#include "ControlProtocol.h"

using namespace ControlProtocol;

namespace {

constexpr DWORD PATIENCE_MILLISECONDS = 60000;

std::string Wide(const std::string& name)
{
    std::string bytes;
    for (const char c : name) {
        bytes += c;
        bytes += '\0';
    }
    return bytes;
}

std::string Code(BYTE byCode)
{
    return std::string(1, static_cast<char>(byCode));
}

} // namespace

CRawClient::CRawClient() : m_hPipe(INVALID_HANDLE_VALUE)
{
    const DWORD dwStart = GetTickCount();
    while (m_hPipe == INVALID_HANDLE_VALUE && GetTickCount() - dwStart < PATIENCE_MILLISECONDS) {
        m_hPipe = CreateFileW(PIPE_NAME, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        Sleep(m_hPipe == INVALID_HANDLE_VALUE ? 1 : 0);
    }
    EXPECT_NE(m_hPipe, INVALID_HANDLE_VALUE) << "no server takes clients: " << GetLastError();
}

void CRawClient::Send(const std::string& bytes)
{
    // A server that has had enough may be gone.
    DWORD cbWritten = 0;
    WriteFile(m_hPipe, bytes.data(), static_cast<DWORD>(bytes.size()), &cbWritten, nullptr);
}

std::string CRawClient::Receive(DWORD cbPiece)
{
    std::string digits;
    std::string piece(cbPiece, 0);
    for (DWORD cbRead = 0; ReadFile(m_hPipe, piece.data(), cbPiece, &cbRead, nullptr);) {
        for (const char c : piece.substr(0, cbRead)) {
            digits += "0123456789abcdef"[c >> 4 & 15];
            digits += "0123456789abcdef"[c & 15];
        }
    }
    return digits;
}

void CRawClient::Close()
{
    if (m_hPipe != INVALID_HANDLE_VALUE) {
        CloseHandle(m_hPipe);
        m_hPipe = INVALID_HANDLE_VALUE;
    }
}

std::string Exchange(const std::string& bytes)
{
    CRawClient client;
    client.Send(bytes);
    return client.Receive();
}

std::string Number(DWORD dwValue)
{
    return std::string(reinterpret_cast<const char*>(&dwValue), sizeof(dwValue));
}

std::string Counted(const std::string& name)
{
    return Number(static_cast<DWORD>(name.size())) + Wide(name);
}

std::string Fixed(const std::string& name)
{
    std::string bytes = Wide(name);
    bytes.resize(2 * NAME_CAPACITY);
    return bytes;
}

std::string Record()
{
    const CWireRecord record = {0x11111111, 0x22222222, 1, 0xdeadbeef, 0x44444444, 0x00010003, 0x01000000, 2};
    return std::string(reinterpret_cast<const char*>(&record), sizeof(record));
}

std::vector<CRequestExample> GetRequestExamples()
{
    const std::string b = "test_plugin_b.dll";
    const std::string nobody = "nobody.dll";
    const std::string yes(1, '\1');
    const std::string no(1, '\0');
    const std::string gina = "0000000000000000000000000000000000000000" // no pointers
                             "04000100"                                 // 1.4
                             "00000001"                                 // as offered
                             "00000000";
    return {
        {"LUM_DECREASE_PRIORITY", Code(100) + Record() + Counted(b), "CLUMObject::LUMDecreasePriority", "00"},
        {"LUM_INCREASE_PRIORITY", Code(101) + Record() + Counted(b), "CLUMObject::LUMIncreasePriority", "00"},
        {"LUM_GET_PASSTHROUGH_GINA", Code(102), "CLUMObject::LUMGetPassthroughGina", gina},
        {"LUM_IS_GINA_IN_CHAINING_LIST", Code(103) + Counted(nobody), "CLUMObject::LUMIsGinaInChainingList",
         "01"},
        {"LUM_IS_GINA_IN_PLUGIN_LIST", Code(104) + Counted(b), "CLUMObject::LUMIsGinaInPluginList", "00"},
        {"LUM_QUERY_PLUGIN",
         Code(105) + Record() + Record() + Number(1) + Number(2) + Number(3) + Counted("") + Counted(b),
         "CLUMObject::LUMQueryPlugin", "00"},
        {"LUM_QUERY_PLUGIN_INFO", Code(112) + Fixed("standin_gina.dll"), "CLUMObject::LUMQueryPluginInfo",
         "00" + gina},
        {"LUM_ENABLE_GINA", Code(113) + no, "CLUMObject::LUMEnableGina", "01"},
        {"LUM_REMOVE_PLUGIN", Code(114) + Counted(nobody) + no, "CLUMObject::LUMRemovePlugin", "00"},
        {"LUM_REMOVE_PLUGIN", Code(114) + Counted(nobody) + yes, "CLUMGina::LUMRemovePluginDynamic", "01"},
        {"LUM_ADD_PLUGIN", Code(115) + Counted(nobody) + no, "CLUMObject::LUMAddPlugin", "00"},
        {"LUM_ADD_PLUGIN", Code(115) + Counted(nobody) + yes, "CLUMGina::LUMAddPluginDynamic", "01"},
        {"LUM_REMOVE_GINA", Code(116) + Fixed(nobody), "CLUMObject::LUMRemoveGina", "01"},
        {"LUM_VERIFY_LUM_GINA", Code(117), "", "00"},
        {"LUM_ENABLE_ACTIVE_REG", Code(118) + no, "CLUMGina::LUMEnableActiveRegistryMonitoring", "00"},
        {"LUM_GET_LUM_GINA_VERSION", Code(119), "CLUMGina::LUMGetLUMGinaVersion", "vvvvvvvv"},
    };
}
