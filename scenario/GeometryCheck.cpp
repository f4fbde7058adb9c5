#include "scenario/GeometryCheck.h"

#include "scenario/GeometryObjects.h"
#include "scenario/Text.h"
#include "scenario/UniqueNames.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace kinora::scenario {
namespace {

using Names = std::vector<std::string>;

/// Length units that the simulator knows, and other desktops too as a rule. Letter case does not count.
const Names lengthUnits = {"nm", "um",        "micron", "mm",  "millimeter", "cm",   "centimeter", "dm",   "m", "meter",
                           "km", "kilometer", "uin",    "mil", "in",         "inch", "ft",         "foot", "yd"};

bool Contains(const Names& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// The first dozen of a list of names.
std::string Listed(const Names& names) {
    constexpr std::size_t most = 12;
    std::string list;
    for (std::size_t i = 0; i < std::min(names.size(), most); ++i) {
        list += fmt::format("{}\"{}\"", i == 0 ? "" : ", ", names[i]);
    }
    return names.size() > most ? fmt::format("{} and {} more", list, names.size() - most) : list;
}

/// Says what stops a run, or warns where it need not.
void Tell(const Node& node, const std::string& text, bool stops, Scenario& scenario) {
    if (stops) {
        node.Report(text);
    } else {
        scenario.warnings.push_back(node.Line(text));
    }
}

void CheckUnits(const Node& node, Purpose purpose, Scenario& scenario) {
    const std::string unit = LowerCase(node.Text());
    if (Contains(lengthUnits, unit)) {
        return;
    }
    const std::string text = fmt::format("\"{}\" is not one of the length units {}.{}", node.Text(),
                                         fmt::join(lengthUnits, ", "), Suggestion(unit, lengthUnits));
    // Other desktops may know more units.
    const bool isSimulator = LowerCase(scenario.desktop.version) == "simulator";
    Tell(node, text, purpose == Purpose::Run && isSimulator, scenario);
}

/// Reports objects of bodies and materials that the geometry file does not have: with them no model can be built.
void CheckObjects(const Node& root, const Names& inGeometry, Purpose purpose, Scenario& scenario) {
    const std::string geometryFile = Utf8FromPath(scenario.geometryFile.filename());
    const auto check = [&](const Node& node, const std::string& object) {
        if (!Contains(inGeometry, object)) {
            Tell(node,
                 fmt::format("there is no object \"{}\" in {}, which has {}.{}", object, geometryFile,
                             Listed(inGeometry), Suggestion(object, inGeometry)),
                 purpose == Purpose::Run, scenario);
        }
    };
    for (const Node& body : root.At("bodies").Items()) {
        for (const Node& object : body.At("objects").Items()) {
            check(object, object.Text());
        }
    }
    if (root.Has("materials")) {
        for (const std::string& object : root.At("materials").Keys()) {
            check(root.At("materials").At(object), object);
        }
    }
}

Names ObjectsOfBodies(const Scenario& scenario) {
    Names objects;
    for (const Body& body : scenario.bodies) {
        objects.insert(objects.end(), body.objects.begin(), body.objects.end());
    }
    return objects;
}

/// Warns of materials whose object no body has.
/// @return these objects, as far as they may be misspelt
Names WarnOfStrangers(const Node& materials, const std::optional<Names>& inGeometry, Scenario& scenario) {
    const Names objects = ObjectsOfBodies(scenario);
    Names strangers;
    for (const auto& [object, material] : scenario.materials) {
        if (Contains(objects, object)) {
            continue;
        }
        std::string text = fmt::format("no body has an object \"{}\".", object);
        if (inGeometry && Contains(*inGeometry, object)) {
            text += " The geometry has it: it stands still there, and no loads on it are recorded.";
        } else {
            strangers.push_back(object);
            text += Suggestion(object, objects);
        }
        scenario.warnings.push_back(materials.At(object).Line(text));
    }
    return strangers;
}

/// Warns of objects of bodies that have no material.
/// @param strangers  the materials' objects one of which may be meant
void WarnOfBareObjects(const Node& bodies, const Names& strangers, Scenario& scenario) {
    for (const Node& body : bodies.Items()) {
        for (const Node& object : body.At("objects").Items()) {
            if (scenario.materials.count(object.Text()) == 0) {
                scenario.warnings.push_back(object.Line(fmt::format(
                    "the object \"{}\" has no material and feels no force, unless the geometry file gives it one: "
                    "\"materials\" does not name it.{}",
                    object.Text(), Suggestion(object.Text(), strangers))));
            }
        }
    }
}

} // namespace

void CheckGeometry(const Node& root, Purpose purpose, Scenario& scenario) {
    CheckUnits(root.At("geometry").At("units"), purpose, scenario);
    const std::optional<Names> inGeometry = GeometryObjects(scenario.geometryFile);
    if (inGeometry) {
        CheckObjects(root, *inGeometry, purpose, scenario);
    }
    Names strangers;
    if (root.Has("materials")) {
        strangers = WarnOfStrangers(root.At("materials"), inGeometry, scenario);
    }
    WarnOfBareObjects(root.At("bodies"), strangers, scenario);
}

} // namespace kinora::scenario
