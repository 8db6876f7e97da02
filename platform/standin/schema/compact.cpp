// The compact schema: what the client library prints tags and keypaths from.
#include <unordered_map>

#include "schema_impl.h"

namespace standin {
namespace {

class Compactor {
 public:
  SchemaFile compact(const SchemaNodes& impl) {
    holder(impl.top, impl.top_choices, 0);
    return std::move(file_);
  }

 private:
  using Kind = SchemaFileNode::Kind;

  // `place`: index + 1 of what the nodes stand in.
  void holder(const std::vector<const Node*>& nodes, const std::vector<const Choice*>& choices,
              std::uint32_t place) {
    // A choice comes after the one that it stands in.
    for (const Choice* c : choices) choice(*c, nodes, place);
    for (const Node* n : nodes) node(*n, n->choice == nullptr ? place : case_of(*n));
  }

  void choice(const Choice& c, const std::vector<const Node*>& nodes, std::uint32_t place) {
    const auto& module_of = *first_node(c, nodes);
    const std::uint32_t outer = c.outer == nullptr ? place : cases_.at(c.outer).at(c.outer_case);
    const std::uint32_t at = add(c.tag, c.name, module_of.prefix, Kind::choice, outer);
    for (const auto& each : c.cases) {
      cases_[&c][each.name] = add(each.tag, each.name, module_of.prefix, Kind::case_, at);
    }
  }

  // Choices carry no prefix of their own; their nodes are of the same module.
  static const Node* first_node(const Choice& c, const std::vector<const Node*>& nodes) {
    for (const auto& each : c.cases) {
      if (!each.nodes.empty()) return each.nodes.front();
    }
    return nodes.front();
  }

  void node(const Node& n, std::uint32_t place) {
    const std::uint32_t at = add(n.tag, n.name, n.prefix, kind_of(n.kind), place);
    auto& made = file_.nodes.back();
    made.type = n.type;
    made.secret = n.secret;
    made.labels = n.labels;
    for (const Node* key : n.keys) made.keys.push_back(key->tag);
    holder(n.children, n.choices, at);
  }

  std::uint32_t add(Tag tag, const std::string& name, const std::string& prefix, Kind kind,
                    std::uint32_t place) {
    SchemaFileNode made;
    made.tag = tag;
    made.name = name;
    made.prefix = prefix;
    made.kind = kind;
    made.parent = place;
    file_.nodes.push_back(std::move(made));
    return static_cast<std::uint32_t>(file_.nodes.size());
  }

  static Kind kind_of(Node::Kind kind) {
    switch (kind) {
      case Node::Kind::list:
        return Kind::list;
      case Node::Kind::leaf:
        return Kind::leaf;
      case Node::Kind::leaf_list:
        return Kind::leaf_list;
      default:
        return Kind::container;
    }
  }

  std::uint32_t case_of(const Node& n) const { return cases_.at(n.choice).at(n.case_name); }

  SchemaFile file_;
  std::unordered_map<const Choice*, std::unordered_map<std::string, std::uint32_t>> cases_;
};

}  // namespace

SchemaFile Schema::compact() const { return Compactor().compact(*impl_); }

}  // namespace standin
