#pragma once

#include <cstring>
#include <string>

/// The bytes of a file are not a DLL, or not one of this system.
struct CBadImage
{
};

/// Reads the bytes of a file that may hold anything. Reading outside of it throws CBadImage.
class CImageBytes
{
public:
    /// The bytes must outlive the object.
    explicit CImageBytes(const std::string& bytes) : m_bytes(bytes) {}

    static void Require(bool bGood)
    {
        if (!bGood) {
            throw CBadImage();
        }
    }

    template <typename Value>
    Value Get(std::size_t nOffset) const
    {
        Value value;
        Require(nOffset <= m_bytes.size() && sizeof(value) <= m_bytes.size() - nOffset);
        std::memcpy(&value, m_bytes.data() + nOffset, sizeof(value));
        return value;
    }

    /// A name up to its terminator. Without a limit, a damaged file whose names all lead to one long run of
    /// bytes would fill the memory.
    std::string GetName(std::size_t nOffset) const
    {
        constexpr std::size_t MAX_NAME = 4096;
        Require(nOffset < m_bytes.size());
        const std::size_t nEnd = m_bytes.find('\0', nOffset);
        Require(nEnd != std::string::npos && nEnd - nOffset <= MAX_NAME);
        return m_bytes.substr(nOffset, nEnd - nOffset);
    }

    std::size_t GetSize() const { return m_bytes.size(); }

private:
    const std::string& m_bytes;
};
