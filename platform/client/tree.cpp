#include "tree.h"

namespace standin {
namespace {

JsonForm read_form(FrameReader& in) {
  const std::string form = in.text();
  if (form == "str") return JsonForm::quoted;
  if (form == "raw") return JsonForm::raw;
  if (form == "empty") return JsonForm::empty;
  throw WireError("unknown JSON form \"" + form + "\"");
}

std::vector<ShownNode::Entry> read_entries(FrameReader& in) {
  std::vector<ShownNode::Entry> entries;
  for (std::size_t n = in.array(); n > 0; --n) {
    if (in.array() != 2) throw WireError("list entry is not keys and nodes");
    ShownNode::Entry& entry = entries.emplace_back();
    entry.keys = in.texts();
    entry.nodes = read_nodes(in);
  }
  return entries;
}

ShownNode read_node(FrameReader& in) {
  in.array();
  ShownNode node;
  node.kind = static_cast<NodeKind>(in.number());
  node.name = in.text();
  node.module = in.text();
  switch (node.kind) {
    case NodeKind::leaf:
      node.texts.push_back(in.text());
      node.form = read_form(in);
      node.secret = in.boolean();
      return node;
    case NodeKind::leaf_list:
      node.texts = in.texts();
      node.form = read_form(in);
      node.secret = in.boolean();
      return node;
    case NodeKind::container:
      node.children = read_nodes(in);
      return node;
    case NodeKind::list:
      node.entries = read_entries(in);
      return node;
    case NodeKind::error:
      node.texts.push_back(in.text());
      return node;
  }
  throw WireError("unknown kind of node");
}

}  // namespace

std::vector<ShownNode> read_nodes(FrameReader& in) {
  std::vector<ShownNode> nodes;
  for (std::size_t n = in.array(); n > 0; --n) nodes.push_back(read_node(in));
  return nodes;
}

}  // namespace standin
