#pragma once

#include "capi/Error.h"
#include "interface/IKinoraVeltrixInterface.h"

#include <cstddef>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace kinora::capi {

/// The records of one array, which a caller may have made larger: a later version has more fields.
template <class Record>
class Records {
public:
    /// @param what  names the array in errors
    /// @throws Error  KV_BAD_ARGUMENT: it is null and has elements, or their sizes are not what they should be
    Records(Record* first, std::size_t count, const char* what) : m_first(first) {
        if (count == 0) {
            return;
        }
        if (!first) {
            throw Error(KV_BAD_ARGUMENT, std::string(what) + " are a null pointer, and there are to be some.",
                        "Hand over the array, or the count 0.");
        }
        m_size = first->size;
        for (std::size_t i = 0; i < count; ++i) {
            CheckSize(i, what);
        }
    }

    Record& operator[](std::size_t index) const {
        using Byte = std::conditional_t<std::is_const_v<Record>, const char, char>;
        return *reinterpret_cast<Record*>(reinterpret_cast<Byte*>(m_first) + index * m_size);
    }

private:
    void CheckSize(std::size_t index, const char* what) const {
        constexpr std::size_t largest = 65536; // what nobody has set is mostly larger
        const bool fits = m_size >= sizeof(Record) && m_size <= largest && m_size % alignof(Record) == 0;
        if (!fits || (*this)[index].size != m_size) {
            throw Error(KV_BAD_ARGUMENT,
                        std::string(what) + "[" + std::to_string(index) + "] has the size " +
                            std::to_string(fits ? (*this)[index].size : m_size) + ".",
                        "Set \"size\" of every element to sizeof the record, at least " +
                            std::to_string(sizeof(Record)) + " bytes.");
        }
    }

    Record* m_first;
    std::size_t m_size = sizeof(Record);
};

using Transform = IKinoraVeltrixInterface::Transform;
using Group = IKinoraVeltrixInterface::Group;
using Material = IKinoraVeltrixInterface::Material;

/// @return the bodies as they are drawn; rows of a rotation are the body's axes
/// @throws Error  KV_BAD_ARGUMENT, KV_BAD_TEXT: with the body's name
std::vector<Group> ReadGroups(const kv_group* groups, std::size_t count);

/// @return the material of each object, directions as they came
/// @throws Error  as above
std::map<std::string, Material> ReadMaterials(const kv_material* materials, std::size_t count);

/// @return the poses; rows of a rotation are the body's axes
/// @throws Error  as above
std::vector<Transform> ReadPoses(const kv_pose* poses, std::size_t count);

} // namespace kinora::capi
