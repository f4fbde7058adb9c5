#include "simulator/model/DesignJson.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/ModelerJson.h"
#include "simulator/model/ResultsJson.h"
#include "simulator/model/Text.h"

#include <nlohmann/json.hpp>

namespace vantor::model {
namespace {

using Json = nlohmann::ordered_json;

template <typename Element, typename Write>
Json ListToJson(const std::vector<Element>& elements, Write write) {
    Json list = Json::array();
    for (const auto& element : elements) {
        list.push_back(write(element));
    }
    return list;
}

/// Reads a list of elements whose names must differ.
template <typename Element, typename Read>
std::vector<Element> ListFromJson(const JsonReader& json, Read read) {
    std::vector<Element> elements;
    for (const auto& entry : json.Elements()) {
        Element element = read(entry);
        if (FindByName(elements, element.name)) {
            entry.At("name").Fail("a second element named " + Quoted(element.name));
        }
        elements.push_back(std::move(element));
    }
    return elements;
}

Json VariablesToJson(const Variables& variables) {
    return ListToJson(variables.All(), [](const auto& variable) {
        return Json{{"name", variable.name}, {"value", variable.value}};
    });
}

void VariablesFromJson(const JsonReader& json, Variables& variables) {
    std::vector<Variables::Variable> all;
    for (const auto& entry : json.Elements()) {
        entry.AllowOnly({"name", "value"});
        all.push_back({entry.At("name").Text(), entry.At("value").Text()});
    }
    try {
        variables.Add(all);
    } catch (const DesktopError& error) {
        json.Fail(error.what());
    }
}

Json SetupToJson(const AnalysisSetup& setup) {
    Json json = {
        {"name", setup.name},
        {"type", setup.type},
        {"enabled", setup.enabled},
        {"maximumPasses", setup.maximumPasses},
        {"percentError", setup.percentError},
    };
    json["expressionCache"] = ListToJson(setup.expressionCache, [](const auto& item) {
        return Json{{"title", item.title}, {"expression", item.expression}, {"reportType", item.reportType}};
    });
    return json;
}

AnalysisSetup SetupFromJson(const JsonReader& json) {
    json.AllowOnly({"name", "type", "enabled", "maximumPasses", "percentError", "expressionCache"});
    AnalysisSetup setup;
    setup.name = json.At("name").Text();
    setup.type = json.At("type").Text();
    setup.enabled = json.At("enabled").Flag();
    setup.maximumPasses = json.At("maximumPasses").Integer();
    setup.percentError = json.At("percentError").Number();
    if (setup.maximumPasses < 1 || !(setup.percentError > 0.0)) {
        json.Fail("maximumPasses must be 1 or more and percentError more than 0");
    }
    for (const auto& item : json.At("expressionCache").Elements()) {
        item.AllowOnly({"title", "expression", "reportType"});
        setup.expressionCache.push_back(
            {item.At("title").Text(), item.At("expression").Text(), item.At("reportType").Text()});
    }
    return setup;
}

Json LoadToJson(const LoadParameter& load) {
    Json json = {
        {"kind", load.kind == LoadParameter::Kind::Force ? "force" : "torque"},
        {"name", load.name},
        {"frame", load.frame},
        {"virtual", load.isVirtual},
        {"objects", load.objects},
    };
    if (load.kind == LoadParameter::Kind::Torque) {
        json["positive"] = load.isPositive;
        json["axis"] = std::string(1, load.axis);
    }
    return json;
}

LoadParameter LoadFromJson(const JsonReader& json, const Modeler& modeler) {
    json.AllowOnly({"kind", "name", "frame", "virtual", "objects", "positive", "axis"});
    LoadParameter load;
    const std::string kind = json.At("kind").Text();
    if (kind != "force" && kind != "torque") {
        json.At("kind").Fail("force or torque is needed");
    }
    load.kind = kind == "force" ? LoadParameter::Kind::Force : LoadParameter::Kind::Torque;
    load.name = json.At("name").Text();
    load.frame = json.At("frame").Text();
    if (!modeler.HasFrame(load.frame)) {
        json.At("frame").Fail("there is no coordinate system " + Quoted(load.frame));
    }
    load.isVirtual = json.At("virtual").Flag();
    load.objects = json.At("objects").Texts();
    for (const auto& object : load.objects) {
        if (!modeler.HasObject(object)) {
            json.At("objects").Fail("there is no object " + Quoted(object));
        }
    }
    if (load.kind == LoadParameter::Kind::Torque) {
        load.isPositive = json.At("positive").Flag();
        const std::string axis = json.At("axis").Text();
        if (axis != "X" && axis != "Y" && axis != "Z") {
            json.At("axis").Fail("X, Y or Z is needed");
        }
        load.axis = axis.front();
    }
    return load;
}

Json ParametricToJson(const ParametricSetup& setup) {
    Json json = {
        {"name", setup.name},
        {"enabled", setup.enabled},
        {"saveFields", setup.saveFields},
        {"copyMesh", setup.copyMesh},
        {"solveWithCopiedMeshOnly", setup.solveWithCopiedMeshOnly},
        {"startingPoint", setup.startingPoint},
        {"analysisSetups", setup.analysisSetups},
    };
    json["sweeps"] = ListToJson(setup.sweeps, [](const auto& sweep) {
        return Json{{"variable", sweep.variable},
                    {"data", sweep.data},
                    {"offset", sweep.offset},
                    {"synchronize", sweep.synchronize}};
    });
    json["rows"] = setup.addedRows;
    return json;
}

ParametricSetup ParametricFromJson(const JsonReader& json) {
    json.AllowOnly({"name", "enabled", "saveFields", "copyMesh", "solveWithCopiedMeshOnly", "startingPoint",
                    "analysisSetups", "sweeps", "rows"});
    ParametricSetup setup;
    setup.name = json.At("name").Text();
    setup.enabled = json.At("enabled").Flag();
    setup.saveFields = json.At("saveFields").Flag();
    setup.copyMesh = json.At("copyMesh").Flag();
    setup.solveWithCopiedMeshOnly = json.At("solveWithCopiedMeshOnly").Flag();
    setup.startingPoint = json.At("startingPoint").Texts();
    setup.analysisSetups = json.At("analysisSetups").Texts();
    for (const auto& entry : json.At("sweeps").Elements()) {
        entry.AllowOnly({"variable", "data", "offset", "synchronize"});
        setup.sweeps.push_back({entry.At("variable").Text(), entry.At("data").Text(), entry.At("offset").Flag(),
                                entry.At("synchronize").Number()});
    }
    for (const auto& row : json.At("rows").Elements()) {
        setup.addedRows.push_back(row.Texts());
    }
    return setup;
}

std::vector<AnalysisSetup> SetupsFromJson(const JsonReader& json) {
    return ListFromJson<AnalysisSetup>(json, SetupFromJson);
}

} // namespace

Json DesignToJson(const Design& design) {
    Json json;
    json["name"] = design.name;
    json["type"] = design.type;
    json["solutionType"] = design.solutionType;
    json["allowMaterialOverride"] = design.allowMaterialOverride;
    json["variables"] = VariablesToJson(design.variables);
    json["modeler"] = ModelerToJson(design.modeler);
    json["setups"] = ListToJson(design.setups, SetupToJson);
    json["loads"] = ListToJson(design.loads, LoadToJson);
    json["parametricSetups"] = ListToJson(design.parametricSetups, ParametricToJson);
    json["results"] = ResultsToJson(design);
    return json;
}

std::shared_ptr<Design> DesignFromJson(const JsonReader& json) {
    json.AllowOnly({"name", "type", "solutionType", "allowMaterialOverride", "variables", "modeler", "setups", "loads",
                    "parametricSetups", "results"});
    auto design = std::make_shared<Design>();
    design->name = json.At("name").Text();
    design->type = json.At("type").Text();
    design->solutionType = json.At("solutionType").Text();
    design->allowMaterialOverride = json.At("allowMaterialOverride").Flag();
    VariablesFromJson(json.At("variables"), design->variables);
    ModelerFromJson(json.At("modeler"), design->modeler);
    design->setups = SetupsFromJson(json.At("setups"));
    design->loads = ListFromJson<LoadParameter>(
        json.At("loads"), [&](const JsonReader& entry) { return LoadFromJson(entry, design->modeler); });
    design->parametricSetups = ListFromJson<ParametricSetup>(json.At("parametricSetups"), ParametricFromJson);
    ResultsFromJson(json.At("results"), *design);
    return design;
}

} // namespace vantor::model
