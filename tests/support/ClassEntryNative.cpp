#include "platform/ClassTable.h"
#include "tests/support/ClassEntry.h"

#include <cstdint>
#include <cstdlib>

namespace fake {
namespace {

CLSID NewClassId() {
    static std::uint32_t last = 0;
    return {0x7E57C1A5,
            0,
            0,
            {0, 0, 0, 0, static_cast<std::uint8_t>(++last >> 24U), static_cast<std::uint8_t>(last >> 16U),
             static_cast<std::uint8_t>(last >> 8U), static_cast<std::uint8_t>(last)}};
}

} // namespace

struct ClassEntry::Place {
    platform::RegisteredClass row;
};

ClassEntry::ClassEntry(const std::wstring& progId)
    : m_classId(NewClassId()), m_place(new Place{{progId, m_classId, FindClassObject}}) {}

ClassEntry::~ClassEntry() = default;

void SetEnvironment(const char* name, const char* value) {
    value ? setenv(name, value, 1) : unsetenv(name);
}

} // namespace fake
