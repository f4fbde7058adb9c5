#include "fmu/packer/ModelDescription.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>

namespace kinora::fmu {
namespace {

/// What is of the whole is known at solves only; so are loads, which tools take for continuous all the same.
const char* VariabilityOf(const Variable& variable) {
    if (variable.causality == Causality::Parameter) {
        return "fixed";
    }
    return variable.causality == Causality::Output && !variable.port ? "discrete" : "continuous";
}

bool HasStart(const Variable& variable) {
    return variable.causality == Causality::Parameter || variable.causality == Causality::Input;
}

void AddCapabilities(pugi::xml_node root, const Packing& packing, Fmi version) {
    pugi::xml_node node = root.append_child("CoSimulation");
    Set(node, "modelIdentifier", packing.modelIdentifier);
    Set(node, "needsExecutionTool", !packing.bringsSimulator);
    Set(node, "canHandleVariableCommunicationStepSize", true);
    Set(node, "maxOutputDerivativeOrder", "0");
    Set(node, "canBeInstantiatedOnlyOncePerProcess", false);
    if (version == Fmi::Two) {
        Set(node, "canInterpolateInputs", true);
        Set(node, "canRunAsynchronuously", false); // the standard's spelling
        Set(node, "canNotUseMemoryManagementFunctions", true);
        Set(node, "canGetAndSetFMUstate", false);
        Set(node, "canSerializeFMUstate", false);
        Set(node, "providesDirectionalDerivative", false);
        return;
    }
    for (const char* capability :
         {"canGetAndSetFMUState", "canSerializeFMUState", "providesDirectionalDerivatives",
          "providesAdjointDerivatives", "providesPerElementDependencies", "providesIntermediateUpdate",
          "mightReturnEarlyFromDoStep", "canReturnEarlyAfterIntermediateUpdate", "hasEventMode",
          "providesEvaluateDiscreteStates"}) {
        Set(node, capability, false);
    }
}

void AddUnits(pugi::xml_node root) {
    pugi::xml_node all = root.append_child("UnitDefinitions");
    for (const Unit& unit : Units()) {
        pugi::xml_node node = all.append_child("Unit");
        Set(node, "name", unit.name);
        pugi::xml_node base = node.append_child("BaseUnit");
        for (const auto& [name, exponent] :
             {std::pair{"kg", unit.kg}, {"m", unit.m}, {"s", unit.s}, {"rad", unit.rad}}) {
            if (exponent != 0) {
                Set(base, name, std::to_string(exponent));
            }
        }
        if (unit.factor != 1.0) {
            Set(base, "factor", unit.factor);
        }
        if (unit.displayName) {
            pugi::xml_node display = node.append_child("DisplayUnit");
            Set(display, "name", unit.displayName);
            Set(display, "factor", unit.displayFactor);
        }
    }
}

void AddLogCategories(pugi::xml_node root) {
    pugi::xml_node all = root.append_child("LogCategories");
    for (const auto& [name, description] :
         {std::pair{"logStatusError", "What failed, with the desktop's messages and what to do"},
          {"logStatusWarning", "What went wrong and does not stop the run"},
          {"logEvents", "Where the files of a run are"},
          {"logAll", "Everything"}}) {
        pugi::xml_node node = all.append_child("Category");
        Set(node, "name", name);
        Set(node, "description", description);
    }
}

void AddExperiment(pugi::xml_node root, const scenario::Stepping& stepping, double stepSeconds) {
    pugi::xml_node node = root.append_child("DefaultExperiment");
    Set(node, "startTime", 0.0);
    Set(node, "stopTime", stepping.TimeOf(stepping.steps));
    Set(node, "stepSize", stepSeconds);
}

void SetCommon(pugi::xml_node node, const Variable& variable, const std::string& name, Reference reference) {
    Set(node, "name", name);
    Set(node, "valueReference", std::to_string(reference));
    Set(node, "description", variable.description);
    Set(node, "causality", NameOf(variable.causality));
    Set(node, "variability", VariabilityOf(variable));
    if (variable.causality == Causality::Output) {
        Set(node, "initial", "calculated");
    } else if (variable.causality == Causality::Parameter) {
        Set(node, "initial", "exact");
    }
}

void SetUnit(pugi::xml_node node, const Variable& variable) {
    if (variable.unit) {
        Set(node, "quantity", variable.unit->quantity);
        Set(node, "unit", variable.unit->name);
        if (variable.unit->displayName) {
            Set(node, "displayUnit", variable.unit->displayName);
        }
    }
}

const char* ElementOf(Type type, Fmi version) {
    switch (type) {
    case Type::Real:
        return version == Fmi::Two ? "Real" : "Float64";
    case Type::Integer:
        return version == Fmi::Two ? "Integer" : "Int32";
    case Type::Text:
        break;
    }
    return "String";
}

/// FMI 2.0 knows no vectors: each element is a variable.
void AddScalars(pugi::xml_node all, const Variable& variable) {
    const std::size_t size = variable.isVector ? variable.start.size() : 1;
    for (std::size_t i = 0; i < size; ++i) {
        pugi::xml_node node = all.append_child("ScalarVariable");
        SetCommon(node, variable, variable.isVector ? fmt::format("{}[{}]", variable.name, i + 1) : variable.name,
                  variable.reference + static_cast<Reference>(i));
        pugi::xml_node type = node.append_child(ElementOf(variable.type, Fmi::Two));
        SetUnit(type, variable);
        if (HasStart(variable)) {
            Set(type, "start", variable.type == Type::Text ? variable.text : XmlNumber(variable.start[i]));
        }
    }
}

void AddVariable(pugi::xml_node all, const Variable& variable) {
    pugi::xml_node node = all.append_child(ElementOf(variable.type, Fmi::Three));
    SetCommon(node, variable, variable.name, variable.reference);
    SetUnit(node, variable);
    if (variable.type == Type::Text) {
        Set(node.append_child("Start"), "value", variable.text);
        return;
    }
    if (HasStart(variable)) {
        std::string start;
        for (const double element : variable.start) {
            start += (start.empty() ? "" : " ") + XmlNumber(element);
        }
        Set(node, "start", start);
    }
    if (variable.isVector) {
        Set(node.append_child("Dimension"), "start", std::to_string(variable.start.size()));
    }
}

void AddVariables(pugi::xml_node root, const Model& model, Fmi version) {
    pugi::xml_node all = root.append_child("ModelVariables");
    for (const Variable& variable : model.Variables()) {
        if (version == Fmi::Two) {
            AddScalars(all, variable);
        } else {
            AddVariable(all, variable);
        }
    }
}

/// An output as it is listed: by its place in the list of all variables, which begins with 1 and has the references'
/// order, or by its reference.
/// @param element  of the list
void AddUnknowns(pugi::xml_node list, const char* element, const Variable& variable, Fmi version,
                 bool dependsOnInputs) {
    const bool isTwo = version == Fmi::Two;
    const std::size_t size = isTwo ? variable.start.size() : 1;
    for (std::size_t i = 0; i < size; ++i) {
        pugi::xml_node node = list.append_child(element);
        Set(node, isTwo ? "index" : "valueReference", std::to_string(variable.reference + i + (isTwo ? 1 : 0)));
        if (!dependsOnInputs) {
            Set(node, "dependencies", "");
        }
    }
}

/// Outputs change with steps only, so no tool has to look for loops; at the start they follow from the inputs.
void AddStructure(pugi::xml_node root, const Model& model, Fmi version) {
    const bool isTwo = version == Fmi::Two;
    pugi::xml_node structure = root.append_child("ModelStructure");
    std::vector<Variable> outputs;
    std::copy_if(model.Variables().begin(), model.Variables().end(), std::back_inserter(outputs),
                 [](const Variable& variable) { return variable.causality == Causality::Output; });
    pugi::xml_node list = isTwo ? structure.append_child("Outputs") : structure;
    for (const Variable& output : outputs) {
        AddUnknowns(list, isTwo ? "Unknown" : "Output", output, version, false);
    }
    list = isTwo ? structure.append_child("InitialUnknowns") : structure;
    for (const Variable& output : outputs) {
        AddUnknowns(list, isTwo ? "Unknown" : "InitialUnknown", output, version, output.port.has_value());
    }
}

} // namespace

std::string ModelDescription(const Model& model, const Packing& packing, const DescriptionSettings& settings) {
    const scenario::Scenario& scenario = model.Description();
    const bool isTwo = settings.version == Fmi::Two;
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("fmiModelDescription");
    Set(root, "fmiVersion", isTwo ? "2.0" : "3.0");
    Set(root, "modelName", packing.modelIdentifier);
    Set(root, isTwo ? "guid" : "instantiationToken", packing.token);
    Set(root, "description", scenario.title.empty() ? "Magnetic coupling" : scenario.title);
    Set(root, "generationTool", settings.generator);
    Set(root, "variableNamingConvention", "structured");
    AddCapabilities(root, packing, settings.version);
    AddUnits(root);
    AddLogCategories(root);
    AddExperiment(root, scenario.stepping, settings.stepSeconds);
    AddVariables(root, model, settings.version);
    AddStructure(root, model, settings.version);
    return TextOf(document);
}

std::string TerminalsAndIcons(const Model& model, bool hasIcon) {
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("fmiTerminalsAndIcons");
    Set(root, "fmiVersion", "3.0");
    if (hasIcon) {
        pugi::xml_node graphics = root.append_child("GraphicalRepresentation");
        const auto place = [&](const char* name) {
            pugi::xml_node node = graphics.append_child(name);
            for (const auto& [corner, value] :
                 {std::pair{"x1", -100.0}, {"y1", -100.0}, {"x2", 100.0}, {"y2", 100.0}}) {
                Set(node, corner, value);
            }
            return node;
        };
        Set(place("CoordinateSystem"), "suggestedScalingFactorTo_mm", 0.1);
        place("Icon");
    }
    pugi::xml_node terminals = root.append_child("Terminals");
    for (std::size_t port = 0; port < model.AllPorts().size(); ++port) {
        pugi::xml_node terminal = terminals.append_child("Terminal");
        Set(terminal, "name", model.AllPorts()[port].name);
        Set(terminal, "matchingRule", "bus");
        Set(terminal, "description",
            model.AllPorts()[port].isBody ? "Body" : scenario::NameOf(model.AllPorts()[port].type));
        for (const Variable& variable : model.Variables()) {
            if (variable.port == port) {
                pugi::xml_node member = terminal.append_child("TerminalMemberVariable");
                Set(member, "variableName", variable.name);
                Set(member, "memberName", variable.member);
                Set(member, "variableKind", "signal");
            }
        }
    }
    return TextOf(document);
}

} // namespace kinora::fmu
