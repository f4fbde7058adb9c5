#include "scenario/GeometryObjects.h"

#include "scenario/GeometryText.h"
#include "scenario/Text.h"
#include "scenario/UniqueNames.h"

#include <set>
#include <string_view>

namespace kinora::scenario {
namespace {

using Names = std::vector<std::string>;

/// Names in the order in which they come, each once.
class NameList {
public:
    /// @return whether the name is new
    bool Add(const std::string& name) {
        const bool isNew = m_known.insert(name).second;
        if (isNew) {
            m_names.push_back(name);
        }
        return isNew;
    }

    /// All names; nothing when there are none.
    std::optional<Names> Result() const { return m_names.empty() ? std::nullopt : std::make_optional(m_names); }

private:
    Names m_names;
    std::set<std::string> m_known;
};

/// Only what has faces becomes an object.
std::optional<Names> ObjectsOfObj(const std::filesystem::path& file) {
    ObjNames reader(Utf8FromPath(file.stem()));
    NameList names;
    // Whether no face has come since the name changed.
    bool isNew = true;
    const bool isRead = ForEachLine(file, [&](std::string_view line) {
        if (reader.Take(line)) {
            isNew = true;
        } else if (isNew && AfterWord("f", line)) {
            isNew = false;
            names.Add(reader.Current());
        }
    });
    return isRead ? names.Result() : std::nullopt;
}

std::optional<Names> ObjectsOfStl(const std::filesystem::path& file) {
    const std::string defaultName = Utf8FromPath(file.stem());
    if (IsBinaryStl(file)) {
        return Names{defaultName};
    }
    NameList names;
    bool isOpen = false;
    bool isRight = true;
    const auto take = [&](std::string_view line) {
        if (const auto rest = AfterWord("solid", line)) {
            const std::string name(TrimmedLine(*rest));
            isRight = isRight && !isOpen && names.Add(name.empty() ? defaultName : name);
            isOpen = true;
        } else if (AfterWord("endsolid", line)) {
            isRight = isRight && isOpen;
            isOpen = false;
        }
    };
    return ForEachLine(file, take) && isRight && !isOpen ? names.Result() : std::nullopt;
}

} // namespace

std::optional<Names> GeometryObjects(const std::filesystem::path& file) {
    const std::string extension = LowerCase(Utf8FromPath(file.extension()));
    return extension == ".obj" ? ObjectsOfObj(file) : extension == ".stl" ? ObjectsOfStl(file) : std::nullopt;
}

} // namespace kinora::scenario
