#include "platform/standin/engine/show.h"

#include "platform/standin/data/json.h"
#include "platform/wire/messages.h"

namespace standin {
namespace {

class TreeWriter {
 public:
  TreeWriter(FrameWriter& out, const Schema& schema) : out_(out), schema_(schema) {}

  void nodes(const std::vector<TreeNode>& all) {
    const auto runs = runs_of(all);
    out_.array(runs.size());
    for (const auto& [first, last] : runs) node(all, first, last);
  }
  bool complete() const { return complete_; }

 private:
  using Run = std::pair<std::size_t, std::size_t>;

  // Entries of one list stand side by side and make up one node of the answer.
  static std::vector<Run> runs_of(const std::vector<TreeNode>& all) {
    std::vector<Run> runs;
    for (std::size_t i = 0; i < all.size(); ++i) {
      const bool joins = !runs.empty() && is_entry(all[i]) && is_entry(all[i - 1]) &&
                         all[i].node == all[i - 1].node;
      if (joins)
        runs.back().second = i + 1;
      else
        runs.emplace_back(i, i + 1);
    }
    return runs;
  }
  static bool is_entry(const TreeNode& n) {
    return n.node->kind == Node::Kind::list && n.error.empty();
  }

  void head(std::size_t size, NodeKind kind, const Node& node) {
    out_.array(size).put(std::uint64_t{static_cast<std::uint8_t>(kind)});
    out_.put(node.name).put(node.module);
  }

  void node(const std::vector<TreeNode>& all, std::size_t first, std::size_t last) {
    const TreeNode& n = all[first];
    if (!n.error.empty()) {
      complete_ = false;
      head(4, NodeKind::error, *n.node);
      out_.put(n.error);
    } else if (n.node->kind == Node::Kind::list) {
      head(4, NodeKind::list, *n.node);
      out_.array(last - first);
      for (std::size_t i = first; i < last; ++i) entry(all[i]);
    } else if (n.node->has_value()) {
      leaf(*n.node, n.value.value_or(Value()));
    } else {
      head(4, NodeKind::container, *n.node);
      nodes(n.children);
    }
  }

  void entry(const TreeNode& n) {
    out_.array(2).array(n.keys.size());
    for (std::size_t i = 0; i < n.keys.size(); ++i)
      out_.put(schema_.print(*n.node->keys.at(i), n.keys[i]));
    nodes(n.children);
  }

  void leaf(const Node& node, const Value& v) {
    if (node.kind == Node::Kind::leaf) {
      head(6, NodeKind::leaf, node);
      out_.put(text(node, v)).put(json_form(node, v)).put(node.secret);
      return;
    }
    const std::vector<Value> items = v.is(Type::list) ? v.items() : std::vector<Value>{};
    head(6, NodeKind::leaf_list, node);
    out_.array(items.size());
    for (const Value& item : items) out_.put(text(node, item));
    out_.put(items.empty() ? std::string_view("str") : json_form(node, items.front()));
    out_.put(node.secret);
  }

  std::string text(const Node& node, const Value& v) const {
    return node.type == Type::xmltag ? std::string() : schema_.print(node, v);
  }

  FrameWriter& out_;
  const Schema& schema_;
  bool complete_ = true;
};

}  // namespace

std::string_view json_form(const Node& node, const Value& v) {
  if (node.type == Type::xmltag) return "empty";
  if (node.type == Type::enumeration) return "str";
  return json_kind(v.type()) == Json::Kind::string ? "str" : "raw";
}

bool put_tree(FrameWriter& out, const Schema& schema, const std::vector<TreeNode>& nodes) {
  TreeWriter writer(out, schema);
  writer.nodes(nodes);
  return writer.complete();
}

}  // namespace standin
