#pragma once

#include "interface/IKinoraVeltrixInterface.h"
#include "scenario/FreeMotion.h"
#include "scenario/PrescribedMotion.h"
#include "scenario/Rigid.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
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

enum class JointType { Slider, Hinge };

/// One degree of freedom that moves one or more bodies as one. Its coordinate is 0 in the drawn poses.
struct Joint {
    std::string name;
    JointType type = JointType::Slider;
    /// Unit vector.
    Vector axis_W = Vector::UnitX();
    /// A point of a hinge's axis.
    Vector p_WJ_W = Vector::Zero();
    /// Indices into Scenario::bodies.
    std::vector<std::size_t> bodies;
    std::variant<PrescribedMotion, FreeMotion> motion = FreeMotion();

    bool IsFree() const { return std::holds_alternative<FreeMotion>(motion); }
};

/// Steps of equal length, from 0 to `steps * stepSeconds`.
struct Stepping {
    double stepSeconds = 0.0;
    int steps = 0;
    double TimeOf(int step) const { return step * stepSeconds; }
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
    std::vector<Body> bodies;
    std::vector<Joint> joints;
    Vector gravity_W = Vector::Zero();
    Stepping stepping;
    /// Folder of everything that the run writes.
    std::filesystem::path outputFolder;
    /// The host's own states; none when absent.
    std::optional<std::filesystem::path> csvFile;
    /// What can be run but looks like a slip: lines with file, line and JSON pointer.
    std::vector<std::string> warnings;
};

} // namespace kinora::scenario
