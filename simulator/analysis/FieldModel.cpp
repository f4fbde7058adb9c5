#include "simulator/analysis/FieldModel.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

#include <Eigen/Geometry>
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
                      const model::Variables& variables, SolverMeshes& meshes)
        : m_project(project), m_library(library), m_design(design), m_variables(variables), m_meshes(meshes) {}

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
            if (!material) {
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
        if (!material) {
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

    solver::Magnet MakeMagnet(const model::GeometryObject& object, const model::Material& material) {
        const auto& components = material.coercivity->components;
        Eigen::Vector3d direction(components[0], components[1], components[2]);
        if (!(direction.norm() > 0.0)) {
            throw DesktopError(ErrorCode::SolverData, "the coercivity components of the material " +
                                                          Quoted(material.name) + " give no direction: all are 0");
        }
        const model::Pose pose = m_design.modeler.FramePose(object.coordinateSystem, m_variables);
        direction.normalize();
        // In the object's own frame there is nothing to turn, and rounding would make another one of it at every step.
        if (object.orientation != object.coordinateSystem) {
            const model::Pose frame = m_design.modeler.FramePose(object.orientation, m_variables);
            direction = pose.linear().transpose() * frame.linear() * direction;
        }
        const double remanence = material.relativePermeability * material.coercivity->magnitude;
        return {object.name, m_meshes.Of(object.mesh), remanence * direction, pose};
    }

    const model::Project& m_project;
    const model::MaterialTable& m_library;
    const model::Design& m_design;
    const model::Variables& m_variables;
    SolverMeshes& m_meshes;
    FieldModel m_model;
    std::map<std::string, std::size_t> m_bodyOfObject;
    MaterialRemarks m_remarks;
};

} // namespace

FieldModel BuildFieldModel(const model::Project& project, const model::MaterialTable& library,
                           const model::Design& design, const model::Variables& variables, SolverMeshes& meshes,
                           const ReportFunction& report) {
    return FieldModelBuilder(project, library, design, variables, meshes).Run(report);
}

} // namespace vantor::analysis
