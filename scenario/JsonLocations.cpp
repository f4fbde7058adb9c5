#include "scenario/JsonLocations.h"

#include "scenario/Errors.h"

#include <fmt/format.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

namespace kinora::scenario {
namespace {

/// Line of the character read last and of the one before it.
struct LineCounter {
    int last = 1;
    int beforeLast = 1;
    int next = 1;

    void Read(char character) {
        beforeLast = last;
        last = next;
        if (character == '\n') {
            ++next;
        }
    }
};

/// Input iterator over a text that counts lines while the parser reads.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* at, LineCounter& counter) : m_at(at), m_counter(&counter) {}
    reference operator*() const { return *m_at; }
    CountingIterator& operator++() {
        m_counter->Read(*m_at);
        ++m_at;
        return *this;
    }
    CountingIterator operator++(int) {
        CountingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CountingIterator& other) const { return m_at == other.m_at; }
    bool operator!=(const CountingIterator& other) const { return m_at != other.m_at; }

private:
    const char* m_at;
    LineCounter* m_counter;
};

/// Follows the parser's events and notes a line for every value.
class LocationRecorder : public nlohmann::json_sax<nlohmann::json> {
public:
    LocationRecorder(const LineCounter& counter, const std::string& fileName)
        : m_counter(counter), m_fileName(fileName) {}

    JsonLocations locations;

    bool null() override { return Value(m_counter.last); }
    bool boolean(bool) override { return Value(m_counter.last); }
    bool string(string_t&) override { return Value(m_counter.last); }
    bool binary(binary_t&) override { return Value(m_counter.last); }
    /// A number ends only at the character after it, which the parser has read already.
    bool number_integer(number_integer_t) override { return Value(m_counter.beforeLast); }
    bool number_unsigned(number_unsigned_t) override { return Value(m_counter.beforeLast); }
    bool number_float(number_float_t, const string_t&) override { return Value(m_counter.beforeLast); }

    bool start_object(std::size_t) override { return Enter(false); }
    bool start_array(std::size_t) override { return Enter(true); }
    bool end_object() override { return Leave(); }
    bool end_array() override { return Leave(); }

    bool key(string_t& name) override {
        Level& level = m_levels.back();
        if (!level.keys.insert(name).second) {
            throw InputError(fmt::format("{}:{}: {}: the key \"{}\" stands twice; remove one.", m_fileName,
                                         m_counter.last, level.pointer.empty() ? "/" : level.pointer, name));
        }
        level.key = name;
        level.keyLine = m_counter.last;
        return true;
    }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& error) override {
        const std::string text = error.what();
        const std::size_t reason = text.find(": ");
        throw InputError(fmt::format("{}:{}: not valid JSON: {}", m_fileName, m_counter.last,
                                     reason == std::string::npos ? text : text.substr(reason + 2)));
    }

private:
    struct Level {
        std::string pointer;
        bool isArray = false;
        std::size_t index = 0;
        std::string key;
        int keyLine = 1;
        std::set<std::string> keys;
    };

    /// Notes where the value that comes now stands.
    /// @param line  where it begins
    /// @return its pointer
    std::string Note(int line) {
        std::string pointer;
        if (!m_levels.empty()) {
            Level& level = m_levels.back();
            pointer = PointerTo(level.pointer, level.isArray ? std::to_string(level.index++) : level.key);
            line = level.isArray ? line : level.keyLine;
        }
        const std::size_t order = locations.places.size();
        locations.places[pointer] = {line, order, {}};
        return pointer;
    }
    bool Value(int line) {
        Note(line);
        return true;
    }
    bool Enter(bool isArray) {
        if (m_levels.size() > 100) {
            throw InputError(fmt::format("{}:{}: too deeply nested.", m_fileName, m_counter.last));
        }
        m_levels.push_back({Note(m_counter.last), isArray, 0, {}, 1, {}});
        return true;
    }
    bool Leave() {
        m_levels.pop_back();
        return true;
    }

    const LineCounter& m_counter;
    const std::string& m_fileName;
    std::vector<Level> m_levels;
};

} // namespace

JsonLocation JsonLocations::Of(std::string pointer) const {
    for (;;) {
        const auto found = places.find(pointer);
        if (found != places.end()) {
            return found->second;
        }
        if (pointer.empty()) {
            return {};
        }
        pointer.erase(pointer.rfind('/'));
    }
}

void JsonLocations::Replace(const std::string& pointer, const std::string& origin) {
    JsonLocation place = Of(pointer);
    place.origin = origin;
    for (auto inside = places.lower_bound(pointer + "/");
         inside != places.end() && inside->first.rfind(pointer + "/", 0) == 0;) {
        inside = places.erase(inside);
    }
    places[pointer] = place;
}

std::string PointerTo(const std::string& parent, const std::string& key) {
    std::string pointer = parent + "/";
    for (const char character : key) {
        if (character == '~') {
            pointer += "~0";
        } else if (character == '/') {
            pointer += "~1";
        } else {
            pointer += character;
        }
    }
    return pointer;
}

JsonLocations ReadJsonLocations(const std::string& text, const std::string& fileName) {
    LineCounter counter;
    LocationRecorder recorder(counter, fileName);
    const char* begin = text.data();
    nlohmann::json::sax_parse(CountingIterator(begin, counter), CountingIterator(begin + text.size(), counter),
                              &recorder, nlohmann::json::input_format_t::json, true, true);
    return std::move(recorder.locations);
}

} // namespace kinora::scenario
