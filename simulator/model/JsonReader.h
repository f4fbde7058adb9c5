#pragma once

#include <array>
#include <initializer_list>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace vantor::model {

/// A value inside a JSON file that knows its location, so that every complaint names file and location:
/// `motor.json: designs[0].name: a text is needed`.
///
/// Complaints are DesktopError (ReadFile). Readers refer to their document and must not outlive it.
class JsonReader {
public:
    JsonReader(const nlohmann::json& value, std::string location, const std::string& fileName)
        : m_value(&value), m_location(std::move(location)), m_fileName(&fileName) {}

    bool Has(const std::string& key) const;
    JsonReader At(const std::string& key) const;
    std::vector<JsonReader> Elements() const;

    /// Members of an object in the order of the file's keys, sorted by name.
    std::vector<std::pair<std::string, JsonReader>> Members() const;

    std::string Text() const;
    double Number() const;
    int Integer() const;
    bool Flag() const;
    std::vector<std::string> Texts() const;
    std::vector<double> AllNumbers() const;

    /// Exactly N numbers.
    template <std::size_t N>
    std::array<double, N> Numbers() const {
        const std::vector<double> values = AllNumbers();
        if (values.size() != N) {
            Fail(std::to_string(N) + " numbers are needed");
        }
        std::array<double, N> result{};
        for (std::size_t i = 0; i < N; ++i) {
            result[i] = values[i];
        }
        return result;
    }

    /// Complains about a key that is not among the names.
    void AllowOnly(std::initializer_list<const char*> keys) const;

    [[noreturn]] void Fail(const std::string& reason) const;

private:
    const nlohmann::json* m_value;
    std::string m_location;
    const std::string* m_fileName;
};

/// A parsed JSON text.
class JsonDocument {
public:
    /// @throws DesktopError (ReadFile) naming file and line when the text is no JSON.
    JsonDocument(const std::string& text, std::string fileName);
    ~JsonDocument();
    JsonDocument(const JsonDocument&) = delete;
    JsonDocument& operator=(const JsonDocument&) = delete;

    JsonReader Root() const;

private:
    std::string m_fileName;
    std::unique_ptr<nlohmann::json> m_json;
};

} // namespace vantor::model
