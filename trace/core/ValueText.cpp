#include "trace/core/ValueText.h"

#include <fmt/format.h>

namespace kinora::trace {
namespace {

using nlohmann::json;

/// Cuts between characters, never inside one.
std::string Shortened(const std::string& text, std::size_t limit) {
    if (text.size() <= limit) {
        return Quoted(text);
    }
    std::size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return fmt::format("{}+{} more", Quoted(text.substr(0, end)), text.size() - end);
}

std::string ListText(const json& value, const TextLimits& limits) {
    const json& elements = value["v"];
    const std::size_t count = value.value("count", elements.size());
    // One more is written out rather than announced.
    const bool isShort = elements.size() <= limits.elements || elements.size() - 1 == limits.elements;
    const std::size_t shown = isShort ? elements.size() : limits.elements;
    std::string text = "[";
    for (std::size_t i = 0; i < shown; ++i) {
        text += (i == 0 ? "" : ", ") + ValueText(elements[i], limits);
    }
    if (shown < count) {
        text += fmt::format("{}.. {} more", shown == 0 ? "" : ", ", count - shown);
    }
    return text + "]";
}

std::string NumberText(const json& value) {
    if (!value.is_number()) {
        return value.get<std::string>();
    }
    const std::string text = fmt::format("{}", value.get<double>());
    return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

std::string ObjectText(const json& value) {
    return value.is_string() ? value.get<std::string>() : "nothing";
}

} // namespace

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (static_cast<unsigned char>(c) < 0x20) {
            quoted += fmt::format("\\x{:02X}", static_cast<unsigned>(c));
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::string ValueText(const json& value, const TextLimits& limits) {
    if (!value.is_object() || !value.contains("vt")) {
        return value.is_null() ? "nothing" : value.dump();
    }
    std::string type = value["vt"].get<std::string>();
    if (type.rfind("ARRAY", 0) == 0 && value.contains("v")) {
        return ListText(value, limits);
    }
    const json content = value.value("v", json());
    if (type == "BSTR" && content.is_string()) {
        return Shortened(content.get<std::string>(), limits.characters);
    }
    if (type == "BOOL" && content.is_boolean()) {
        return content.get<bool>() ? "true" : "false";
    }
    if (type == "R8") {
        return NumberText(content);
    }
    if (type == "DISPATCH" || type == "UNKNOWN") {
        return ObjectText(content);
    }
    if (type.rfind("BYREF", 0) == 0) {
        return "&" + ValueText(content, limits);
    }
    if (content.is_null()) {
        return type;
    }
    return type + "(" + (content.is_string() ? content.get<std::string>() : content.dump()) + ")";
}

std::string ArgumentsText(const json& arguments, const TextLimits& limits) {
    std::string text;
    for (const json& argument : arguments) {
        text += (text.empty() ? "" : ", ") + ValueText(argument, limits);
    }
    return text;
}

} // namespace kinora::trace
