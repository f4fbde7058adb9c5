#include "simulator/analysis/Analysis.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <map>
#include <set>

namespace vantor::analysis {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;
using model::Severity;

/// From here on a material without coercivity would change the field noticeably.
constexpr double permeabilityThatMatters = 1.01;

/// What is to be said about materials, each material once.
struct MaterialRemarks {
    std::set<std::string> unknown;
    std::set<std::string> soft;
    std::set<std::string> notUnity;

    static std::string List(const std::set<std::string>& names) {
        return model::QuotedList(std::vector<std::string>(names.begin(), names.end()));
    }

    void Report(const ReportFunction& report) const {
        if (!unknown.empty()) {
            report(Severity::Warning, "unknown materials are taken as non-magnetic: " + List(unknown));
        }
        if (!soft.empty()) {
            report(Severity::Warning,
                   "soft-magnetic materials are not solved, their objects are left out and the result "
                   "is wrong as far as they matter: " +
                       List(soft));
        }
        if (!notUnity.empty()) {
            report(Severity::Info,
                   "magnets with a relative permeability other than 1 are solved as rigid magnets of the "
                   "same remanence: " +
                       List(notUnity));
        }
    }
};

/// Builds the bodies of a design step by step.
class FieldModelBuilder {
public:
    FieldModelBuilder(const model::Project& project, const model::MaterialTable& library, const model::Design& design,
                      const model::Variables& variables)
        : m_project(project), m_library(library), m_design(design), m_variables(variables) {}

    FieldModel Run(const ReportFunction& report) {
        AddBodiesOfLoads();
        AddMagnets();
        m_remarks.Report(report);
        return std::move(m_model);
    }

private:
    /// Loads on the same objects share a body.
    void AddBodiesOfLoads() {
        std::map<std::set<std::string>, std::size_t> bodies;
        for (const auto& load : m_design.loads) {
            const std::set<std::string> objects(load.objects.begin(), load.objects.end());
            const auto inserted = bodies.emplace(objects, m_model.bodies.size());
            if (inserted.second) {
                m_model.bodies.push_back({load.name, {}});
                ClaimObjects(objects, load.name, inserted.first->second);
            }
            m_model.bodyOfLoad.push_back(inserted.first->second);
        }
    }

    void ClaimObjects(const std::set<std::string>& objects, const std::string& load, std::size_t body) {
        for (const auto& object : objects) {
            const auto claimed = m_bodyOfObject.emplace(object, body);
            if (!claimed.second) {
                throw DesktopError(ErrorCode::SolverData,
                                   "the object " + Quoted(object) + " belongs to " + Quoted(load) + " and to " +
                                       Quoted(m_model.bodies[claimed.first->second].name) +
                                       ", whose objects differ; a rigid body needs one set of objects");
            }
        }
    }

    void AddMagnets() {
        solver::Body others{"magnets without a load", {}};
        for (const auto& object : m_design.modeler.Objects()) {
            const model::Material* material = MagnetMaterial(object);
            if (material == nullptr) {
                continue;
            }
            const auto body = m_bodyOfObject.find(object.name);
            auto& magnets = body == m_bodyOfObject.end() ? others.magnets : m_model.bodies[body->second].magnets;
            magnets.push_back(MakeMagnet(object, *material));
        }
        if (!others.magnets.empty()) {
            m_model.bodies.push_back(std::move(others));
        }
    }

    /// The material of an object that takes part in the solve, or null; notes what is to be said.
    const model::Material* MagnetMaterial(const model::GeometryObject& object) {
        if (!object.isModel || object.material == "vacuum") {
            return nullptr;
        }
        const model::Material* material = m_project.FindMaterial(object.material, m_library);
        if (material == nullptr) {
            m_remarks.unknown.insert(object.material);
            return nullptr;
        }
        if (!material->coercivity) {
            if (material->relativePermeability > permeabilityThatMatters) {
                m_remarks.soft.insert(material->name);
            }
            return nullptr;
        }
        if (material->relativePermeability != 1.0) {
            m_remarks.notUnity.insert(material->name);
        }
        return material;
    }

    solver::Magnet MakeMagnet(const model::GeometryObject& object, const model::Material& material) const {
        const auto& components = material.coercivity->components;
        const Eigen::Vector3d direction(components[0], components[1], components[2]);
        if (!(direction.norm() > 0.0)) {
            throw DesktopError(ErrorCode::SolverData, "the coercivity components of the material " +
                                                          Quoted(material.name) + " give no direction: all are 0");
        }
        const model::Mesh mesh = m_design.modeler.GlobalMesh(object, m_variables);
        const model::Pose frame = m_design.modeler.FramePose(object.orientation, m_variables);
        const double remanence = material.relativePermeability * material.coercivity->magnitude;
        return {object.name, {mesh.vertices, mesh.triangles}, remanence * (frame.linear() * direction.normalized())};
    }

