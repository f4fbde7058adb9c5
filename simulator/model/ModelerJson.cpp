#include "simulator/model/ModelerJson.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <set>

namespace vantor::model {
namespace {

using Json = nlohmann::ordered_json;

/// Vertices as x y z x y z ..., triangles as corner numbers, both flat.
Json MeshToJson(const Mesh& mesh) {
    Json vertices = Json::array(), triangles = Json::array();
    for (const auto& vertex : mesh.vertices) {
        for (const double coordinate : vertex) {
            vertices.push_back(coordinate);
        }
    }
    for (const auto& triangle : mesh.triangles) {
        for (const int corner : triangle) {
            triangles.push_back(corner);
        }
    }
    return {{"vertices", std::move(vertices)}, {"triangles", std::move(triangles)}};
}

Mesh MeshFromJson(const JsonReader& json) {
    json.AllowOnly({"vertices", "triangles"});
    const std::vector<double> coordinates = json.At("vertices").AllNumbers();
    const std::vector<double> corners = json.At("triangles").AllNumbers();
    if (coordinates.size() % 3 != 0 || corners.size() % 3 != 0) {
        json.Fail("vertices and triangles need three numbers each");
    }
    Mesh mesh;
    for (std::size_t i = 0; i < coordinates.size(); i += 3) {
        mesh.vertices.emplace_back(coordinates[i], coordinates[i + 1], coordinates[i + 2]);
    }
    for (std::size_t i = 0; i < corners.size(); i += 3) {
        std::array<int, 3> triangle{};
        for (std::size_t k = 0; k < 3; ++k) {
            const double corner = corners[i + k];
            if (!(corner >= 0.0 && corner < static_cast<double>(mesh.vertices.size()))) {
                json.At("triangles").Fail("vertex " + FormatNumber(corner) + " does not exist");
            }
            triangle[k] = static_cast<int>(corner);
        }
        mesh.triangles.push_back(triangle);
    }
    try {
        MakeSolid(mesh);
    } catch (const MeshError& error) {
        json.Fail(error.what());
    }
    return mesh;
}

std::string FingerprintText(std::uint64_t fingerprint) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), fingerprint, 16);
    return std::string(digits.data(), end.ptr);
}

std::uint64_t FingerprintFromText(const JsonReader& json) {
    const std::string text = json.Text();
    std::uint64_t fingerprint = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), fingerprint, 16);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        json.Fail("up to 16 hexadecimal digits are needed");
    }
    return fingerprint;
}

Json ObjectToJson(const GeometryObject& object) {
    return {
        {"name", object.name},
        {"material", object.material},
        {"coordinateSystem", object.coordinateSystem},
        {"orientation", object.orientation},
        {"solveInside", object.solveInside},
        {"model", object.isModel},
        {"imported", FingerprintText(object.importFingerprint)},
        {"mesh", MeshToJson(*object.mesh)},
    };
}

GeometryObject ObjectFromJson(const JsonReader& json) {
    json.AllowOnly({"name", "material", "coordinateSystem", "orientation", "solveInside", "model", "imported", "mesh"});
    GeometryObject object;
    object.name = json.At("name").Text();
    object.material = json.At("material").Text();
    object.coordinateSystem = json.At("coordinateSystem").Text();
    object.orientation = json.At("orientation").Text();
    object.solveInside = json.At("solveInside").Flag();
    object.isModel = json.At("model").Flag();
    object.importFingerprint = FingerprintFromText(json.At("imported"));
    object.mesh = std::make_shared<Mesh>(MeshFromJson(json.At("mesh")));
    return object;
}

std::array<std::string, 3> ThreeTexts(const JsonReader& json) {
    const std::vector<std::string> texts = json.Texts();
    if (texts.size() != 3) {
        json.Fail("3 texts are needed");
    }
    return {texts[0], texts[1], texts[2]};
}

Json FrameToJson(const CoordinateSystem& system) {
    return {
        {"name", system.name},   {"reference", system.reference}, {"origin", system.origin},
        {"xAxis", system.xAxis}, {"yAxis", system.yAxis},
    };
}

CoordinateSystem FrameFromJson(const JsonReader& json) {
    json.AllowOnly({"name", "reference", "origin", "xAxis", "yAxis"});
    CoordinateSystem system;
    system.name = json.At("name").Text();
    system.reference = json.At("reference").Text();
    system.origin = ThreeTexts(json.At("origin"));
    system.xAxis = ThreeTexts(json.At("xAxis"));
    system.yAxis = ThreeTexts(json.At("yAxis"));
    return system;
}

