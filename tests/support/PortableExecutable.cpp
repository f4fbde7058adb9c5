#include "tests/support/PortableExecutable.h"

#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <utility>

namespace fake {

PortableExecutable::PortableExecutable(std::string bytes) : m_bytes(std::move(bytes)) {
    m_header = static_cast<std::size_t>(Read<LONG>(offsetof(IMAGE_DOS_HEADER, e_lfanew)));
    if (Read<DWORD>(m_header) != IMAGE_NT_SIGNATURE) {
        throw std::runtime_error("not an executable file");
    }
}

template <typename Number>
Number PortableExecutable::Read(std::size_t offset) const {
    if (offset + sizeof(Number) > m_bytes.size()) {
        throw std::runtime_error("the executable file ends too early");
    }
    Number number{};
    std::memcpy(&number, m_bytes.data() + offset, sizeof number);
    return number;
}

std::string PortableExecutable::ReadText(std::size_t offset) const {
    return m_bytes.substr(offset, m_bytes.find('\0', offset) - offset);
}

std::size_t PortableExecutable::OffsetOf(std::uint32_t address) const {
    const auto header = Read<IMAGE_FILE_HEADER>(m_header + offsetof(IMAGE_NT_HEADERS64, FileHeader));
    const std::size_t sections = m_header + offsetof(IMAGE_NT_HEADERS64, OptionalHeader) + header.SizeOfOptionalHeader;
    for (std::size_t index = 0; index < header.NumberOfSections; ++index) {
        const auto section = Read<IMAGE_SECTION_HEADER>(sections + index * sizeof(IMAGE_SECTION_HEADER));
        if (address >= section.VirtualAddress && address - section.VirtualAddress < section.SizeOfRawData) {
            return section.PointerToRawData + (address - section.VirtualAddress);
        }
    }
    throw std::runtime_error("the executable file has an address outside of its sections");
}

std::uint32_t PortableExecutable::Directory(unsigned index) const {
    return Read<IMAGE_NT_HEADERS64>(m_header).OptionalHeader.DataDirectory[index].VirtualAddress;
}

std::uint16_t PortableExecutable::Characteristics() const {
    return Read<IMAGE_NT_HEADERS64>(m_header).OptionalHeader.DllCharacteristics;
}

bool PortableExecutable::Is64Bit() const {
    const auto header = Read<IMAGE_NT_HEADERS64>(m_header);
    return header.FileHeader.Machine == IMAGE_FILE_MACHINE_AMD64 &&
           header.OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR64_MAGIC;
}

bool PortableExecutable::HasDynamicBase() const {
    return (Characteristics() & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE) != 0;
}

bool PortableExecutable::HasHighEntropy() const {
    return (Characteristics() & 0x0020) != 0;
}

bool PortableExecutable::HasNoExecute() const {
    return (Characteristics() & IMAGE_DLLCHARACTERISTICS_NX_COMPAT) != 0;
}

bool PortableExecutable::HasRelocations() const {
    const bool areStripped =
        (Read<IMAGE_NT_HEADERS64>(m_header).FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED) != 0;
    return !areStripped && Directory(IMAGE_DIRECTORY_ENTRY_BASERELOC) != 0;
}

std::vector<std::string> PortableExecutable::Exports() const {
    std::vector<std::string> names;
    const std::uint32_t address = Directory(IMAGE_DIRECTORY_ENTRY_EXPORT);
    if (address == 0) {
        return names;
    }
    const auto table = Read<IMAGE_EXPORT_DIRECTORY>(OffsetOf(address));
    for (std::size_t index = 0; index < table.NumberOfNames; ++index) {
        const auto name = Read<std::uint32_t>(OffsetOf(table.AddressOfNames) + index * sizeof(std::uint32_t));
        names.push_back(ReadText(OffsetOf(name)));
    }
    return names;
}

std::vector<std::string> PortableExecutable::DllNames(unsigned directory, std::size_t entrySize,
                                                      std::size_t nameOffset) const {
    std::vector<std::string> names;
    if (Directory(directory) == 0) {
        return names;
    }
    for (std::size_t entry = OffsetOf(Directory(directory)); Read<std::uint32_t>(entry + nameOffset) != 0;
         entry += entrySize) {
        names.push_back(ReadText(OffsetOf(Read<std::uint32_t>(entry + nameOffset))));
    }
    return names;
}

std::vector<std::string> PortableExecutable::Imports() const {
    return DllNames(IMAGE_DIRECTORY_ENTRY_IMPORT, sizeof(IMAGE_IMPORT_DESCRIPTOR),
                    offsetof(IMAGE_IMPORT_DESCRIPTOR, Name));
}

std::vector<std::string> PortableExecutable::DelayedImports() const {
    constexpr std::size_t entrySize = 32;
    constexpr std::size_t nameOffset = 4;
    return DllNames(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT, entrySize, nameOffset);
}

std::vector<std::string> PortableExecutable::ImportedFunctions() const {
    std::vector<std::string> names;
    std::size_t entry = OffsetOf(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
    for (auto table = Read<IMAGE_IMPORT_DESCRIPTOR>(entry); table.Name != 0;
         table = Read<IMAGE_IMPORT_DESCRIPTOR>(entry += sizeof(IMAGE_IMPORT_DESCRIPTOR))) {
        std::size_t thunk = OffsetOf(table.OriginalFirstThunk);
        for (auto value = Read<std::uint64_t>(thunk); value != 0; value = Read<std::uint64_t>(thunk += 8)) {
            if ((value & IMAGE_ORDINAL_FLAG64) == 0) {
                names.push_back(ReadText(OffsetOf(static_cast<std::uint32_t>(value)) + sizeof(WORD)));
            }
        }
    }
    return names;
}

} // namespace fake