    const model::Project& m_project;
    const model::MaterialTable& m_library;
    const model::Design& m_design;
    const model::Variables& m_variables;
    FieldModel m_model;
    std::map<std::string, std::size_t> m_bodyOfObject;
    MaterialRemarks m_remarks;
};

using Quantities = std::map<std::string, model::Quantity>;

void AddForce(const model::LoadParameter& load, const solver::Load& found, const model::Pose& frame,
              Quantities& quantities) {
    const Eigen::Vector3d force = frame.linear().transpose() * found.force;
    const auto add = [&](const char* component, double value) {
        quantities[load.name + "." + component] = {value, model::forceDimension};
    };
    add("Force_x", force.x());
    add("Force_y", force.y());
    add("Force_z", force.z());
    add("Force_mag", force.norm());
}

void AddTorque(const model::LoadParameter& load, const solver::Load& found, const model::Pose& frame,
               Quantities& quantities) {
    const Eigen::Vector3d aboutOrigin = found.torque - frame.translation().cross(found.force);
    const double component = frame.linear().col(load.axis - 'X').dot(aboutOrigin);
    quantities[load.name + ".Torque"] = {load.isPositive ? component : -component, model::torqueDimension};
}

Quantities LoadQuantities(const model::Design& design, const FieldModel& fieldModel, const solver::Solution& solution) {
    Quantities quantities;
    for (std::size_t i = 0; i < design.loads.size(); ++i) {
        const model::LoadParameter& load = design.loads[i];
        const model::Pose frame = design.modeler.FramePose(load.frame, design.variables);
        const solver::Load& found = solution.loads[fieldModel.bodyOfLoad[i]];
        if (load.kind == model::LoadParameter::Kind::Force) {
            AddForce(load, found, frame, quantities);
        } else {
            AddTorque(load, found, frame, quantities);
        }
    }
    return quantities;
}

void ReportPasses(const model::AnalysisSetup& setup, const solver::Solution& solution, const ReportFunction& report) {
    for (const auto& pass : solution.passes) {
        report(Severity::Info, setup.name + ", pass " + std::to_string(pass.number) + ": error " +
                                   model::FormatNumber(pass.percentError) + " %, " + std::to_string(pass.evaluations) +
                                   " field evaluations");
    }
    if (!solution.converged) {
        report(Severity::Warning, setup.name + " did not reach an error of " + model::FormatNumber(setup.percentError) +
                                      " % within " + std::to_string(setup.maximumPasses) + " passes");
    }
}

model::Solution StoredSolution(const model::Design& design, const model::AnalysisSetup& setup,
                               const FieldModel& fieldModel, const solver::Solution& solution) {
    model::Solution stored;
    stored.setup = setup.name;
    stored.current = true;
    stored.converged = solution.converged;
    stored.passes = static_cast<int>(solution.passes.size());
    stored.percentError = solution.passes.empty() ? 0.0 : solution.passes.back().percentError;
    for (const auto& variable : design.variables.All()) {
        stored.variables.emplace(variable.name, variable.value);
    }
    stored.quantities = LoadQuantities(design, fieldModel, solution);
    return stored;
}

void SolveOrThrow(const model::Project& project, const model::MaterialTable& library, model::Design& design,
                  const model::AnalysisSetup& setup, const ReportFunction& report) {
    design.modeler.CheckRegion(design.variables);
    const FieldModel fieldModel = BuildFieldModel(project, library, design, design.variables, report);
    solver::Options options;
    options.percentError = setup.percentError;
    options.maximumPasses = setup.maximumPasses;
    const solver::Solution solution = solver::Solve(fieldModel.bodies, options);
    ReportPasses(setup, solution, report);
    design.solution = StoredSolution(design, setup, fieldModel, solution);
}

} // namespace

FieldModel BuildFieldModel(const model::Project& project, const model::MaterialTable& library,
                           const model::Design& design, const model::Variables& variables,
                           const ReportFunction& report) {
    return FieldModelBuilder(project, library, design, variables).Run(report);
}

bool SolveDesign(const model::Project& project, const model::MaterialTable& library, model::Design& design,
                 const model::AnalysisSetup& setup, const ReportFunction& report) {
    if (design.solution) {
        design.solution->current = false;
    }
    try {
        SolveOrThrow(project, library, design, setup, report);
        return true;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::runtime_error& error) {
        report(Severity::Error, setup.name + " cannot be solved: " + error.what());
        return false;
    }
}

} // namespace vantor::analysis
