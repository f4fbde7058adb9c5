#pragma once

#include "simulator/model/Modeler.h"
#include "simulator/model/Variables.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantor::analysis {
class KeptSolver;
}

namespace vantor::model {

/// An output variable's title and expression that a setup caches per pass.
struct ExpressionCacheItem {
    std::string title;
    std::string expression;
    std::string reportType;
};

/// A setup that can be solved.
struct AnalysisSetup {
    std::string name;
    std::string type;
    bool enabled = true;
    int maximumPasses = 10;
    double percentError = 1.0;
    std::vector<ExpressionCacheItem> expressionCache;
};

/// A force or torque calculation over objects that move together.
struct LoadParameter {
    enum class Kind { Force, Torque };

    Kind kind = Kind::Force;
    std::string name;
    /// Components are in its axes, torque is about its origin.
    std::string frame;
    bool isVirtual = true;
    /// Torque only.
    bool isPositive = true;
    /// Torque only.
    char axis = 'X';
    std::vector<std::string> objects;
};

/// A named expression over solution quantities and variables.
struct OutputVariable {
    std::string name;
    std::string expression;
    std::string solution;
    std::string reportType;
};

/// A sweep over variable values.
struct ParametricSetup {
    struct Sweep {
        std::string variable;
        std::string data;
        bool offset = false;
        double synchronize = 0.0;
    };

    std::string name;
    bool enabled = true;
    bool saveFields = true;
    bool copyMesh = true;
    bool solveWithCopiedMeshOnly = true;
    std::vector<std::string> startingPoint;
    std::vector<std::string> analysisSetups;
    std::vector<Sweep> sweeps;
    std::vector<std::vector<std::string>> addedRows;
};

/// Points of one curve of a report.
struct Trace {
    std::string name;
    std::string unit;
    std::string xName;
    std::string xUnit;
    std::vector<double> x;
    std::vector<double> y;
};

/// A plot or table of results.
struct Report {
    std::string name;
    std::string reportType;
    std::string displayType;
    std::string solution;
    std::vector<std::pair<std::string, std::vector<std::string>>> families;
    std::string xComponent;
    std::vector<std::string> yComponents;
    std::vector<Trace> traces;
};

/// A field plot's definition.
struct FieldPlot {
    std::string name;
    std::string solution;
    std::string quantity;
    std::string folder;
    std::vector<std::string> objects;
};

/// What a solve left behind.
struct Solution {
    std::string setup;
    /// False as soon as the model has changed since.
    bool current = false;
    bool converged = false;
    double percentError = 0.0;
    int passes = 0;
    /// Values that were solved.
    std::map<std::string, std::string> variables;
    /// "Force_Rotor.Force_x" and its like, SI units.
    std::map<std::string, Quantity> quantities;
};

/// A field model.
struct Design {
    std::string name;
    std::string type;
    std::string solutionType;
    bool allowMaterialOverride = false;
    Variables variables;
    Modeler modeler;
    std::vector<AnalysisSetup> setups;
    std::vector<LoadParameter> loads;
    std::vector<OutputVariable> outputVariables;
    std::vector<ParametricSetup> parametricSetups;
    std::vector<Report> reports;
    std::vector<FieldPlot> fieldPlots;
    std::optional<Solution> solution;
    /// What the analysis keeps for the next solve; null before the first one. Without it the results are the same.
    std::shared_ptr<analysis::KeptSolver> keptSolver;
};

/// The element of that name, or null.
template <typename Element>
Element* FindByName(std::vector<Element>& elements, const std::string& name) {
    for (auto& element : elements) {
        if (element.name == name) {
            return &element;
        }
    }
    return nullptr;
}

template <typename Element>
const Element* FindByName(const std::vector<Element>& elements, const std::string& name) {
    return FindByName(const_cast<std::vector<Element>&>(elements), name);
}

/// The names of all elements in their order.
template <typename Element>
std::vector<std::string> NamesOf(const std::vector<Element>& elements) {
    std::vector<std::string> names;
    names.reserve(elements.size());
    for (const auto& element : elements) {
        names.push_back(element.name);
    }
    return names;
}

/// Erases the elements of these names.
template <typename Element>
void EraseNamed(std::vector<Element>& elements, const std::vector<std::string>& names) {
    const auto isNamed = [&names](const Element& element) {
        return std::find(names.begin(), names.end(), element.name) != names.end();
    };
    elements.erase(std::remove_if(elements.begin(), elements.end(), isNamed), elements.end());
}

/// Setup name + " : LastAdaptive": the name of a setup's solution.
std::string SolutionName(const std::string& setup);

/// The setup of a solution name.
/// @throws DesktopError (BadArgumentValue) when the design has no such setup or the text is no solution name.
const AnalysisSetup& RequireSetupOfSolution(const Design& design, const std::string& solution);

/// The present value of an output variable.
/// @throws DesktopError (BadArgumentValue, SolutionError) for unknown names, a model that has changed since the last
///         solve, and expressions that cannot be evaluated or do not come out as plain numbers.
double OutputVariableValue(const Design& design, const OutputVariable& variable);

/// Checks that an expression can be an output variable's: names that are load quantities or variables of the design.
/// @throws DesktopError (BadArgumentValue).
void CheckOutputExpression(const Design& design, const std::string& expression);

} // namespace vantor::model
