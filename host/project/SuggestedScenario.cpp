#include "host/project/SuggestedScenario.h"

#include "scenario/Errors.h"
#include "scenario/Text.h"
#include "scenario/UniqueNames.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <set>

namespace kinora::host {
namespace {

using scenario::InputError;
using scenario::Vector;

/// A length unit as scenarios name it, and in metres.
struct LengthUnit {
    const char* name;
    const char* metres;
};

std::string Quoted(const std::string& text) {
    return nlohmann::json(text).dump();
}

void RequireNameable(const std::string& file, const std::vector<SurveyedObject>& objects) {
    for (std::size_t i = 0; i < objects.size(); ++i) {
        try {
            Quoted(objects[i].name);
        } catch (const nlohmann::json::exception&) {
            throw InputError(
                fmt::format("{}: the name of object {} is no UTF-8, and no scenario can have it; give it a "
                            "name of plain letters.",
                            file, i + 1));
        }
    }
}

/// A guess by the size: files of lengths do not say their unit.
LengthUnit GuessedUnit(const std::string& file, const std::vector<SurveyedObject>& objects) {
    double largest = 0.0;
    for (const SurveyedObject& object : objects) {
        largest = std::max({largest, object.lower.cwiseAbs().maxCoeff(), object.upper.cwiseAbs().maxCoeff()});
    }
    // No place in a scenario is farther than 1000 m.
    constexpr double farthestMillimetres = 1e5;
    if (largest > 1e6 * farthestMillimetres) {
        throw InputError(
            fmt::format("{}: coordinates as large as {:g} are no lengths; export the file again.", file, largest));
    }
    return largest > 1e3 * farthestMillimetres ? LengthUnit{"nm", "1e-9"}
           : largest > farthestMillimetres     ? LengthUnit{"um", "1e-6"}
           : largest < 0.5                     ? LengthUnit{"m", "1"}
                                               : LengthUnit{"mm", "1*mm"};
}

/// Names of bodies, made of those of the objects: letters, digits and underscores, each once.
class BodyNames {
public:
    std::string Of(const std::string& object) {
        constexpr std::size_t longest = 60;
        std::string name = object.substr(0, longest);
        std::replace_if(
            name.begin(), name.end(), [](unsigned char c) { return c > 127 || std::isalnum(c) == 0; }, '_');
        if (name.empty() || std::isalpha(static_cast<unsigned char>(name.front())) == 0) {
            name = "body_" + name;
        }
        std::string unique = name;
        for (int count = 2; !m_taken.insert(scenario::LowerCase(unique)).second; ++count) {
            unique = fmt::format("{}_{}", name, count);
        }
        return unique;
    }

private:
    std::set<std::string> m_taken;
};

std::string Counted(std::size_t count, const char* what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

/// What keeps an object from being a solid; empty for nothing.
std::string FlawOf(const SurveyedObject& object) {
    std::string flaw = object.openEdges == 0 ? "" : Counted(object.openEdges, "open edge");
    if (object.flatFaces > 0) {
        flaw += (flaw.empty() ? "" : ", ") + Counted(object.flatFaces, "face") + " without area";
    }
    return flaw;
}

std::string ClosedText(const SurveyedObject& object) {
    const std::string flaw = FlawOf(object);
    return !flaw.empty() ? "no: " + flaw : object.isInsideOut ? "yes, inside out: a desktop turns it" : "yes";
}

std::string ObjectTable(const std::vector<SurveyedObject>& objects) {
    std::size_t width = 6;
    for (const SurveyedObject& object : objects) {
        width = std::max(width, Quoted(object.name).size());
    }
    std::string table = fmt::format("//   {:<{}}  triangles  {:<30}  closed\n", "object", width, "size along x, y, z");
    for (const SurveyedObject& object : objects) {
        const Vector size = object.upper - object.lower;
        table += fmt::format("//   {:<{}}  {:>9}  {:<30}  {}\n", Quoted(object.name), width, object.triangles,
                             fmt::format("{:.5g} x {:.5g} x {:.5g}", size.x(), size.y(), size.z()), ClosedText(object));
    }
    return table;
}

std::string MaterialLines(const std::vector<SurveyedObject>& objects) {
    std::string lines;
    for (const SurveyedObject& object : objects) {
        lines += fmt::format("    {}: {{ \"name\": \"magnet_1T\", \"direction\": [0, 0, 1] }}{}\n", Quoted(object.name),
                             &object == &objects.back() ? "" : ",");
    }
    return lines;
}

/// A coordinate of a body of some size; 0 for what rounding has left of it.
std::string Coordinate(double value, double size) {
    return std::fabs(value) < 1e-6 * size ? "0" : fmt::format("\"{:.6g}*unit\"", value);
}

std::string BodyLines(const std::vector<SurveyedObject>& objects) {
    BodyNames names;
    std::string lines;
    for (const SurveyedObject& object : objects) {
        const Vector middle = 0.5 * (object.lower + object.upper);
        const double size = (object.upper - object.lower).maxCoeff();
        lines += fmt::format("    {{ \"name\": \"{}\", \"objects\": [{}], \"position\": [{}, {}, {}] }}{}\n",
                             names.Of(object.name), Quoted(object.name), Coordinate(middle.x(), size),
                             Coordinate(middle.y(), size), Coordinate(middle.z(), size),
                             &object == &objects.back() ? "" : ",");
    }
    return lines;
}

constexpr const char* scenarioText = R"(// A scenario to start from: {file}, solved once as it is drawn.
//
{table}//
// Sizes are in the file's own unit of length, which it does not tell. What to change first:
//   units      the unit, here and in "unit" below; {units} is a guess
//   materials  what is no magnet, and which way each magnet points
//   bodies     objects that move together, or touch, are one body
//   joints     what moves, and how
{{
  "title": {title},
  // The simulator. For the desktop itself leave this line out, or name its version.
  "desktop": {{ "version": "Simulator" }},
  "project": {{ "file": {project}, "overwrite": true }},
  "geometry": {{ "file": {geometry}, "units": "{units}" }},
  "parameters": {{
    "unit": {{ "default": "{metres}", "unit": "m", "description": "The unit of length of the geometry, in metres" }}
  }},
  "materials": {{
    // A magnet's direction is from its south to its north pole, along the axes of its body. Iron has a name alone:
    // {{ "name": "steel_soft" }}. The simulator knows magnet_1T, NdFeB_N35, NdFeB_N42, SmCo_28, ferrite_Y30 and steel_soft.
{materials}  }},
  "bodies": [
    // "position" is the origin of a body's axes as drawn, here the middle of its box: torques are about it.
{bodies}  ],
  // What is on no joint stands still. A turn about the z axis, with one body's name in "bodies":
  // "joints": [
  //   {{ "name": "shaft", "type": "hinge", "axis": [0, 0, 1], "point": [0, 0, 0], "bodies": ["{last}"],
  //     "prescribed": {{ "expression": "90*deg*t" }} }}
  // ],
  // One solve. With a joint, 20 steps up to one second: {{ "step": "1/20", "end": 1 }}
  "solver": {{ "step": 1, "end": 0 }},
  "output": {{ "csv": {states} }}
}}
)";

} // namespace

std::string SuggestedScenario(const std::filesystem::path& geometry, const std::vector<SurveyedObject>& objects) {
    const std::string file = geometry.generic_u8string();
    const std::string name = scenario::Utf8FromPath(geometry.filename());
    const std::string stem = scenario::Utf8FromPath(geometry.stem());
    RequireNameable(file, objects);
    const LengthUnit unit = GuessedUnit(file, objects);
    BodyNames names;
    std::string last;
    for (const SurveyedObject& object : objects) {
        last = names.Of(object.name);
    }
    return fmt::format(scenarioText, fmt::arg("file", Quoted(name)), fmt::arg("table", ObjectTable(objects)),
                       fmt::arg("title", Quoted(name + " as drawn")), fmt::arg("project", Quoted(stem + ".vantor")),
                       fmt::arg("geometry", Quoted(file)), fmt::arg("units", unit.name),
                       fmt::arg("metres", unit.metres), fmt::arg("materials", MaterialLines(objects)),
                       fmt::arg("bodies", BodyLines(objects)), fmt::arg("last", last),
                       fmt::arg("states", Quoted(stem + ".states.csv")));
}

std::vector<std::string> GeometryWarnings(const std::filesystem::path& geometry,
                                          const std::vector<SurveyedObject>& objects) {
    std::vector<std::string> warnings;
    for (const SurveyedObject& object : objects) {
        if (!object.IsClosed()) {
            warnings.push_back(fmt::format("{}: the object \"{}\" is not closed ({}), and no desktop takes it for a "
                                           "solid; repair it where it was drawn.",
                                           scenario::Utf8FromPath(geometry), object.name, FlawOf(object)));
        }
    }
    return warnings;
}

} // namespace kinora::host
