#include "report/core/MaterialKind.h"

#include "scenario/UniqueNames.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kinora::report {
namespace {

/// How names of materials begin, in lower case.
constexpr std::array<std::string_view, 5> magnetNames = {"magnet", "ndfeb", "smco", "alnico", "ferrite"};
constexpr std::array<std::string_view, 11> otherNames = {
    "vacuum", "air", "copper", "aluminum", "aluminium", "brass", "bronze", "titanium", "plastic", "ceramic", "glass"};

template <std::size_t Count>
bool BeginsAsOne(const std::string& name, const std::array<std::string_view, Count>& beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&name](std::string_view beginning) { return name.rfind(beginning, 0) == 0; });
}

bool HasDirectionSomewhere(const scenario::Scenario& scenario, const std::string& material) {
    return std::any_of(scenario.materials.begin(), scenario.materials.end(), [&](const auto& entry) {
        return entry.second.name == material && scenario.undirected.count(entry.first) == 0;
    });
}

} // namespace

MaterialKind KindOf(const scenario::Scenario& scenario, const std::string& object) {
    const std::string& material = scenario.materials.at(object).name;
    const std::string name = scenario::LowerCase(material);
    if (HasDirectionSomewhere(scenario, material) || BeginsAsOne(name, magnetNames)) {
        return MaterialKind::Magnet;
    }
    return BeginsAsOne(name, otherNames) ? MaterialKind::Other : MaterialKind::Iron;
}

} // namespace kinora::report
