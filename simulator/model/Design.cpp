#include "simulator/model/Design.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

namespace vantor::model {
namespace {

const std::string solutionSuffix = " : LastAdaptive";

/// The dimension of a load quantity such as "Force_Rotor.Force_x"; nothing when no load of the design has it.
std::optional<Dimension> LoadQuantity(const Design& design, const std::string& name) {
    const auto point = name.rfind('.');
    if (point == std::string::npos) {
        return std::nullopt;
    }
    const LoadParameter* load = FindByName(design.loads, name.substr(0, point));
    const std::string quantity = name.substr(point + 1);
    if (!load) {
        return std::nullopt;
    }
    if (load->kind == LoadParameter::Kind::Torque) {
        return quantity == "Torque" ? std::optional<Dimension>(torqueDimension) : std::nullopt;
    }
    const bool known =
        quantity == "Force_x" || quantity == "Force_y" || quantity == "Force_z" || quantity == "Force_mag";
    return known ? std::optional<Dimension>(forceDimension) : std::nullopt;
}

} // namespace

std::string SolutionName(const std::string& setup) {
    return setup + solutionSuffix;
}

const AnalysisSetup& RequireSetupOfSolution(const Design& design, const std::string& solution) {
    for (const auto& setup : design.setups) {
        if (SolutionName(setup.name) == solution) {
            return setup;
        }
    }
    throw DesktopError(ErrorCode::BadArgumentValue,
                       "there is no solution " + Quoted(solution) + "; a solution is named by a setup and " +
                           Quoted(solutionSuffix) + ", the setups are: " + QuotedList(NamesOf(design.setups)));
}

void CheckOutputExpression(const Design& design, const std::string& expression) {
    const NameLookup variables = design.variables.Lookup();
    const auto lookup = [&](const std::string& name) -> std::optional<Quantity> {
        if (const auto dimension = LoadQuantity(design, name)) {
            return Quantity{1.0, *dimension};
        }
        return variables(name);
    };
    try {
        const Quantity value = Evaluate(expression, lookup);
        if (!value.dimension.IsNumber()) {
            throw ExpressionError(Quoted(expression) + " is " + Describe(value.dimension) +
                                  "; divide by a unit, as in Force_Rotor.Force_x/1Newton");
        }
    } catch (const ExpressionError& error) {
        throw DesktopError(ErrorCode::BadArgumentValue, error.what());
    }
}

double OutputVariableValue(const Design& design, const OutputVariable& variable) {
    if (!design.solution || SolutionName(design.solution->setup) != variable.solution) {
        throw DesktopError(ErrorCode::SolutionError, Quoted(variable.solution) + " has not been solved");
    }
    if (!design.solution->current) {
        throw DesktopError(ErrorCode::SolutionError,
                           Quoted(variable.solution) + " has not been solved since the model was changed");
    }
    const NameLookup variables = design.variables.Lookup();
    const auto lookup = [&](const std::string& name) -> std::optional<Quantity> {
        const auto quantity = design.solution->quantities.find(name);
        return quantity != design.solution->quantities.end() ? quantity->second : variables(name);
    };
    try {
        return Evaluate(variable.expression, lookup).value;
    } catch (const ExpressionError& error) {
        throw DesktopError(ErrorCode::SolutionError, "output variable " + Quoted(variable.name) + ": " + error.what());
    }
}

} // namespace vantor::model
