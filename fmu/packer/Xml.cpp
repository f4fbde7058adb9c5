#include "fmu/packer/Xml.h"

#include <fmt/format.h>
#include <sstream>

namespace kinora::fmu {
namespace {

/// Elements without content have an end in HTML, but for a few.
constexpr unsigned htmlFlags = pugi::format_no_empty_element_tags;

} // namespace

std::string XmlNumber(double number) {
    return fmt::format("{}", number);
}

void Set(pugi::xml_node node, const char* name, const std::string& value) {
    node.append_attribute(name).set_value(value.c_str());
}

void Set(pugi::xml_node node, const char* name, const char* value) {
    node.append_attribute(name).set_value(value);
}

void Set(pugi::xml_node node, const char* name, double value) {
    Set(node, name, XmlNumber(value));
}

void Set(pugi::xml_node node, const char* name, bool value) {
    Set(node, name, value ? "true" : "false");
}

pugi::xml_node Add(pugi::xml_node parent, const char* name, const std::string& text) {
    pugi::xml_node node = parent.append_child(name);
    node.text().set(text.c_str());
    return node;
}

std::string TextOf(const pugi::xml_document& document, bool isHtml) {
    std::ostringstream stream;
    stream << (isHtml ? "<!DOCTYPE html>\n" : "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    const unsigned flags = pugi::format_indent | pugi::format_no_declaration | (isHtml ? htmlFlags : 0U);
    document.save(stream, "  ", flags, pugi::encoding_utf8);
    return stream.str();
}

} // namespace kinora::fmu
