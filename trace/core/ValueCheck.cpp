#include "trace/core/ValueCheck.h"

#include <algorithm>
#include <string>

namespace kinora::trace {
namespace {

using nlohmann::json;

/// More than any trace has; deeper ones would fill the stack.
constexpr int deepestValue = 200;

bool IsValueAt(const json& value, int depth);

bool AreValuesAt(const json& list, int depth) {
    return list.is_array() &&
           std::all_of(list.begin(), list.end(), [&](const json& value) { return IsValueAt(value, depth); });
}

bool HasContent(const std::string& type, const json& value, int depth) {
    const json& content = value["v"];
    if (type.rfind("BYREF", 0) == 0) {
        return content.is_null() || IsValueAt(content, depth + 1);
    }
    if (type.rfind("ARRAY", 0) == 0) {
        return AreValuesAt(content, depth + 1);
    }
    if (type == "BSTR") {
        return content.is_string();
    }
    if (type == "R4" || type == "R8" || type == "DATE") {
        return content.is_number() || content.is_string();
    }
    return content.is_primitive();
}

bool IsValueAt(const json& value, int depth) {
    if (depth > deepestValue || !value.is_object() || !value.contains("vt") || !value["vt"].is_string()) {
        return false;
    }
    const std::string type = value["vt"].get<std::string>();
    const bool isEmpty = type == "EMPTY" || type == "NULL";
    if (value.contains("v") ? !HasContent(type, value, depth) : !isEmpty) {
        return false;
    }
    if (value.contains("count") && !value["count"].is_number_unsigned()) {
        return false;
    }
    // An object has its path beside its number.
    return !value.contains("id") || (value["id"].is_number_unsigned() && value.contains("v") && value["v"].is_string());
}

} // namespace

bool IsValue(const json& value) {
    return IsValueAt(value, 0);
}

bool AreValues(const json& list) {
    return AreValuesAt(list, 0);
}

} // namespace kinora::trace
