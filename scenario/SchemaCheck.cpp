#include "scenario/SchemaCheck.h"

#include "scenario/Findings.h"
#include "scenario/ScenarioSchema.h"
#include "scenario/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

namespace kinora::scenario {
namespace {

using nlohmann::json;
using Context = std::vector<std::string>;

struct Finding {
    /// Keys and indices from the root to the offending value.
    Context path;
    std::string text;
};

bool StartsWith(const std::string& text, const char* start) {
    return text.rfind(start, 0) == 0;
}

/// The validator's context ("<root>", "[bodies]", "[0]") without its brackets.
Context PathOf(const Context& context) {
    Context path;
    for (const std::string& element : context) {
        if (element.size() >= 2 && element.front() == '[') {
            path.push_back(element.substr(1, element.size() - 2));
        }
    }
    return path;
}

const json& Resolve(const json& schema, const json& node) {
    if (node.contains("$ref")) {
        return schema.at(json::json_pointer(node["$ref"].get<std::string>().substr(1)));
    }
    return node;
}

/// The part of the schema that a value at a path must obey; null where the schema has none.
json SchemaAt(const json& schema, const Context& path) {
    json node = schema;
    for (const std::string& key : path) {
        if (node.contains("properties") && node["properties"].contains(key)) {
            node = json(Resolve(schema, node["properties"][key]));
        } else if (node.contains("items")) {
            node = json(Resolve(schema, node["items"]));
        } else if (node.contains("additionalProperties") && node["additionalProperties"].is_object()) {
            node = json(Resolve(schema, node["additionalProperties"]));
        } else {
            return json();
        }
    }
    return node;
}

json ValueAt(const json& document, const Context& path) {
    const json* value = &document;
    for (const std::string& key : path) {
        value = value->is_array() ? &value->at(std::stoul(key)) : &value->at(key);
    }
    return *value;
}

std::vector<std::string> KeysOf(const json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items()) {
        keys.push_back(key);
    }
    return keys;
}

/// The key that the validator says is unknown.
std::string UnknownKey(const std::string& description) {
    const std::size_t open = description.find('\'', description.rfind(": "));
    return description.substr(open + 1, description.rfind('\'') - open - 1);
}

std::string UnknownKeyText(const std::string& key, const json& schemaNode) {
    return fmt::format("the key \"{}\" is unknown here.{}", key,
                       Suggestion(key, KeysOf(schemaNode.value("properties", json::object()))));
}

std::string EnumText(const json& value, const json& schemaNode) {
    std::vector<std::string> allowed = schemaNode.at("enum").get<std::vector<std::string>>();
    const std::string hint = value.is_string() ? Suggestion(value.get<std::string>(), allowed) : "";
    return fmt::format("{} is not allowed; use {}.{}", value.dump(), Alternatives(allowed), hint);
}

std::string TypeText(const json& value, const json& schemaNode) {
    const json types = schemaNode.value("type", json());
    return fmt::format("{} is given where {} is wanted.", value.type_name(),
                       types.is_array() ? Alternatives(types.get<std::vector<std::string>>()) : types.dump());
}

/// What says that none of several alternatives fits, or more than the one that may.
bool IsAlternative(const std::string& description) {
    const auto has = [&description](const char* text) { return description.find(text) != std::string::npos; };
    return has("oneOf") || has("anyOf") || has("exactly one");
}

std::string AlternativeText(const json& schemaNode) {
    const bool isExclusive = schemaNode.contains("oneOf");
    std::vector<std::string> keys;
    for (const json& branch : schemaNode.at(isExclusive ? "oneOf" : "anyOf")) {
        keys.push_back(branch.at("required").at(0).get<std::string>());
    }
    return fmt::format("{} {} is wanted.", isExclusive ? "exactly one of" : "one of", Alternatives(keys));
}

/// The validator's finding about a value in words that name values and alternatives.
std::string Explain(const std::string& description, const json& value, const json& schemaNode) {
    if (StartsWith(description, "Failed to match against any enum")) {
        return EnumText(value, schemaNode);
    }
    if (StartsWith(description, "Value type not permitted")) {
        return TypeText(value, schemaNode);
    }
    if (StartsWith(description, "Failed to match regex")) {
        return fmt::format(
            "{} holds a character that names may not have; names build variables, formulas and files: use "
            "letters, digits and underscores, a letter first.",
            value.dump());
    }
    if (IsAlternative(description)) {
        return AlternativeText(schemaNode);
    }
    if (StartsWith(description, "Missing required property")) {
        const std::size_t open = description.find('\'');
        return fmt::format("the key \"{}\" is missing.",
                           description.substr(open + 1, description.rfind('\'') - open - 1));
    }
    return description + (value.is_primitive() ? fmt::format(" (it is {})", value.dump()) : std::string());
}

/// The validator's finding in our words, at the value that it is about: an unknown key rather than its object.
Finding ToFinding(const std::string& description, Context path, const json& document, const json& schema) {
    const json schemaNode = SchemaAt(schema, path);
    if (!StartsWith(description, "Object contains a property")) {
        const std::string text = Explain(description, ValueAt(document, path), schemaNode);
        return {std::move(path), text};
    }
    const std::string key = UnknownKey(description);
    path.push_back(key);
    return {std::move(path), UnknownKeyText(key, schemaNode)};
}

/// Keeps the causes and drops the trail of "failed to validate" that leads from each of them to the root.
std::vector<Finding> Causes(const valijson::ValidationResults& results, const json& document, const json& schema) {
    std::vector<Finding> causes;
    std::size_t branchStart = 0;
    for (const auto& error : results) {
        const Context path = PathOf(error.context);
        if (StartsWith(error.description, "Failed to validate against child schema")) {
            // What a branch of an alternative lacks says less than the alternative itself.
            while (causes.size() > branchStart && causes.back().path == path) {
                causes.pop_back();
            }
            continue;
        }
        const bool isAlternative = IsAlternative(error.description);
        if (StartsWith(error.description, "Failed to validate") && !isAlternative) {
            branchStart = causes.size();
            continue;
        }
        causes.push_back(ToFinding(error.description, path, document, schema));
        if (isAlternative) {
            branchStart = causes.size();
        }
    }
    return causes;
}

} // namespace

void CheckAgainstSchema(const json& document, const JsonLocations& locations, const std::string& fileName) {
    const json schemaDocument = json::parse(ScenarioSchema());
    valijson::Schema schema;
    valijson::SchemaParser parser;
    const valijson::adapters::NlohmannJsonAdapter schemaAdapter(schemaDocument);
    parser.populateSchema(schemaAdapter, schema);

    valijson::Validator validator(valijson::Validator::kStrongTypes);
    valijson::ValidationResults results;
    const valijson::adapters::NlohmannJsonAdapter documentAdapter(document);
    if (validator.validate(schema, documentAdapter, &results)) {
        return;
    }
    Findings findings(locations, fileName);
    for (const Finding& finding : Causes(results, document, schemaDocument)) {
        std::string pointer;
        for (const std::string& key : finding.path) {
            pointer = PointerTo(pointer, key);
        }
        findings.Add(pointer, finding.text);
    }
    findings.ThrowIfAny();
}

} // namespace kinora::scenario
