#include "folvant/kit/BKXMLTreeAtPath.h"

namespace folvant {

pugi::xml_node BKXMLTreeAtPath(const pugi::xml_node& tree, std::string_view path) {
  pugi::xml_node node = tree;
  while (node && !path.empty()) {
    const std::size_t slash = path.find('/');
    const std::string_view name = path.substr(0, slash);
    path = slash == std::string_view::npos ? std::string_view{} : path.substr(slash + 1);
    if (name.empty()) continue;
    pugi::xml_node next;
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
      if (child.type() == pugi::node_element && std::string_view(child.name()) == name) {
        next = child;
        break;
      }
    }
    node = next;
  }
  return node;
}

}  // namespace folvant
