#pragma once

#include "simulator/model/ImportedGeometry.h"
#include "simulator/model/Mesh.h"
#include "simulator/model/Variables.h"

#include <Eigen/Geometry>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantor::model {

/// A rigid pose: global = rotation * local + translation, in metres.
using Pose = Eigen::Isometry3d;

/// The frame that always exists and has no definition.
inline constexpr const char* globalFrame = "Global";

/// A coordinate system in "Axis/Position" mode, kept as the expressions that define it.
struct CoordinateSystem {
    std::string name;
    std::string reference = globalFrame;
    std::array<std::string, 3> origin;
    std::array<std::string, 3> xAxis;
    std::array<std::string, 3> yAxis;
};

/// A solid of the modeler.
struct GeometryObject {
    std::string name;
    std::string material = "vacuum";
    /// Metres, in the axes of `coordinateSystem`; never null. It is never changed but replaced by another one, so that
    /// what has been found out about it holds as long as it is the same.
    std::shared_ptr<const Mesh> mesh = std::make_shared<Mesh>();
    std::string coordinateSystem = globalFrame;
    /// Frame in which the material's direction is meant.
    std::string orientation = globalFrame;
    bool solveInside = true;
    bool isModel = true;
    /// Fingerprint of the mesh as it was imported.
    std::uint64_t importFingerprint = 0;
};

/// The padded box around everything.
struct Region {
    std::string name;
    std::string material = "vacuum";
    std::string color;
    double transparency = 0.0;
    bool solveInside = true;
    std::string coordinateSystem = globalFrame;
    std::string orientation = globalFrame;
    bool isModel = true;
    /// Percent of the model's size on the side's axis, as expressions: +X, -X, +Y, -Y, +Z, -Z.
    std::array<std::string, 6> padding;
};

/// The geometry of a design: solids, coordinate systems, the region. Everything that depends on expressions is
/// evaluated when it is asked for.
///
/// Failures are DesktopError (InvalidToolObject for names of solids, BadArgumentValue otherwise).
class Modeler {
public:
    const std::string& Units() const { return m_units; }
    double MetresPerUnit() const { return m_metresPerUnit; }

    /// @param rescale true keeps the numbers of the existing geometry, so that it grows or shrinks.
    void SetUnits(const std::string& units, bool rescale);

    /// Adds the solids of a file, in model units. A solid that is there already is kept when its geometry is the same.
    /// @param useMaterials whether solids get the materials that the file names.
    /// @return names of solids that were there already.
    std::vector<std::string> Import(const ImportedGeometry& geometry, bool useMaterials);

    const std::vector<GeometryObject>& Objects() const { return m_objects; }
    const std::optional<Region>& OuterRegion() const { return m_region; }
    const std::vector<CoordinateSystem>& CoordinateSystems() const { return m_coordinateSystems; }
    const std::string& WorkingFrame() const { return m_workingFrame; }

    /// Names of solids and region in the order of their creation.
    std::vector<std::string> Names() const;
    bool HasObject(const std::string& name) const { return FindObject(name) != nullptr; }
    bool IsRegion(const std::string& name) const { return m_region && m_region->name == name; }
    /// The solid of that name.
    /// @throws DesktopError (InvalidToolObject) when there is none.
    GeometryObject& RequireObject(const std::string& name);
    const GeometryObject& RequireObject(const std::string& name) const;

    /// @pre there is a region.
    Region& TheRegion() { return *m_region; }

    void AddCoordinateSystem(const CoordinateSystem& system, const Variables& variables);
    bool HasFrame(const std::string& name) const;
    void SetWorkingFrame(const std::string& name);

    /// Creates the region, or replaces the one of the same name.
    /// @return true when one was replaced.
    bool SetRegion(const Region& region, const Variables& variables);

    /// Shifts a solid by a vector given in the working frame's axes, metres.
    void Move(const std::string& name, const Eigen::Vector3d& shift, const Variables& variables);

    /// Turns a solid about an axis of the working frame through its origin.
    /// @param axis 0, 1 or 2; @param angle radians.
    void Rotate(const std::string& name, int axis, double angle, const Variables& variables);

    /// Where a frame lies now.
    Pose FramePose(const std::string& name, const Variables& variables) const;

    /// Makes sure that the region, if there is one, has a box around the solids. Nothing needs to know the box itself.
    /// @throws ExpressionError when its padding or the frame of a solid cannot be evaluated.
    void CheckRegion(const Variables& variables) const;

    /// Puts back what a project file holds, as it stands.
    void Restore(const std::string& units, std::vector<GeometryObject> objects, std::vector<CoordinateSystem> systems,
                 std::optional<Region> region, std::string workingFrame);

private:
    const GeometryObject* FindObject(const std::string& name) const;
    const CoordinateSystem& RequireFrame(const std::string& name) const;
    Pose OwnPose(const CoordinateSystem& system, const Variables& variables) const;
    Pose NestedPose(const std::string& name, const Variables& variables, int depth) const;
    void Transform(const std::string& name, const Pose& inWorkingFrame, const Variables& variables);
    void CheckBoxOf(const Region& region, const Variables& variables) const;

    std::string m_units = "mm";
    double m_metresPerUnit = 1e-3;
    std::vector<GeometryObject> m_objects;
    std::map<std::string, std::size_t> m_objectIndices;
    std::vector<CoordinateSystem> m_coordinateSystems;
    std::optional<Region> m_region;
    std::string m_workingFrame = globalFrame;
};

} // namespace vantor::model
