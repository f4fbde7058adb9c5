#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fake {

/// Reads what a 64-bit executable or DLL says about itself.
class PortableExecutable {
public:
    /// @param bytes  the whole file
    explicit PortableExecutable(std::string bytes);

    const std::string& Bytes() const { return m_bytes; }
    bool Is64Bit() const;
    bool HasDynamicBase() const;
    bool HasHighEntropy() const;
    bool HasNoExecute() const;
    bool HasRelocations() const;
    std::vector<std::string> Exports() const;
    /// Names of the DLLs that the loader brings in.
    std::vector<std::string> Imports() const;
    std::vector<std::string> DelayedImports() const;
    std::vector<std::string> ImportedFunctions() const;

private:
    template <typename Number>
    Number Read(std::size_t offset) const;
    std::string ReadText(std::size_t offset) const;
    /// Place in the file of an address in the loaded image.
    std::size_t OffsetOf(std::uint32_t address) const;
    /// Address of a data directory; 0 for none.
    std::uint32_t Directory(unsigned index) const;
    std::vector<std::string> DllNames(unsigned directory, std::size_t entrySize, std::size_t nameOffset) const;
    std::uint16_t Characteristics() const;

    std::string m_bytes;
    std::size_t m_header = 0;
};

} // namespace fake
