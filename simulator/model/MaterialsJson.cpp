#include "simulator/model/MaterialsJson.h"

#include "simulator/model/Text.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace vantor::model {
namespace {

using Json = nlohmann::ordered_json;

/// Vacuum's share of B may be written with the first digits of its permeability.
constexpr double vacuumTolerance = 1e-6;

std::string Written(const BhCurve::Point& point) {
    return "[" + FormatNumber(point.h) + ", " + FormatNumber(point.b) + "]";
}

void CheckStep(const JsonReader& json, const BhCurve::Point& before, const BhCurve::Point& point) {
    const double stepH = point.h - before.h;
    const double stepB = point.b - before.b;
    if (!(stepH > 0.0) || !std::isfinite(stepB / stepH / vacuumPermeability)) {
        json.Fail("H must grow from point to point, and " + Written(point) + " follows " + Written(before) +
                  "; sort the points by H and leave out what stands there twice");
    }
    if (!(stepB >= (1.0 - vacuumTolerance) * vacuumPermeability * stepH)) {
        json.Fail("B must grow from point to point by what it grows in vacuum or more, and " + Written(point) +
                  " follows " + Written(before) + "; correct H and B, or let the curve end before");
    }
}

BhCurve BhCurveFromJson(const JsonReader& json) {
    BhCurve curve;
    for (const auto& element : json.Elements()) {
        const auto [h, b] = element.Numbers<2>();
        const BhCurve::Point point{h, b};
        if (!curve.points.empty()) {
            CheckStep(element, curve.points.back(), point);
        } else if (h != 0.0 || b != 0.0) {
            element.Fail("a B-H curve begins with [0, 0], and not with " + Written(point) +
                         "; put that point before the others");
        }
        curve.points.push_back(point);
    }
    if (curve.points.size() < 2) {
        json.Fail("a B-H curve needs two points [H in A/m, B in T] or more, the first one [0, 0]");
    }
    return curve;
}

Json BhCurveToJson(const BhCurve& curve) {
    Json list = Json::array();
    for (const auto& point : curve.points) {
        list.push_back({point.h, point.b});
    }
    return list;
}

} // namespace

Json MaterialsToJson(const MaterialTable& materials) {
    Json list = Json::array();
    for (const auto& [name, material] : materials) {
        Json entry = {{"name", name}, {"relativePermeability", material.relativePermeability}};
        if (material.bhCurve) {
            entry["bhCurve"] = BhCurveToJson(*material.bhCurve);
        }
        if (material.coercivity) {
            entry["coercivityMagnitude"] = material.coercivity->magnitude;
            entry["components"] = material.coercivity->components;
        }
        list.push_back(std::move(entry));
    }
    return list;
}

MaterialTable MaterialsFromJson(const JsonReader& json) {
    MaterialTable table;
    for (const auto& entry : json.Elements()) {
        entry.AllowOnly({"name", "relativePermeability", "bhCurve", "coercivityMagnitude", "components"});
        Material material;
        material.name = entry.At("name").Text();
        PermeabilityFromJson(entry, material);
        if (entry.Has("coercivityMagnitude")) {
            material.coercivity =
                Coercivity{entry.At("coercivityMagnitude").Number(), entry.At("components").Numbers<3>()};
        }
        if (!table.emplace(material.name, material).second) {
            entry.At("name").Fail("a second material named " + Quoted(material.name));
        }
    }
    return table;
}

void PermeabilityFromJson(const JsonReader& entry, Material& material) {
    if (entry.Has("bhCurve")) {
        if (entry.Has("coercivityMagnitude") || entry.Has("components")) {
            entry.At("bhCurve").Fail("a magnet has no B-H curve; leave out either this, or the coercivity and its "
                                     "components");
        }
        material.bhCurve = std::make_shared<const BhCurve>(BhCurveFromJson(entry.At("bhCurve")));
    }
    if (material.bhCurve && !entry.Has("relativePermeability")) {
        material.relativePermeability = material.bhCurve->InitialPermeability();
    } else {
        material.relativePermeability = entry.At("relativePermeability").Number();
    }
}

} // namespace vantor::model