Json RegionToJson(const Region& region) {
    return {
        {"name", region.name},
        {"material", region.material},
        {"color", region.color},
        {"transparency", region.transparency},
        {"solveInside", region.solveInside},
        {"coordinateSystem", region.coordinateSystem},
        {"orientation", region.orientation},
        {"model", region.isModel},
        {"padding", region.padding},
    };
}

Region RegionFromJson(const JsonReader& json) {
    json.AllowOnly({"name", "material", "color", "transparency", "solveInside", "coordinateSystem", "orientation",
                    "model", "padding"});
    Region region;
    region.name = json.At("name").Text();
    region.material = json.At("material").Text();
    region.color = json.At("color").Text();
    region.transparency = json.At("transparency").Number();
    region.solveInside = json.At("solveInside").Flag();
    region.coordinateSystem = json.At("coordinateSystem").Text();
    region.orientation = json.At("orientation").Text();
    region.isModel = json.At("model").Flag();
    const std::vector<std::string> padding = json.At("padding").Texts();
    if (padding.size() != region.padding.size()) {
        json.At("padding").Fail("6 texts are needed");
    }
    std::copy(padding.begin(), padding.end(), region.padding.begin());
    return region;
}

/// What one list of a file refers to must stand in another.
class References {
public:
    void AddFrame(const JsonReader& json, const std::string& name) { AddTo(m_frames, json, name, "coordinate system"); }

    void AddObject(const JsonReader& json, const std::string& name) { AddTo(m_objects, json, name, "object"); }

    void NeedFrame(const JsonReader& json, const std::string& name) const {
        if (name != globalFrame && m_frames.count(name) == 0) {
            json.Fail("there is no coordinate system " + Quoted(name) + " above");
        }
    }

private:
    static void AddTo(std::set<std::string>& names, const JsonReader& json, const std::string& name, const char* kind) {
        if (name.empty() || !names.insert(name).second) {
            json.Fail(std::string(kind) + " names must be unique and not empty: " + Quoted(name));
        }
    }

    std::set<std::string> m_frames, m_objects;
};

} // namespace

Json ModelerToJson(const Modeler& modeler) {
    Json json;
    json["units"] = modeler.Units();
    json["workingFrame"] = modeler.WorkingFrame();
    json["coordinateSystems"] = Json::array();
    for (const auto& system : modeler.CoordinateSystems()) {
        json["coordinateSystems"].push_back(FrameToJson(system));
    }
    if (modeler.OuterRegion()) {
        json["region"] = RegionToJson(*modeler.OuterRegion());
    }
    json["objects"] = Json::array();
    for (const auto& object : modeler.Objects()) {
        json["objects"].push_back(ObjectToJson(object));
    }
    return json;
}

void ModelerFromJson(const JsonReader& json, Modeler& modeler) {
    json.AllowOnly({"units", "workingFrame", "coordinateSystems", "region", "objects"});
    References references;
    std::vector<CoordinateSystem> systems;
    for (const auto& entry : json.At("coordinateSystems").Elements()) {
        systems.push_back(FrameFromJson(entry));
        references.NeedFrame(entry.At("reference"), systems.back().reference);
        references.AddFrame(entry.At("name"), systems.back().name);
    }
    const std::string workingFrame = json.At("workingFrame").Text();
    references.NeedFrame(json.At("workingFrame"), workingFrame);
    std::optional<Region> region;
    if (json.Has("region")) {
        region = RegionFromJson(json.At("region"));
        references.AddObject(json.At("region").At("name"), region->name);
    }
    std::vector<GeometryObject> objects;
    for (const auto& entry : json.At("objects").Elements()) {
        objects.push_back(ObjectFromJson(entry));
        references.AddObject(entry.At("name"), objects.back().name);
        references.NeedFrame(entry.At("coordinateSystem"), objects.back().coordinateSystem);
        references.NeedFrame(entry.At("orientation"), objects.back().orientation);
    }
    const std::string units = json.At("units").Text();
    if (!FindModelUnit(units)) {
        json.At("units").Fail("unknown model unit " + Quoted(units));
    }
    modeler.Restore(units, std::move(objects), std::move(systems), std::move(region), workingFrame);
}

} // namespace vantor::model
