#pragma once

#include <pugixml.hpp>
#include <string>

namespace kinora::fmu {

/// Which version of the standard an FMU is of.
enum class Fmi { Two = 2, Three = 3 };

/// A number as XML has it: as short as it can be read back.
std::string XmlNumber(double number);

/// @name Attributes and elements
/// @{
void Set(pugi::xml_node node, const char* name, const std::string& value);
void Set(pugi::xml_node node, const char* name, const char* value);
void Set(pugi::xml_node node, const char* name, double value);
void Set(pugi::xml_node node, const char* name, bool value);
/// An element with a text in it.
pugi::xml_node Add(pugi::xml_node parent, const char* name, const std::string& text);
/// @}

/// A document as UTF-8.
std::string TextOf(const pugi::xml_document& document, bool isHtml = false);

} // namespace kinora::fmu
