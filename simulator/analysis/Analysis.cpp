#include "simulator/analysis/Analysis.h"

#include "simulator/analysis/KeptSolver.h"
#include "simulator/model/Text.h"

#include <cmath>
#include <map>
#include <new>
#include <stdexcept>

namespace vantor::analysis {
namespace {

using model::Severity;

using Quantities = std::map<std::string, model::Quantity>;

/// Zero for what is zero but for rounding, which is another one with every compiler and mathematical library.
double WithoutRounding(double value, double scale) {
    constexpr double rounding = 1e-12;
    return std::abs(value) <= rounding * scale ? 0.0 : value;
}

void AddForce(const model::LoadParameter& load, const solver::Load& found, const model::Pose& frame,
              Quantities& quantities) {
    const Eigen::Vector3d force = frame.linear().transpose() * found.force;
    const auto add = [&](const char* component, double value) {
        quantities[load.name + "." + component] = {WithoutRounding(value, found.forceScale), model::forceDimension};
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
    const double scale = found.torqueScale + frame.translation().norm() * found.forceScale;
    const double torque = WithoutRounding(load.isPositive ? component : -component, scale);
    quantities[load.name + ".Torque"] = {torque, model::torqueDimension};
}

Quantities LoadQuantities(const model::Design& design, const FieldModel& fieldModel, const solver::Solution& solution) {
    Quantities quantities;
    // The four loads of a body have one frame, whose expressions are evaluated once.
    std::map<std::string, model::Pose> frames;
    for (const model::LoadParameter& load : design.loads) {
        const auto [frame, isNew] = frames.try_emplace(load.frame);
        if (isNew) {
            frame->second = design.modeler.FramePose(load.frame, design.variables);
        }
    }
    for (std::size_t i = 0; i < design.loads.size(); ++i) {
        const model::LoadParameter& load = design.loads[i];
        const model::Pose& frame = frames.at(load.frame);
        const solver::Load& found = solution.loads[fieldModel.bodyOfLoad[i]];
        if (load.kind == model::LoadParameter::Kind::Force) {
            AddForce(load, found, frame, quantities);
        } else {
            AddTorque(load, found, frame, quantities);
        }
    }
    return quantities;
}

void ReportPass(const model::AnalysisSetup& setup, const solver::Pass& pass, const ReportFunction& report) {
    report(Severity::Info, setup.name + ", pass " + std::to_string(pass.number) + ": error " +
                               model::FormatNumber(pass.percentError) + " %, " + std::to_string(pass.evaluations) +
                               " field evaluations");
}

void ReportConvergence(const model::AnalysisSetup& setup, const solver::Solution& solution,
                       const ReportFunction& report) {
    if (!solution.converged) {
        report(Severity::Warning, setup.name + " did not reach an error of " + model::FormatNumber(setup.percentError) +
                                      " % within " + std::to_string(setup.maximumPasses) + " passes");
    }
}

void ReportWarnings(const model::AnalysisSetup& setup, const solver::Solution& solution, const ReportFunction& report) {
    for (const auto& warning : solution.warnings) {
        report(Severity::Warning, setup.name + ": " + warning);
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
    if (!design.keptSolver) {
        design.keptSolver = std::make_shared<KeptSolver>();
    }
    KeptSolver& kept = *design.keptSolver;
    kept.copies.DropExpired();
    const FieldModel fieldModel = BuildFieldModel(project, library, design, design.variables, kept.copies, report);
    solver::Options options;
    options.percentError = setup.percentError;
    options.maximumPasses = setup.maximumPasses;
    options.passDone = [&](const solver::Pass& pass) { ReportPass(setup, pass, report); };
    const solver::Solution solution = kept.solver.Solve(fieldModel.bodies, options);
    ReportConvergence(setup, solution, report);
    ReportWarnings(setup, solution, report);
    design.solution = StoredSolution(design, setup, fieldModel, solution);
}

} // namespace

bool SolveDesign(const model::Project& project, const model::MaterialTable& library, model::Design& design,
                 const model::AnalysisSetup& setup, const ReportFunction& report) {
    if (design.solution) {
        design.solution->current = false;
    }
    try {
        SolveOrThrow(project, library, design, setup, report);
        return true;
    } catch (const std::bad_alloc&) {
        design.keptSolver.reset();
        throw;
    } catch (const std::runtime_error& error) {
        report(Severity::Error, setup.name + " cannot be solved: " + error.what());
        return false;
    }
}

} // namespace vantor::analysis
