#include "simulator/commands/Requirements.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <cmath>

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

[[noreturn]] void WrongType(const Value& value, const std::string& location, const char* wanted,
                            ErrorCode code = ErrorCode::UnsupportedArgumentType) {
    throw DesktopError(value.IsEmpty() ? ErrorCode::MissingArgument : code,
                       location + ": " + wanted + " is needed, not " + value.Kind());
}

} // namespace

const std::string& RequireText(const Value& value, const std::string& location) {
    if (const std::string* text = value.AsText()) {
        return *text;
    }
    WrongType(value, location, "a text (VT_BSTR)");
}

bool RequireFlag(const Value& value, const std::string& location) {
    if (const bool* flag = value.AsFlag()) {
        return *flag;
    }
    WrongType(value, location, "a flag (VT_BOOL)");
}

double RequireNumber(const Value& value, const std::string& location) {
    const Value::Integer* integer = value.AsInteger();
    if (integer && integer->type == Value::Integer::Type::Short) {
        return integer->value;
    }
    const double* number = value.AsNumber();
    if (!number) {
        WrongType(value, location, "a number (VT_R8)", ErrorCode::NonNumericArgument);
    }
    if (!std::isfinite(*number)) {
        throw DesktopError(ErrorCode::BadArgumentValue, location + ": the number is not finite");
    }
    return *number;
}

int RequireInteger(const Value& value, const std::string& location) {
    const Value::Integer* integer = value.AsInteger();
    if (!integer || integer->type == Value::Integer::Type::Long) {
        WrongType(value, location, "a whole number (VT_INT)", ErrorCode::NonNumericArgument);
    }
    return integer->value;
}

const Value::List& RequireList(const Value& value, const std::string& location) {
    if (const Value::List* list = value.AsList()) {
        return *list;
    }
    WrongType(value, location, "an array (VT_ARRAY|VT_VARIANT)");
}

std::vector<std::string> RequireTexts(const Value& value, const std::string& location) {
    const Value::List& list = RequireList(value, location);
    std::vector<std::string> texts;
    texts.reserve(list.size());
    for (const auto& element : list) {
        if (!element.AsText()) {
            WrongType(element, location + ", element " + std::to_string(texts.size() + 1), "a text (VT_BSTR)");
        }
        texts.push_back(*element.AsText());
    }
    return texts;
}

void FailBadValue(const std::string& reason) {
    throw DesktopError(ErrorCode::BadArgumentValue, reason);
}

void RequireOneOf(const std::string& text, std::initializer_list<const char*> known, const std::string& location) {
    if (std::none_of(known.begin(), known.end(), [&](const char* word) { return text == word; })) {
        FailBadValue(location + ": unknown value " + Quoted(text) + "; known are " +
                     model::QuotedList(std::vector<std::string>(known.begin(), known.end())));
    }
}

std::string RequireQuoted(const std::string& text, const std::string& location) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') {
        FailBadValue(location + ": a name in double quotes is needed, not " + text);
    }
    return model::Unquoted(text);
}

} // namespace vantor::commands
