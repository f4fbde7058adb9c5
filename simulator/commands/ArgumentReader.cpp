#include "simulator/commands/ArgumentReader.h"

#include "simulator/model/Text.h"

#include <cmath>

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

constexpr std::string_view nameMark = "NAME:";

[[noreturn]] void WrongType(const Value& value, const std::string& place, const char* wanted,
                            ErrorCode code = ErrorCode::UnsupportedArgumentType) {
    throw DesktopError(value.IsEmpty() ? ErrorCode::MissingArgument : code,
                       place + ": " + wanted + " is needed, not " + value.Kind());
}

/// What an element shows of itself in a complaint.
std::string Shown(const Value& value) {
    if (const std::string* text = value.AsText()) {
        return text->size() > 60 ? Quoted(text->substr(0, 60)) + "..." : Quoted(*text);
    }
    return value.Kind();
}

} // namespace

const std::string& NeedText(const Value& value, const std::string& place) {
    if (const std::string* text = value.AsText()) {
        return *text;
    }
    WrongType(value, place, "a text (VT_BSTR)");
}

bool NeedFlag(const Value& value, const std::string& place) {
    if (const bool* flag = value.AsFlag()) {
        return *flag;
    }
    WrongType(value, place, "a flag (VT_BOOL)");
}

double NeedNumber(const Value& value, const std::string& place) {
    const Value::Integer* integer = value.AsInteger();
    if (integer != nullptr && integer->type == Value::Integer::Type::Short) {
        return integer->value;
    }
    const double* number = value.AsNumber();
    if (number == nullptr) {
        WrongType(value, place, "a number (VT_R8)", ErrorCode::NonNumericArgument);
    }
    if (!std::isfinite(*number)) {
        throw DesktopError(ErrorCode::BadArgumentValue, place + ": the number is not finite");
    }
    return *number;
}

int NeedInteger(const Value& value, const std::string& place) {
    const Value::Integer* integer = value.AsInteger();
    if (integer == nullptr || integer->type == Value::Integer::Type::Long) {
        WrongType(value, place, "a whole number (VT_INT)", ErrorCode::NonNumericArgument);
    }
    return integer->value;
}

const Value::List& NeedList(const Value& value, const std::string& place) {
    if (const Value::List* list = value.AsList()) {
        return *list;
    }
    WrongType(value, place, "an array (VT_ARRAY|VT_VARIANT)");
}

std::vector<std::string> NeedTexts(const Value& value, const std::string& place) {
    const Value::List& list = NeedList(value, place);
    std::vector<std::string> texts;
    texts.reserve(list.size());
    for (const auto& element : list) {
        if (element.AsText() == nullptr) {
            WrongType(element, place + ", element " + std::to_string(texts.size() + 1), "a text (VT_BSTR)");
        }
        texts.push_back(*element.AsText());
    }
    return texts;
}

const Value& Arguments::Next() {
    if (m_next >= m_values.size()) {
        throw DesktopError(ErrorCode::MissingArgument, "argument " + std::to_string(m_next + 1) + " is missing");
    }
    return m_values[m_next++];
}

const std::string& Arguments::Text() {
    const Value& value = Next();
    return NeedText(value, Place());
}

bool Arguments::Flag() {
    const Value& value = Next();
    return NeedFlag(value, Place());
}

double Arguments::Number() {
    const Value& value = Next();
    return NeedNumber(value, Place());
}

int Arguments::Integer() {
    const Value& value = Next();
    return NeedInteger(value, Place());
}

const Value::List& Arguments::List() {
    const Value& value = Next();
    return NeedList(value, Place());
}

const Value& Arguments::Any() {
    return Next();
}

void Arguments::Literal(std::string_view text) {
    const std::string& found = Text();
    if (found != text) {
        throw DesktopError(ErrorCode::BadArgumentValue,
                           Place() + " must be " + Quoted(text) + ", not " + Quoted(found));
    }
}

void Arguments::EmptyList() {
    if (!List().empty()) {
        throw DesktopError(ErrorCode::BadArgumentValue, Place() + " must be an array without elements");
    }
}

