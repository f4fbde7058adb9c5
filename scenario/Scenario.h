#pragma once

#include "interface/IKinoraVeltrixInterface.h"
#include "scenario/FreeMotion.h"
#include "scenario/Placement.h"
#include "scenario/PrescribedMotion.h"
#include "scenario/Rigid.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace kinora::scenario {

/// What happens to the desktop after the run.
enum class AtEnd { Quit, Release };

struct DesktopSettings {
    /// Version suffix of the desktop; empty for the plain one.
    std::string version;
    AtEnd atEnd = AtEnd::Quit;
    /// How long a busy desktop is waited for.
    double busyTimeoutSeconds = 120.0;
};

/// One rigid body.
struct Body {
    std::string name;
    std::vector<std::string> objects;
    /// The pose in which the geometry is drawn.
    Pose X_WB0;
    /// Kilograms.
    double mass = 0.0;
    /// From the body's origin to its centre of mass.
    Vector p_BC_B = Vector::Zero();
    /// About the centre of mass, along the body's axes, kg m^2.
    Vector principalInertia_B = Vector::Zero();
};

/// Slider: a way along an axis. Hinge: a turn about an axis. Cylinder: both. Ball: every turn about a point. Free:
/// every turn and every way.
enum class JointType { Slider, Hinge, Cylinder, Ball, Free };

/// As scenarios write it.
const char* NameOf(JointType type);

/// One degree of freedom of a joint with an axis: radians or metres from the drawn pose.
struct Coordinate {
    enum class Kind { Turn, Slide };
    Kind kind = Kind::Slide;
    std::variant<PrescribedMotion, FreeMotion> motion = FreeMotion();

    bool IsFree() const { return std::holds_alternative<FreeMotion>(motion); }
};

/// As scenarios write it.
const char* NameOf(Coordinate::Kind kind);

/// Moves one or more bodies as one. The joint's point J is where it is drawn, p_WJ_W, when the bodies are in their
/// drawn poses.
struct Joint {
    std::string name;
    JointType type = JointType::Slider;
    /// Of a slider, hinge or cylinder: a unit vector.
    Vector axis_W = Vector::UnitX();
    /// As drawn: a point of the axis of a hinge or cylinder; the centre of a ball; what the coordinates of a free joint
    /// are about.
    Vector p_WJ_W = Vector::Zero();
    /// Indices into Scenario::bodies.
    std::vector<std::size_t> bodies;
    /// Of a slider, hinge or cylinder: one, one, or two (first the turn, then the way).
    std::vector<Coordinate> coordinates;
    /// Of a ball or a free joint.
    std::variant<PrescribedPlacement, FreePlacement> placement = FreePlacement();

    bool HasAxis() const { return type != JointType::Ball && type != JointType::Free; }
    std::size_t DegreesOfFreedom() const { return HasAxis() ? coordinates.size() : type == JointType::Free ? 6U : 3U; }
    /// Whether any of its coordinates follows from forces.
    bool IsFree() const;
};

/// Where a spring or bushing is fixed: to a body, or to the ground (no body).
struct Attachment {
    std::optional<std::size_t> body;
    /// The frame F of the attachment in the body's, or in the global frame.
    Pose X_BF;
};

/// A straight spring and damper between the origins of two attachments.
struct SpringElement {
    std::string name;
    Attachment from;
    Attachment to;
    /// N/m.
    double stiffness = 0.0;
    /// N s/m.
    double damping = 0.0;
    /// Metres, relaxed.
    double length = 0.0;
};

/// Elastic and damped in all directions: relaxed where both frames coincide. Ways and turns are along the axes of the
/// first frame.
struct Bushing {
    std::string name;
    Attachment from;
    Attachment to;
    /// N/m.
    Vector stiffness = Vector::Zero();
    /// N s/m.
    Vector damping = Vector::Zero();
    /// N m/rad.
    Vector angularStiffness = Vector::Zero();
    /// N m s/rad.
    Vector angularDamping = Vector::Zero();
};

/// A force and a torque that act on a body, given by formulas of t, x, y and z: time and the place of the body's origin
/// in the global frame.
struct AppliedLoad {
    std::size_t body = 0;
    std::array<Expression, 3> force;
    std::array<Expression, 3> torque;
    /// Along the body's axes, turning with them, or along the global ones.
    bool isInBodyAxes = false;
    /// Where the force acts, from the body's origin.
    Vector p_BP_B = Vector::Zero();
};

/// Steps of equal length, from 0 to `steps * stepSeconds`.
struct Stepping {
    double stepSeconds = 0.0;
    int steps = 0;
    double TimeOf(int step) const { return step * stepSeconds; }
};

/// A quantity under a name of its own, which the scenario's formulas may use.
struct Parameter {
    std::string name;
    /// SI.
    double value = 0.0;
    /// As it was given.
    std::string formula;
    /// For people, as the description is; empty for none.
    std::string unit;
    std::string description;
};

/// Which number of a column's is taken.
enum class Take { Last, Least, Greatest, Mean, At };

/// As scenarios write it.
const char* NameOf(Take take);

/// A number that is wanted of a run: one of a column of the host's states or of the coupling log.
struct WantedResult {
    std::string name;
    std::string column;
    Take take = Take::Last;
    /// With At: seconds, within the run.
    double timeSeconds = 0.0;
    /// For people; empty for none.
    std::string description;
};

/// A coupled run, complete and checked. Texts are UTF-8; units are SI.
struct Scenario {
    std::string title;
    DesktopSettings desktop;
    std::filesystem::path projectFile;
    bool overwrite = false;
    std::filesystem::path geometryFile;
    std::string units;
    /// Modeler object to material.
    std::map<std::string, IKinoraVeltrixInterface::Material> materials;
    /// Modeler objects whose material is named without a direction: of iron and air, and magnets along x.
    std::set<std::string> undirected;
    std::vector<Body> bodies;
    std::vector<Joint> joints;
    std::vector<SpringElement> springs;
    std::vector<Bushing> bushings;
    std::vector<AppliedLoad> loads;
    Vector gravity_W = Vector::Zero();
    Stepping stepping;
    std::vector<Parameter> parameters;
    std::vector<WantedResult> results;
    /// Folder of everything that the run writes.
    std::filesystem::path outputFolder;
    /// The host's own states; none when absent.
    std::optional<std::filesystem::path> csvFile;
    /// Where the results are to be; nowhere when absent.
    std::optional<std::filesystem::path> resultFile;
    /// What can be run but looks like a slip: lines with file, line and JSON pointer.
    std::vector<std::string> warnings;

    /// The joint that moves each body; nothing for one that stands still.
    std::vector<std::optional<std::size_t>> JointOfEachBody() const;
};

} // namespace kinora::scenario
