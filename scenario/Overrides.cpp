#include "scenario/Overrides.h"

#include "scenario/Errors.h"
#include "scenario/OverrideJson.h"
#include "scenario/ScenarioSchema.h"
#include "scenario/Text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

namespace kinora::scenario {
namespace {

using nlohmann::json;

std::vector<std::string> Split(const std::string& path, char separator) {
    std::vector<std::string> keys(1);
    for (const char character : path) {
        if (character == separator) {
            keys.emplace_back();
        } else {
            keys.back() += character;
        }
    }
    return keys;
}

std::string Unescaped(const std::string& key) {
    std::string text;
    for (std::size_t i = 0; i < key.size(); ++i) {
        const bool isEscape = key[i] == '~' && i + 1 < key.size() && (key[i + 1] == '0' || key[i + 1] == '1');
        text += isEscape ? (key[i + 1] == '0' ? '~' : '/') : key[i];
        i += isEscape ? 1 : 0;
    }
    return text;
}

std::vector<std::string> KeysAlong(const std::string& path) {
    if (path.empty() || path.front() != '/') {
        return Split(path, '.');
    }
    std::vector<std::string> keys = Split(path.substr(1), '/');
    std::transform(keys.begin(), keys.end(), keys.begin(), Unescaped);
    return keys;
}

/// What the items of a list or the values of an object can be called.
std::vector<std::string> NamesIn(const json& value) {
    std::vector<std::string> names;
    for (const auto& [key, item] : value.items()) {
        names.push_back(!value.is_array() ? key
                        : item.is_object() && item.contains("name") && item["name"].is_string()
                            ? item["name"].get<std::string>()
                            : key);
    }
    return names;
}

std::optional<std::size_t> IndexOf(const json& list, const std::string& key) {
    std::size_t index = 0;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), index);
    if (error == std::errc() && end == key.data() + key.size()) {
        return index < list.size() ? std::optional(index) : std::nullopt;
    }
    const std::vector<std::string> names = NamesIn(list);
    const auto found = std::find(names.begin(), names.end(), key);
    return found == names.end() ? std::nullopt : std::optional<std::size_t>(found - names.begin());
}

[[noreturn]] void FailAt(const std::string& pointer, const std::string& text) {
    throw std::invalid_argument(fmt::format("{}: {}", pointer.empty() ? "/" : pointer, text));
}

/// A name by itself is a parameter's, or else a part of every scenario.
std::vector<std::string> Resolved(std::vector<std::string> keys, const json& document) {
    if (keys.size() != 1) {
        return keys;
    }
    const json parameters = document.value("parameters", json::object());
    if (parameters.contains(keys.front())) {
        return {"parameters", keys.front()};
    }
    if (!json::parse(ScenarioSchema())["properties"].contains(keys.front())) {
        FailAt("/parameters", fmt::format("the scenario has no parameter \"{}\".{}", keys.front(),
                                          Suggestion(keys.front(), NamesIn(parameters))));
    }
    return keys;
}

/// Finds or makes the place of a value, one key after the other.
class Walk {
public:
    explicit Walk(json& document) : m_at(&document) {}

    void Into(const std::string& key) {
        if (m_at->is_array()) {
            const auto index = IndexOf(*m_at, key);
            if (!index) {
                FailAt(m_pointer, fmt::format("the list has no \"{}\".{}", key, Suggestion(key, NamesIn(*m_at))));
            }
            m_at = &(*m_at)[*index];
            m_pointer = PointerTo(m_pointer, std::to_string(*index));
            return;
        }
        if (m_at->is_null()) {
            *m_at = json::object();
        }
        if (!m_at->is_object()) {
            FailAt(m_pointer, fmt::format("there is no \"{}\" in a {}.", key, m_at->type_name()));
        }
        m_at = &(*m_at)[key];
        m_pointer = PointerTo(m_pointer, key);
    }

    json& Value() const { return *m_at; }
    const std::string& Pointer() const { return m_pointer; }

private:
    json* m_at;
    std::string m_pointer;
};

void ApplyOne(const Override& change, json& document, JsonLocations& locations) {
    const std::vector<std::string> keys = Resolved(KeysAlong(change.path), document);
    json value = ValueOf(change);
    Walk walk(document);
    for (const std::string& key : keys) {
        walk.Into(key);
    }
    // What people should know of a parameter holds for any value of it.
    const bool isDescribed = keys.size() == 2 && keys.front() == "parameters" && walk.Value().is_object();
    if (isDescribed && !value.is_object()) {
        walk.Into("default");
    }
    walk.Value() = std::move(value);
    locations.Replace(walk.Pointer(), change.origin);
}

} // namespace

Override ParseOverride(const std::string& text) {
    const std::size_t at = text.find('=');
    if (at == std::string::npos || at == 0) {
        throw InputError(fmt::format("--set {}: PATH=VALUE is wanted, for example gap=5*mm or solver.end=0.1.", text));
    }
    try {
        (void)json(text).dump();
    } catch (const json::type_error&) {
        throw InputError("--set: what follows is not UTF-8 text.");
    }
    return {text.substr(0, at), text.substr(at + 1), "--set " + text};
}

Overrides ReadOverrides(const std::filesystem::path& file) {
    const std::string fileName = Utf8FromPath(file);
    const std::string text = ReadFile(file);
    const JsonLocations locations = ReadJsonLocations(text, fileName);
    const auto document = nlohmann::ordered_json::parse(text, nullptr, true, true);
    if (!document.is_object()) {
        throw InputError(
            fmt::format("{}:1: /: an object is wanted: {{\"gap\": \"5*mm\", \"solver.end\": 0.1}}.", fileName));
    }
    Overrides overrides;
    for (const auto& [path, value] : document.items()) {
        const int line = locations.Of(PointerTo({}, path)).line;
        overrides.push_back({path, value.dump(), fmt::format("{}:{}", fileName, line)});
    }
    return overrides;
}

json ValueOf(const Override& change) {
    json value = json::parse(change.value, nullptr, false);
    return value.is_discarded() ? json(change.value) : value;
}

void Apply(const Overrides& overrides, const std::string& fileName, json& document, JsonLocations& locations) {
    std::string lines;
    for (const Override& change : overrides) {
        try {
            ApplyOne(change, document, locations);
        } catch (const std::invalid_argument& error) {
            lines += fmt::format("{}{}, {}: {}", lines.empty() ? "" : "\n", fileName, change.origin, error.what());
        }
    }
    if (!lines.empty()) {
        throw InputError(lines);
    }
}

} // namespace kinora::scenario
