#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace tavro::service {

/// Parses `bytes` in whatever encoding they declare. Throws `BookError` if they are not
/// XML or the encoding is unknown.
pugi::xml_document parseXml(std::string bytes);

/// The name of an element or attribute without its namespace prefix.
std::string_view localName(std::string_view qualifiedName);

/// The first element below `node`, at any depth, whose name without prefix is `name`; a null node
/// if there is none.
pugi::xml_node findElement(pugi::xml_node node, std::string_view name);

/// Value of the attribute of `node` whose name without prefix is `name`; empty if there is none.
std::string attributeOf(pugi::xml_node node, std::string_view name);

/// All text below `node`, as it stands.
std::string textOf(pugi::xml_node node);

}  // namespace tavro::service