void Arguments::End() const {
    if (m_next < m_values.size()) {
        throw DesktopError(ErrorCode::InvalidArgument, std::to_string(m_values.size()) +
                                                           " arguments were given, the command takes " +
                                                           std::to_string(m_next));
    }
}

BlockReader::BlockReader(const Value::List& elements, const std::string& place) : m_elements(elements) {
    const std::string* head = elements.empty() ? nullptr : elements[0].AsText();
    if (head == nullptr || head->compare(0, nameMark.size(), nameMark) != 0) {
        throw DesktopError(ErrorCode::MissingArgument,
                           place + ": the array must begin with \"NAME:\"" +
                               (elements.empty() ? std::string(", but it has no elements")
                                                 : ", but here stands " + Shown(elements[0])));
    }
    m_name = head->substr(nameMark.size());
    m_next = 1;
}

BlockReader::BlockReader(const Value::List& elements, const std::string& place, std::string_view name)
    : BlockReader(elements, place) {
    if (m_name != name) {
        throw DesktopError(ErrorCode::InvalidArgument, place + ": " +
                                                           Quoted(std::string(nameMark) + std::string(name)) +
                                                           " is needed, not " + Quoted(std::string(nameMark) + m_name));
    }
}

std::string BlockReader::PlaceOf(std::string_view key) const {
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
    if (found.AsText() == nullptr || *found.AsText() != key) {
        throw DesktopError(ErrorCode::InvalidArgument, Quoted(std::string(nameMark) + m_name) + ", element " +
                                                           std::to_string(m_next) + ": " + Quoted(key) +
                                                           " is needed, here stands " + Shown(found));
    }
    if (AtEnd()) {
        throw DesktopError(ErrorCode::IncompleteArray, PlaceOf(key) + ": the value is missing");
    }
    return m_elements[m_next++];
}

const std::string& BlockReader::Text(std::string_view key) {
    return NeedText(ValueOf(key), PlaceOf(key));
}

bool BlockReader::Flag(std::string_view key) {
    return NeedFlag(ValueOf(key), PlaceOf(key));
}

double BlockReader::Number(std::string_view key) {
    return NeedNumber(ValueOf(key), PlaceOf(key));
}

std::vector<std::string> BlockReader::Texts(std::string_view key) {
    return NeedTexts(ValueOf(key), PlaceOf(key));
}

const Value::List& BlockReader::List(std::string_view key) {
    return NeedList(ValueOf(key), PlaceOf(key));
}

void BlockReader::Literal(std::string_view key, const char* text) {
    const std::string& found = Text(key);
    if (found != text) {
        throw DesktopError(ErrorCode::BadArgumentValue,
                           PlaceOf(key) + " must be " + Quoted(text) + ", not " + Quoted(found));
    }
}

void BlockReader::Literal(std::string_view key, bool flag) {
    if (Flag(key) != flag) {
        throw DesktopError(ErrorCode::BadArgumentValue, PlaceOf(key) + " must be " + (flag ? "true" : "false"));
    }
}

void BlockReader::Literal(std::string_view key, double number) {
    const double found = Number(key);
    if (found != number) {
        throw DesktopError(ErrorCode::BadArgumentValue, PlaceOf(key) + " must be " + model::FormatNumber(number) +
                                                            ", not " + model::FormatNumber(found));
    }
}

BlockReader BlockReader::Block(std::string_view name) {
    const std::string expected = std::string(nameMark) + std::string(name);
    const Value& element = NextElement(expected);
    const std::string place = Quoted(std::string(nameMark) + m_name) + ", element " + std::to_string(m_next);
    return BlockReader(NeedList(element, place), place, name);
}

BlockReader BlockReader::Block() {
    const Value& element = NextElement(nameMark);
    const std::string place = Quoted(std::string(nameMark) + m_name) + ", element " + std::to_string(m_next);
    return BlockReader(NeedList(element, place), place);
}

const std::string& BlockReader::BareText() {
    const Value& element = NextElement("a text");
    return NeedText(element, Quoted(std::string(nameMark) + m_name) + ", element " + std::to_string(m_next));
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
