#include "describe.h"

#include "types.h"

namespace standin {
namespace {

const lysc_type_enum* enumeration_of(const Node& node) {
  const lysc_type* type = libyang_type(node.lysc);
  return type->basetype == LY_TYPE_ENUM ? reinterpret_cast<const lysc_type_enum*>(type) : nullptr;
}

}  // namespace

std::string_view kind_of(const Node& node) {
  switch (node.kind) {
    case Node::Kind::container:
      return "container";
    case Node::Kind::presence:
      return "presence container";
    case Node::Kind::list:
      return "list";
    case Node::Kind::leaf:
      return "leaf";
    case Node::Kind::leaf_list:
      return "leaf-list";
  }
  return {};
}

std::string type_of(const Node& node) {
  return node.is_leaf() && node.type == Type::xmltag ? "empty" : node.type_name;
}

std::string admitted_of(const Node& node) {
  const bool says_more = node.has_value() && node.type != Type::xmltag;
  return says_more ? admitted(node) : std::string();
}

std::string_view units_of(const Node& node) {
  const char* units = nullptr;
  if (node.kind == Node::Kind::leaf) {
    units = reinterpret_cast<const lysc_node_leaf*>(node.lysc)->units;
  } else if (node.kind == Node::Kind::leaf_list) {
    units = reinterpret_cast<const lysc_node_leaflist*>(node.lysc)->units;
  }
  return units == nullptr ? std::string_view() : units;
}

std::vector<std::pair<std::string, std::string>> labels_of(const Node& node) {
  std::vector<std::pair<std::string, std::string>> labels;
  if (!node.has_value()) return labels;
  if (node.type == Type::boolean) return {{"true", ""}, {"false", ""}};
  const auto* type = enumeration_of(node);
  if (type == nullptr) return labels;
  for (const auto& [number, label] : node.labels) {
    const char* text = nullptr;
    for (std::size_t i = 0; i < LY_ARRAY_COUNT(type->enums); ++i) {
      if (type->enums[i].name == label) text = type->enums[i].dsc;
    }
    labels.emplace_back(label, flowed(text));
  }
  return labels;
}

std::string description_of(const Choice& choice) {
  for (const Choice::Case& c : choice.cases) {
    // A node of a nested choice stands deeper, so up to the choice of that name.
    if (c.nodes.empty()) continue;
    const lysc_node* n = c.nodes.front()->lysc;
    while (n != nullptr && (n->nodetype != LYS_CHOICE || choice.name != n->name)) n = n->parent;
    return n == nullptr ? std::string() : flowed(n->dsc);
  }
  return {};
}

}  // namespace standin
