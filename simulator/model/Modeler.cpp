#include "simulator/model/Modeler.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

#include <algorithm>

namespace vantor::model {
namespace {

constexpr int deepestFrame = 50;

/// The mesh with every vertex taken elsewhere.
template <typename Map>
std::shared_ptr<const Mesh> Mapped(const Mesh& mesh, Map map) {
    auto mapped = std::make_shared<Mesh>();
    mapped->triangles = mesh.triangles;
    mapped->vertices.reserve(mesh.vertices.size());
    for (const Eigen::Vector3d& vertex : mesh.vertices) {
        mapped->vertices.push_back(map(vertex));
    }
    return mapped;
}

std::shared_ptr<const Mesh> Scaled(const Mesh& mesh, double factor) {
    return Mapped(mesh, [factor](const Eigen::Vector3d& vertex) -> Eigen::Vector3d { return vertex * factor; });
}

/// A solid of a file in metres, ready to be added.
GeometryObject ObjectFrom(const ImportedSolid& solid, double metresPerUnit, bool useMaterial) {
    GeometryObject object;
    object.name = solid.name;
    object.mesh = Scaled(solid.mesh, metresPerUnit);
    if (useMaterial && !solid.material.empty()) {
        object.material = solid.material;
    }
    object.importFingerprint = Fingerprint(*object.mesh);
    return object;
}

Eigen::Vector3d Direction(const std::array<std::string, 3>& expressions, const NameLookup& lookup,
                          const char* axisName) {
    Eigen::Vector3d direction;
    for (std::size_t i = 0; i < 3; ++i) {
        const Quantity component = Evaluate(expressions[i], lookup);
        if (!component.dimension.IsNumber() && !component.dimension.IsLength()) {
            throw ExpressionError(Quoted(expressions[i]) + " is " + Describe(component.dimension) +
                                  " where a component of the " + axisName + " is needed");
        }
        direction[static_cast<Eigen::Index>(i)] = component.value;
    }
    if (!(direction.norm() > 1e-12)) {
        throw ExpressionError(std::string("the ") + axisName + " has no direction");
    }
    return direction.normalized();
}

} // namespace

void Modeler::SetUnits(const std::string& units, bool rescale) {
    const auto size = FindModelUnit(units);
    if (!size) {
        throw BadValue("unknown model unit " + Quoted(units) +
                       "; known are um, mm, cm, dm, m, meter, km, mil, in, ft, yd");
    }
    if (rescale) {
        for (auto& object : m_objects) {
            object.mesh = Scaled(*object.mesh, *size / m_metresPerUnit);
        }
    }
    m_units = units;
    m_metresPerUnit = *size;
}

std::vector<std::string> Modeler::Import(const ImportedGeometry& geometry, bool useMaterials) {
    std::vector<GeometryObject> additions;
    std::vector<std::string> kept;
    for (const auto& solid : geometry.solids) {
        GeometryObject object = ObjectFrom(solid, m_metresPerUnit, useMaterials);
        if (IsRegion(object.name)) {
            throw BadValue("an object named " + Quoted(object.name) + " exists already");
        }
        const GeometryObject* existing = FindObject(object.name);
        if (!existing) {
            additions.push_back(std::move(object));
        } else if (existing->importFingerprint == object.importFingerprint) {
            kept.push_back(object.name);
        } else {
            throw BadValue("an object named " + Quoted(object.name) + " exists already and has another geometry");
        }
    }
    for (auto& object : additions) {
        m_objectIndices.emplace(object.name, m_objects.size());
        m_objects.push_back(std::move(object));
    }
    return kept;
}

std::vector<std::string> Modeler::Names() const {
    std::vector<std::string> names;
    for (const auto& object : m_objects) {
        names.push_back(object.name);
    }
    if (m_region) {
        names.push_back(m_region->name);
    }
    return names;
}

const GeometryObject* Modeler::FindObject(const std::string& name) const {
    const auto found = m_objectIndices.find(name);
    return found == m_objectIndices.end() ? nullptr : &m_objects[found->second];
}

GeometryObject& Modeler::RequireObject(const std::string& name) {
    return const_cast<GeometryObject&>(std::as_const(*this).RequireObject(name));
}

const GeometryObject& Modeler::RequireObject(const std::string& name) const {
    const GeometryObject* object = FindObject(name);
    if (!object) {
        throw DesktopError(ErrorCode::InvalidToolObject, "there is no object " + Quoted(name));
    }
    return *object;
}

bool Modeler::HasFrame(const std::string& name) const {
    return name == globalFrame || std::any_of(m_coordinateSystems.begin(), m_coordinateSystems.end(),
                                              [&](const CoordinateSystem& system) { return system.name == name; });
}

const CoordinateSystem& Modeler::RequireFrame(const std::string& name) const {
    for (const auto& system : m_coordinateSystems) {
        if (system.name == name) {
            return system;
        }
    }
    throw BadValue("there is no coordinate system " + Quoted(name));
}

void Modeler::AddCoordinateSystem(const CoordinateSystem& system, const Variables& variables) {
    if (HasFrame(system.name)) {
        throw BadValue("a coordinate system named " + Quoted(system.name) + " exists already");
    }
    if (system.name.empty()) {
        throw BadValue("a coordinate system needs a name");
    }
    try {
        FramePose(system.reference, variables);
        OwnPose(system, variables);
    } catch (const ExpressionError& error) {
        throw BadValue("coordinate system " + Quoted(system.name) + ": " + error.what());
    }
    m_coordinateSystems.push_back(system);
}

void Modeler::SetWorkingFrame(const std::string& name) {
    if (!HasFrame(name)) {
        throw BadValue("there is no coordinate system " + Quoted(name));
    }
    m_workingFrame = name;
}

Pose Modeler::OwnPose(const CoordinateSystem& system, const Variables& variables) const {
    const NameLookup lookup = variables.Lookup();
    Pose pose = Pose::Identity();
    for (std::size_t i = 0; i < 3; ++i) {
        pose.translation()[static_cast<Eigen::Index>(i)] = EvaluateLength(system.origin[i], lookup, m_metresPerUnit);
    }
    // The x axis stands as it is given; the y axis gives the plane (Gram-Schmidt).
    const Eigen::Vector3d x = Direction(system.xAxis, lookup, "x axis");
    const Eigen::Vector3d given = Direction(system.yAxis, lookup, "y axis");
    const Eigen::Vector3d across = given - given.dot(x) * x;
    if (!(across.norm() > 1e-9)) {
        throw ExpressionError("the x axis and the y axis are parallel");
    }
    const Eigen::Vector3d y = across.normalized();
    pose.linear().col(0) = x;
    pose.linear().col(1) = y;
    pose.linear().col(2) = x.cross(y);
    return pose;
}

Pose Modeler::NestedPose(const std::string& name, const Variables& variables, int depth) const {
    if (name == globalFrame) {
        return Pose::Identity();
    }
    if (depth > deepestFrame) {
        throw ExpressionError("coordinate system " + Quoted(name) + " refers to itself or is nested too deep");
    }
    const CoordinateSystem& system = RequireFrame(name);
    return NestedPose(system.reference, variables, depth + 1) * OwnPose(system, variables);
}

Pose Modeler::FramePose(const std::string& name, const Variables& variables) const {
    return NestedPose(name, variables, 0);
}

void Modeler::Transform(const std::string& name, const Pose& inWorkingFrame, const Variables& variables) {
    GeometryObject& object = RequireObject(name);
    Pose local = inWorkingFrame;
    if (object.coordinateSystem != m_workingFrame) {
        const Pose working = FramePose(m_workingFrame, variables);
        const Pose own = FramePose(object.coordinateSystem, variables);
        const Pose toWorking = working.inverse() * own;
        local = toWorking.inverse() * inWorkingFrame * toWorking;
    }
    object.mesh =
        Mapped(*object.mesh, [&local](const Eigen::Vector3d& vertex) -> Eigen::Vector3d { return local * vertex; });
}

void Modeler::Move(const std::string& name, const Eigen::Vector3d& shift, const Variables& variables) {
    Pose pose = Pose::Identity();
    pose.translation() = shift;
    Transform(name, pose, variables);
}

void Modeler::Rotate(const std::string& name, int axis, double angle, const Variables& variables) {
    Pose pose = Pose::Identity();
    pose.linear() = Eigen::AngleAxisd(angle, Eigen::Vector3d::Unit(axis)).toRotationMatrix();
    Transform(name, pose, variables);
}

bool Modeler::SetRegion(const Region& region, const Variables& variables) {
    if (HasObject(region.name)) {
        throw BadValue("an object named " + Quoted(region.name) + " exists already");
    }
    if (m_region && m_region->name != region.name) {
        throw BadValue("the design has a region already: " + Quoted(m_region->name));
    }
    try {
        CheckBoxOf(region, variables);
    } catch (const ExpressionError& error) {
        throw BadValue("region " + Quoted(region.name) + ": " + error.what());
    }
    const bool replaced = m_region.has_value();
    m_region = region;
    return replaced;
}

void Modeler::CheckRegion(const Variables& variables) const {
    if (m_region) {
        CheckBoxOf(*m_region, variables);
    }
}

void Modeler::CheckBoxOf(const Region& region, const Variables& variables) const {
    for (const auto& object : m_objects) {
        FramePose(object.coordinateSystem, variables);
    }
    const NameLookup lookup = variables.Lookup();
    for (const std::string& padding : region.padding) {
        const Quantity percent = Evaluate(padding, lookup);
        if (!percent.dimension.IsNumber() || percent.value < 0.0) {
            throw ExpressionError("the padding " + Quoted(padding) + " must be a plain number of percent, 0 or more");
        }
    }
}

void Modeler::Restore(const std::string& units, std::vector<GeometryObject> objects,
                      std::vector<CoordinateSystem> systems, std::optional<Region> region, std::string workingFrame) {
    SetUnits(units, false);
    m_objects = std::move(objects);
    m_objectIndices.clear();
    for (std::size_t i = 0; i < m_objects.size(); ++i) {
        m_objectIndices.emplace(m_objects[i].name, i);
    }
    m_coordinateSystems = std::move(systems);
    m_region = std::move(region);
    m_workingFrame = std::move(workingFrame);
}

} // namespace vantor::model
