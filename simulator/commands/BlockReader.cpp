#include "simulator/commands/BlockReader.h"

#include "simulator/commands/Requirements.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

constexpr std::string_view nameMark = "NAME:";

/// What an element shows of itself in a complaint.
std::string Shown(const Value& value) {
    if (const std::string* text = value.AsText()) {
        return text->size() > 60 ? Quoted(text->substr(0, 60)) + "..." : Quoted(*text);
    }
    return value.Kind();
}

} // namespace

BlockReader::BlockReader(const Value::List& elements, const std::string& location) : m_elements(elements) {
    const std::string* head = elements.empty() ? nullptr : elements[0].AsText();
    if (!head || head->compare(0, nameMark.size(), nameMark) != 0) {
        throw DesktopError(ErrorCode::MissingArgument,
                           location + ": the array must begin with \"NAME:\"" +
                               (elements.empty() ? std::string(", but it has no elements")
                                                 : ", but here stands " + Shown(elements[0])));
    }
    m_name = head->substr(nameMark.size());
    m_next = 1;
}

BlockReader::BlockReader(const Value::List& elements, const std::string& location, std::string_view name)
    : BlockReader(elements, location) {
    if (m_name != name) {
        throw DesktopError(ErrorCode::InvalidArgument, location + ": " +
                                                           Quoted(std::string(nameMark) + std::string(name)) +
                                                           " is needed, not " + Quoted(std::string(nameMark) + m_name));
    }
}

std::string BlockReader::LocationOf(std::string_view key) const {
    return Quoted(key) + " of " + Quoted(std::string(nameMark) + m_name);
}

const Value& BlockReader::NextElement(std::string_view expected) {
    if (AtEnd()) {
        throw DesktopError(ErrorCode::MissingArgument,
                           Quoted(std::string(nameMark) + m_name) + ": " + Quoted(expected) + " is missing");
    }
    return m_elements[m_next++];
}

const Value& BlockReader::ValueOf(std::string_view key) {
    const Value& found = NextElement(key);
    if (!found.AsText() || *found.AsText() != key) {
        throw DesktopError(ErrorCode::InvalidArgument, Quoted(std::string(nameMark) + m_name) + ", element " +
                                                           std::to_string(m_next) + ": " + Quoted(key) +
                                                           " is needed, here stands " + Shown(found));
    }
    if (AtEnd()) {
        throw DesktopError(ErrorCode::IncompleteArray, LocationOf(key) + ": the value is missing");
    }
    return m_elements[m_next++];
}

const std::string& BlockReader::Text(std::string_view key) {
    return RequireText(ValueOf(key), LocationOf(key));
}

bool BlockReader::Flag(std::string_view key) {
    return RequireFlag(ValueOf(key), LocationOf(key));
}

double BlockReader::Number(std::string_view key) {
    return RequireNumber(ValueOf(key), LocationOf(key));
}

std::vector<std::string> BlockReader::Texts(std::string_view key) {
    return RequireTexts(ValueOf(key), LocationOf(key));
}

const Value::List& BlockReader::List(std::string_view key) {
    return RequireList(ValueOf(key), LocationOf(key));
}

void BlockReader::Literal(std::string_view key, const char* text) {
    const std::string& found = Text(key);
    if (found != text) {
        throw DesktopError(ErrorCode::BadArgumentValue,
                           LocationOf(key) + " must be " + Quoted(text) + ", not " + Quoted(found));
    }
}

void BlockReader::Literal(std::string_view key, bool flag) {
    if (Flag(key) != flag) {
        throw DesktopError(ErrorCode::BadArgumentValue, LocationOf(key) + " must be " + (flag ? "true" : "false"));
    }
}

void BlockReader::Literal(std::string_view key, double number) {
    const double found = Number(key);
    if (found != number) {
        throw DesktopError(ErrorCode::BadArgumentValue, LocationOf(key) + " must be " + model::FormatNumber(number) +
                                                            ", not " + model::FormatNumber(found));
    }
}

BlockReader BlockReader::Block(std::string_view name) {
    const std::string expected = std::string(nameMark) + std::string(name);
    const Value& element = NextElement(expected);
    const std::string location = Quoted(std::string(nameMark) + m_name) + ", element " + std::to_string(m_next);
    return BlockReader(RequireList(element, location), location, name);
}

BlockReader BlockReader::Block() {
    const Value& element = NextElement(nameMark);
    const std::string location = Quoted(std::string(nameMark) + m_name) + ", element " + std::to_string(m_next);
    return BlockReader(RequireList(element, location), location);
}

const std::string& BlockReader::BareText() {
    const Value& element = NextElement("a text");
    return RequireText(element, Quoted(std::string(nameMark) + m_name) + ", element " + std::to_string(m_next));
}

bool BlockReader::NextIs(std::string_view key) const {
    return !AtEnd() && m_elements[m_next].AsText() != nullptr && *m_elements[m_next].AsText() == key;
}

void BlockReader::End() const {
    if (!AtEnd()) {
        throw DesktopError(ErrorCode::InvalidArgument,
                           Quoted(std::string(nameMark) + m_name) + ", element " + std::to_string(m_next + 1) +
                               ": nothing more is known here, but there stands " + Shown(m_elements[m_next]));
    }
}

} // namespace vantor::commands
