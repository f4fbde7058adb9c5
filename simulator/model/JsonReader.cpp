#include "simulator/model/JsonReader.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace vantor::model {
namespace {

constexpr int deepestNesting = 64;

/// The parser recurses through nothing, but destroying and walking a deep tree would: a bad file must not do harm.
void CheckNesting(const std::string& text, const std::string& fileName) {
    int depth = 0;
    bool inText = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inText) {
            i += c == '\\' ? 1U : 0U;
            inText = c != '"';
        } else if (c == '"') {
            inText = true;
        } else if (c == '[' || c == '{') {
            if (++depth > deepestNesting) {
                throw DesktopError(ErrorCode::ReadFile,
                                   fileName + ": nested deeper than " + std::to_string(deepestNesting) + " levels");
            }
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
}

std::size_t LineOf(const std::string& text, std::size_t position) {
    const std::size_t end = std::min(position, text.size());
    return 1 +
           static_cast<std::size_t>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end), '\n'));
}

} // namespace

JsonDocument::JsonDocument(const std::string& text, std::string fileName) : m_fileName(std::move(fileName)) {
    CheckNesting(text, m_fileName);
    try {
        m_json = std::make_unique<nlohmann::json>(nlohmann::json::parse(text));
    } catch (const nlohmann::json::parse_error& error) {
        throw DesktopError(ErrorCode::ReadFile,
                           m_fileName + ", line " + std::to_string(LineOf(text, error.byte)) + ": not valid JSON");
    } catch (const nlohmann::json::exception&) {
        throw DesktopError(ErrorCode::ReadFile, m_fileName + ": a number is out of range");
    }
}

JsonDocument::~JsonDocument() = default;

JsonReader JsonDocument::Root() const {
    return JsonReader(*m_json, "", m_fileName);
}

void JsonReader::Fail(const std::string& reason) const {
    throw DesktopError(ErrorCode::ReadFile,
                       *m_fileName + ": " + (m_location.empty() ? "" : m_location + ": ") + reason);
}

bool JsonReader::Has(const std::string& key) const {
    return m_value->is_object() && m_value->contains(key);
}

JsonReader JsonReader::At(const std::string& key) const {
    if (!m_value->is_object()) {
        Fail("an object in braces is needed");
    }
    const auto found = m_value->find(key);
    if (found == m_value->end()) {
        Fail(Quoted(key) + " is missing");
    }
    return JsonReader(*found, m_location.empty() ? key : m_location + "." + key, *m_fileName);
}

std::vector<JsonReader> JsonReader::Elements() const {
    if (!m_value->is_array()) {
        Fail("a list in brackets is needed");
    }
    std::vector<JsonReader> elements;
    elements.reserve(m_value->size());
    for (std::size_t i = 0; i < m_value->size(); ++i) {
        elements.emplace_back((*m_value)[i], m_location + "[" + std::to_string(i) + "]", *m_fileName);
    }
    return elements;
}

std::vector<std::pair<std::string, JsonReader>> JsonReader::Members() const {
    if (!m_value->is_object()) {
        Fail("an object in braces is needed");
    }
    std::vector<std::pair<std::string, JsonReader>> members;
    for (const auto& item : m_value->items()) {
        members.emplace_back(item.key(), At(item.key()));
    }
    return members;
}

std::string JsonReader::Text() const {
    if (!m_value->is_string()) {
        Fail("a text is needed");
    }
    return m_value->get<std::string>();
}

double JsonReader::Number() const {
    if (!m_value->is_number()) {
        Fail("a number is needed");
    }
    const double value = m_value->get<double>();
    if (!std::isfinite(value)) {
        Fail("the number is out of range");
    }
    return value;
}

int JsonReader::Integer() const {
    const double value = Number();
    if (value != std::floor(value) || std::abs(value) > 2147483647.0) {
        Fail("a whole number is needed");
    }
    return static_cast<int>(value);
}

bool JsonReader::Flag() const {
    if (!m_value->is_boolean()) {
        Fail("true or false is needed");
    }
    return m_value->get<bool>();
}

std::vector<std::string> JsonReader::Texts() const {
    std::vector<std::string> texts;
    for (const auto& element : Elements()) {
        texts.push_back(element.Text());
    }
    return texts;
}

std::vector<double> JsonReader::AllNumbers() const {
    std::vector<double> numbers;
    for (const auto& element : Elements()) {
        numbers.push_back(element.Number());
    }
    return numbers;
}

void JsonReader::AllowOnly(std::initializer_list<const char*> keys) const {
    for (const auto& member : Members()) {
        if (std::none_of(keys.begin(), keys.end(), [&](const char* key) { return member.first == key; })) {
            Fail("unknown key " + Quoted(member.first));
        }
    }
}

} // namespace vantor::model
