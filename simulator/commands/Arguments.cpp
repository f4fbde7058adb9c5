#include "simulator/commands/Arguments.h"

#include "simulator/commands/Requirements.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

namespace vantor::commands {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

const Value& Arguments::Next() {
    if (m_next >= m_values.size()) {
        throw DesktopError(ErrorCode::MissingArgument, "argument " + std::to_string(m_next + 1) + " is missing");
    }
    return m_values[m_next++];
}

const std::string& Arguments::Text() {
    const Value& value = Next();
    return RequireText(value, Location());
}

bool Arguments::Flag() {
    const Value& value = Next();
    return RequireFlag(value, Location());
}

double Arguments::Number() {
    const Value& value = Next();
    return RequireNumber(value, Location());
}

int Arguments::Integer() {
    const Value& value = Next();
    return RequireInteger(value, Location());
}

const Value::List& Arguments::List() {
    const Value& value = Next();
    return RequireList(value, Location());
}

const Value& Arguments::Any() {
    return Next();
}

void Arguments::Literal(std::string_view text) {
    const std::string& found = Text();
    if (found != text) {
        throw DesktopError(ErrorCode::BadArgumentValue,
                           Location() + " must be " + Quoted(text) + ", not " + Quoted(found));
    }
}

void Arguments::EmptyList() {
    if (!List().empty()) {
        throw DesktopError(ErrorCode::BadArgumentValue, Location() + " must be an array without elements");
    }
}

void Arguments::End() const {
    if (m_next < m_values.size()) {
        throw DesktopError(ErrorCode::InvalidArgument, std::to_string(m_values.size()) +
                                                           " arguments were given, the command takes " +
                                                           std::to_string(m_next));
    }
}

} // namespace vantor::commands
