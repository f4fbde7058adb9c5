#include "capi/Records.h"

#include "capi/TextConversion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

namespace kinora::capi {
namespace {

bool IsLetter(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

std::string InLowerCase(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
    });
    return name;
}

/// Names of bodies, which become parts of other names and of files.
class BodyNames {
public:
    /// @throws Error  the name may not be, or is there already
    std::string Read(const char* text, const std::string& place) {
        std::string name = ToAnsi(text, place);
        const bool isName =
            !name.empty() && IsLetter(name.front()) &&
            std::all_of(name.begin(), name.end(), [](char c) { return IsLetter(c) || IsDigit(c) || c == '_'; });
        if (!isName) {
            throw Error(KV_BAD_ARGUMENT, place + " is \"" + text + "\".",
                        "A body's name is a letter followed by letters, digits and underscores.");
        }
        if (!m_names.insert(InLowerCase(name)).second) {
            throw Error(KV_BAD_ARGUMENT, place + " is \"" + name + "\", which another body has.",
                        "Give every body a name of its own, also without regard to upper and lower case.");
        }
        return name;
    }

private:
    std::set<std::string> m_names;
};

std::string PlaceOf(const char* array, std::size_t index, const char* field) {
    return std::string(array) + "[" + std::to_string(index) + "]." + field;
}

template <std::size_t count>
void CopyFinite(const double (&from)[count], double (&to)[count], const std::string& what) {
    if (!std::all_of(std::begin(from), std::end(from), [](double number) { return std::isfinite(number); })) {
        throw Error(KV_BAD_ARGUMENT, what + " is not finite.", "Look where its numbers come from.");
    }
    std::copy(std::begin(from), std::end(from), to);
}

/// How far a matrix may be from a rotation: numbers of single precision are.
constexpr double rotationTolerance = 1e-6;

bool IsRotation(const double (&m)[9]) {
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j <= i; ++j) {
            const double product = m[3 * i] * m[3 * j] + m[3 * i + 1] * m[3 * j + 1] + m[3 * i + 2] * m[3 * j + 2];
            if (!(std::fabs(product - (i == j ? 1.0 : 0.0)) <= rotationTolerance)) {
                return false;
            }
        }
    }
    const double determinant =
        m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) + m[2] * (m[3] * m[7] - m[4] * m[6]);
    return determinant > 0.0;
}

/// @param record  a kv_group or a kv_pose
template <class Record>
Transform ReadPose(const Record& record, std::string name) {
    Transform pose;
    const std::string body = "body \"" + name + "\": ";
    CopyFinite(record.position, pose.translation, body + "its position");
    CopyFinite(record.rotation, pose.rotation, body + "its rotation");
    if (!IsRotation(pose.rotation)) {
        throw Error(KV_BAD_ARGUMENT, body + "its rotation is no rotation.",
                    "Hand over nine numbers row by row: the body's axes x, y, z, of length 1, at right angles and "
                    "right-handed.");
    }
    pose.name = std::move(name);
    return pose;
}

std::vector<std::string> ReadObjects(const kv_group& group, const std::string& place) {
    if (!group.objects && group.object_count > 0) {
        throw Error(KV_BAD_ARGUMENT, place + " is a null pointer.", "Hand over the names, or the count 0.");
    }
    std::vector<std::string> objects;
    objects.reserve(group.object_count);
    for (std::size_t i = 0; i < group.object_count; ++i) {
        objects.push_back(ToAnsi(group.objects[i], place + "[" + std::to_string(i) + "]"));
    }
    return objects;
}

void CheckOwners(const std::vector<Group>& groups) {
    std::map<std::string, std::string> owners;
    for (const Group& group : groups) {
        for (const std::string& object : group.objects) {
            const auto [owner, isNew] = owners.emplace(object, group.transform.name);
            if (!isNew) {
                throw Error(KV_BAD_ARGUMENT,
                            "the object \"" + ToUtf8(object) + "\" belongs to body \"" + owner->second +
                                "\" and to body \"" + group.transform.name + "\".",
                            "Name every object once.");
            }
        }
    }
}

} // namespace

std::vector<Group> ReadGroups(const kv_group* groups, std::size_t count) {
    const Records<const kv_group> records(groups, count, "groups");
    std::vector<Group> result;
    BodyNames names;
    for (std::size_t i = 0; i < count; ++i) {
        Group group;
        group.transform = ReadPose(records[i], names.Read(records[i].body, PlaceOf("groups", i, "body")));
        group.objects = ReadObjects(records[i], PlaceOf("groups", i, "objects"));
        result.push_back(std::move(group));
    }
    CheckOwners(result);
    return result;
}

std::map<std::string, Material> ReadMaterials(const kv_material* materials, std::size_t count) {
    const Records<const kv_material> records(materials, count, "materials");
    std::map<std::string, Material> result;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string object = ToAnsi(records[i].object, PlaceOf("materials", i, "object"));
        Material material;
        material.name = ToAnsi(records[i].material, PlaceOf("materials", i, "material"));
        CopyFinite(records[i].coercivity_direction, material.coercivityDirection,
                   PlaceOf("materials", i, "coercivity_direction"));
        if (!result.emplace(object, std::move(material)).second) {
            throw Error(KV_BAD_ARGUMENT, "the object \"" + ToUtf8(object) + "\" has two materials.",
                        "Give every object one material.");
        }
    }
    return result;
}

std::vector<Transform> ReadPoses(const kv_pose* poses, std::size_t count) {
    const Records<const kv_pose> records(poses, count, "poses");
    std::vector<Transform> result;
    result.reserve(count);
    BodyNames names;
    for (std::size_t i = 0; i < count; ++i) {
        result.push_back(ReadPose(records[i], names.Read(records[i].body, PlaceOf("poses", i, "body"))));
    }
    return result;
}

} // namespace kinora::capi
