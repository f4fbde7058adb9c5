#include "simulator/model/ResultsJson.h"

#include "simulator/model/Text.h"

#include <nlohmann/json.hpp>

namespace vantor::model {
namespace {

using Json = nlohmann::ordered_json;

Json TraceToJson(const Trace& trace) {
    return {
        {"name", trace.name},   {"unit", trace.unit}, {"xName", trace.xName},
        {"xUnit", trace.xUnit}, {"x", trace.x},       {"y", trace.y},
    };
}

Trace TraceFromJson(const JsonReader& json) {
    json.AllowOnly({"name", "unit", "xName", "xUnit", "x", "y"});
    Trace trace;
    trace.name = json.At("name").Text();
    trace.unit = json.At("unit").Text();
    trace.xName = json.At("xName").Text();
    trace.xUnit = json.At("xUnit").Text();
    trace.x = json.At("x").AllNumbers();
    trace.y = json.At("y").AllNumbers();
    if (trace.x.size() != trace.y.size()) {
        json.Fail("x and y differ in length");
    }
    return trace;
}

Json ReportToJson(const Report& report) {
    Json json = {
        {"name", report.name},         {"reportType", report.reportType}, {"displayType", report.displayType},
        {"solution", report.solution}, {"xComponent", report.xComponent}, {"yComponents", report.yComponents},
    };
    json["families"] = Json::array();
    for (const auto& [variable, values] : report.families) {
        json["families"].push_back({{"variable", variable}, {"values", values}});
    }
    json["traces"] = Json::array();
    for (const auto& trace : report.traces) {
        json["traces"].push_back(TraceToJson(trace));
    }
    return json;
}

Report ReportFromJson(const JsonReader& json) {
    json.AllowOnly(
        {"name", "reportType", "displayType", "solution", "xComponent", "yComponents", "families", "traces"});
    Report report;
    report.name = json.At("name").Text();
    report.reportType = json.At("reportType").Text();
    report.displayType = json.At("displayType").Text();
    report.solution = json.At("solution").Text();
    report.xComponent = json.At("xComponent").Text();
    report.yComponents = json.At("yComponents").Texts();
    for (const auto& entry : json.At("families").Elements()) {
        entry.AllowOnly({"variable", "values"});
        report.families.emplace_back(entry.At("variable").Text(), entry.At("values").Texts());
    }
    for (const auto& entry : json.At("traces").Elements()) {
        report.traces.push_back(TraceFromJson(entry));
    }
    return report;
}

Json SolutionToJson(const Solution& solution) {
    Json json = {
        {"setup", solution.setup},         {"current", solution.current},
        {"converged", solution.converged}, {"percentError", solution.percentError},
        {"passes", solution.passes},       {"variables", solution.variables},
    };
    json["quantities"] = Json::array();
    for (const auto& [name, quantity] : solution.quantities) {
        json["quantities"].push_back(
            {{"name", name}, {"value", quantity.value}, {"dimension", quantity.dimension.exponents}});
    }
    return json;
}

Solution SolutionFromJson(const JsonReader& json) {
    json.AllowOnly({"setup", "current", "converged", "percentError", "passes", "variables", "quantities"});
    Solution solution;
    solution.setup = json.At("setup").Text();
    solution.current = json.At("current").Flag();
    solution.converged = json.At("converged").Flag();
    solution.percentError = json.At("percentError").Number();
    solution.passes = json.At("passes").Integer();
    for (const auto& [name, value] : json.At("variables").Members()) {
        solution.variables.emplace(name, value.Text());
    }
    for (const auto& entry : json.At("quantities").Elements()) {
        entry.AllowOnly({"name", "value", "dimension"});
        Quantity quantity{entry.At("value").Number(), {}};
        quantity.dimension.exponents = entry.At("dimension").Numbers<5>();
        solution.quantities.emplace(entry.At("name").Text(), quantity);
    }
    return solution;
}

OutputVariable OutputVariableFromJson(const JsonReader& json) {
    json.AllowOnly({"name", "expression", "solution", "reportType"});
    return {json.At("name").Text(), json.At("expression").Text(), json.At("solution").Text(),
            json.At("reportType").Text()};
}

FieldPlot FieldPlotFromJson(const JsonReader& json) {
    json.AllowOnly({"name", "solution", "quantity", "folder", "objects"});
    return {json.At("name").Text(), json.At("solution").Text(), json.At("quantity").Text(), json.At("folder").Text(),
            json.At("objects").Texts()};
}

template <typename Element>
void AddUnique(std::vector<Element>& elements, Element element, const JsonReader& json) {
    if (FindByName(elements, element.name)) {
        json.At("name").Fail("a second element named " + Quoted(element.name));
    }
    elements.push_back(std::move(element));
}

} // namespace

Json ResultsToJson(const Design& design) {
    Json json;
    json["outputVariables"] = Json::array();
    for (const auto& variable : design.outputVariables) {
        json["outputVariables"].push_back({{"name", variable.name},
                                           {"expression", variable.expression},
                                           {"solution", variable.solution},
                                           {"reportType", variable.reportType}});
    }
    json["reports"] = Json::array();
    for (const auto& report : design.reports) {
        json["reports"].push_back(ReportToJson(report));
    }
    json["fieldPlots"] = Json::array();
    for (const auto& plot : design.fieldPlots) {
        json["fieldPlots"].push_back({{"name", plot.name},
                                      {"solution", plot.solution},
                                      {"quantity", plot.quantity},
                                      {"folder", plot.folder},
                                      {"objects", plot.objects}});
    }
    if (design.solution) {
        json["solution"] = SolutionToJson(*design.solution);
    }
    return json;
}

void ResultsFromJson(const JsonReader& json, Design& design) {
    json.AllowOnly({"outputVariables", "reports", "fieldPlots", "solution"});
    for (const auto& entry : json.At("outputVariables").Elements()) {
        AddUnique(design.outputVariables, OutputVariableFromJson(entry), entry);
    }
    for (const auto& entry : json.At("reports").Elements()) {
        AddUnique(design.reports, ReportFromJson(entry), entry);
    }
    for (const auto& entry : json.At("fieldPlots").Elements()) {
        AddUnique(design.fieldPlots, FieldPlotFromJson(entry), entry);
    }
    if (json.Has("solution")) {
        design.solution = SolutionFromJson(json.At("solution"));
    }
}

} // namespace vantor::model
