#include "simulator/analysis/FieldModel.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

#include <Eigen/Geometry>
#include <cmath>
#include <map>
#include <set>

namespace vantor::analysis {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;
using model::Severity;

/// What relative permeability differs from 1 by. Objects without coercivity that have no more change no field
/// noticeably, and are left out.
constexpr double susceptibilityOfNoIron = 1e-3;

/// A magnet that has no more is solved with a permeability of 1, which is simpler.
constexpr double susceptibilityOfNone = 1e-6;

/// Builds the bodies of a design step by step.
class FieldModelBuilder {
public:
    FieldModelBuilder(const model::Project& project, const model::MaterialTable& library, const model::Design& design,
                      const model::Variables& variables, SolverCopies& copies)
        : m_project(project), m_library(library), m_design(design), m_variables(variables), m_copies(copies) {}

    FieldModel Run(const ReportFunction& report) {
        AddBodiesOfLoads();
        AddSolids();
        ReportUnknownMaterials(report);
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

    void AddSolids() {
        solver::Body others{"objects without a load", {}};
        for (const auto& object : m_design.modeler.Objects()) {
            const model::Material* material = SolvedMaterial(object);
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

    /// The material of an object that takes part in the solve, or null; notes materials that nobody knows.
    const model::Material* SolvedMaterial(const model::GeometryObject& object) {
        if (!object.isModel || object.material == "vacuum") {
            return nullptr;
        }
        const model::Material* material = m_project.FindMaterial(object.material, m_library);
        if (!material) {
            m_unknownMaterials.insert(object.material);
            return nullptr;
        }
        CheckPermeability(object, *material);
        const bool isMagnetic = material->coercivity || material->bhCurve ||
                                std::abs(material->relativePermeability - 1.0) > susceptibilityOfNoIron;
        return isMagnetic ? material : nullptr;
    }

    /// Projects of earlier versions may have permeabilities that no reader of materials takes any more.
    static void CheckPermeability(const model::GeometryObject& object, const model::Material& material) {
        const double permeability = material.relativePermeability;
        if (!(permeability >= model::leastRelativePermeability) || std::isinf(permeability)) {
            throw DesktopError(ErrorCode::SolverData, "the material " + Quoted(material.name) + " of the object " +
                                                          Quoted(object.name) + " has the relative permeability " +
                                                          model::FormatNumber(permeability) +
                                                          ", which must be finite and " +
                                                          model::FormatNumber(model::leastRelativePermeability) +
                                                          " or more; give the object another material");
        }
    }

    solver::Magnet MakeMagnet(const model::GeometryObject& object, const model::Material& material) {
        solver::Magnet magnet;
        magnet.name = object.name;
        magnet.mesh = m_copies.Of(object.mesh);
        magnet.pose = m_design.modeler.FramePose(object.coordinateSystem, m_variables);
        if (material.coercivity) {
            magnet.magnetisation = Magnetisation(object, material, magnet.pose);
        }
        if (std::abs(material.relativePermeability - 1.0) > susceptibilityOfNone) {
            magnet.permeability = material.relativePermeability;
        }
        if (material.bhCurve) {
            magnet.curve = m_copies.Of(material.bhCurve);
        }
        return magnet;
    }

    /// A/m, in the object's own axes.
    Eigen::Vector3d Magnetisation(const model::GeometryObject& object, const model::Material& material,
                                  const model::Pose& pose) const {
        const auto& components = material.coercivity->components;
        Eigen::Vector3d direction(components[0], components[1], components[2]);
        if (!(direction.norm() > 0.0)) {
            throw DesktopError(ErrorCode::SolverData, "the coercivity components of the material " +
                                                          Quoted(material.name) + " of the object " +
                                                          Quoted(object.name) + " give no direction: all are 0");
        }
        direction.normalize();
        // In the object's own frame there is nothing to turn, and rounding would make another one of it at every step.
        if (object.orientation != object.coordinateSystem) {
            const model::Pose frame = m_design.modeler.FramePose(object.orientation, m_variables);
            direction = pose.linear().transpose() * frame.linear() * direction;
        }
        return material.relativePermeability * material.coercivity->magnitude * direction;
    }

    void ReportUnknownMaterials(const ReportFunction& report) const {
        if (!m_unknownMaterials.empty()) {
            const std::vector<std::string> names(m_unknownMaterials.begin(), m_unknownMaterials.end());
            report(Severity::Warning, "unknown materials are taken as non-magnetic: " + model::QuotedList(names));
        }
    }

    const model::Project& m_project;
    const model::MaterialTable& m_library;
    const model::Design& m_design;
    const model::Variables& m_variables;
    SolverCopies& m_copies;
    FieldModel m_model;
    std::map<std::string, std::size_t> m_bodyOfObject;
    /// Each is told of once.
    std::set<std::string> m_unknownMaterials;
};

} // namespace

FieldModel BuildFieldModel(const model::Project& project, const model::MaterialTable& library,
                           const model::Design& design, const model::Variables& variables, SolverCopies& copies,
                           const ReportFunction& report) {
    return FieldModelBuilder(project, library, design, variables, copies).Run(report);
}

} // namespace vantor::analysis
