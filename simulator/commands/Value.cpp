#include "simulator/commands/Value.h"

namespace vantor::commands {

Value Value::Texts(const std::vector<std::string>& texts) {
    List list;
    list.reserve(texts.size());
    for (const auto& text : texts) {
        list.emplace_back(text);
    }
    return list;
}

std::string Value::Kind() const {
    if (AsFlag()) {
        return "a flag (VT_BOOL)";
    }
    if (AsNumber()) {
        return "a number (VT_R8)";
    }
    if (const Integer* integer = AsInteger()) {
        switch (integer->type) {
        case Integer::Type::Short:
            return "a whole number (VT_I2)";
        case Integer::Type::Long:
            return "a whole number (VT_I4)";
        case Integer::Type::Int:
            return "a whole number (VT_INT)";
        }
    }
    if (AsText()) {
        return "a text (VT_BSTR)";
    }
    if (AsList()) {
        return "an array (VT_ARRAY|VT_VARIANT)";
    }
    if (AsObject()) {
        return "an object (VT_DISPATCH)";
    }
    if (const Foreign* foreign = AsForeign()) {
        return "a value of automation type " + std::to_string(foreign->type);
    }
    return "nothing (VT_EMPTY)";
}

} // namespace vantor::commands
