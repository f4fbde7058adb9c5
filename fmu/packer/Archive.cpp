#include "fmu/packer/Archive.h"

#include "programs/Errors.h"

#include <algorithm>
#include <zip.h>

namespace kinora::fmu {
namespace {

/// What the library takes for a file: bytes in memory.
struct Memory {
    std::string* bytes = nullptr;
    std::size_t place = 0;
};

Memory& Of(voidpf stream) {
    return *static_cast<Memory*>(stream);
}

voidpf Open(voidpf bytes, const void* /*name*/, int /*mode*/) {
    return new Memory{static_cast<std::string*>(bytes)};
}

uLong Read(voidpf /*opaque*/, voidpf stream, void* buffer, uLong size) {
    Memory& memory = Of(stream);
    const std::size_t count = std::min<std::size_t>(size, memory.bytes->size() - memory.place);
    memory.bytes->copy(static_cast<char*>(buffer), count, memory.place);
    memory.place += count;
    return static_cast<uLong>(count);
}

uLong Write(voidpf /*opaque*/, voidpf stream, const void* buffer, uLong size) {
    Memory& memory = Of(stream);
    memory.bytes->resize(std::max<std::size_t>(memory.bytes->size(), memory.place + size));
    memory.bytes->replace(memory.place, size, static_cast<const char*>(buffer), size);
    memory.place += size;
    return size;
}

ZPOS64_T Tell(voidpf /*opaque*/, voidpf stream) {
    return Of(stream).place;
}

long Seek(voidpf /*opaque*/, voidpf stream, ZPOS64_T offset, int origin) {
    Memory& memory = Of(stream);
    const std::size_t begin = origin == ZLIB_FILEFUNC_SEEK_CUR   ? memory.place
                              : origin == ZLIB_FILEFUNC_SEEK_END ? memory.bytes->size()
                                                                 : 0;
    memory.place = begin + static_cast<std::size_t>(offset);
    return memory.place <= memory.bytes->size() ? 0 : -1;
}

int Close(voidpf /*opaque*/, voidpf stream) {
    delete &Of(stream);
    return 0;
}

int HasError(voidpf /*opaque*/, voidpf /*stream*/) {
    return 0;
}

void Require(int result) {
    if (result != ZIP_OK) {
        throw programs::RunError("The archive cannot be made (" + std::to_string(result) + "); is memory left?");
    }
}

} // namespace

Archive::Archive() {
    zlib_filefunc64_def functions = {Open, Read, Write, Tell, Seek, Close, HasError, &m_bytes};
    m_zip = zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &functions);
    Require(m_zip ? ZIP_OK : ZIP_INTERNALERROR);
}

Archive::~Archive() {
    if (m_zip) {
        zipClose(m_zip, nullptr);
    }
}

void Archive::Add(const std::string& name, const std::string& content) {
    zip_fileinfo info = {};
    info.tmz_date = {0, 0, 0, 1, 0, 1980}; // the earliest that the format knows
    constexpr uLong namesAreUtf8 = 1U << 11U;
    constexpr uLong madeByPlain = 20;
    Require(zipOpenNewFileInZip4_64(m_zip, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                    Z_DEFAULT_COMPRESSION, 0, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr, 0,
                                    madeByPlain, namesAreUtf8, 0));
    Require(zipWriteInFileInZip(m_zip, content.data(), static_cast<unsigned>(content.size())));
    Require(zipCloseFileInZip(m_zip));
}

std::string Archive::Bytes() {
    const int result = zipClose(m_zip, nullptr);
    m_zip = nullptr;
    Require(result);
    return m_bytes;
}

} // namespace kinora::fmu
