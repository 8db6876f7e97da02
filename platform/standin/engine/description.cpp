#include "platform/standin/engine/description.h"

#include "platform/standin/schema/describe.h"

namespace standin {
namespace {

void put_children(FrameWriter& out, const std::vector<const Node*>& children) {
  out.array(children.size());
  for (const Node* child : children) {
    const bool top = child->parent == nullptr;
    out.array(5).put(top ? child->prefix + ':' + child->name : child->name);
    out.put(kind_of(*child)).put(child->choice == nullptr ? "" : child->choice->name);
    out.put(child->mandatory).put(child->description);
  }
}

void put_choices(FrameWriter& out, const std::vector<const Choice*>& choices) {
  out.array(choices.size());
  for (const Choice* choice : choices) {
    out.array(3).put(choice->name).put(choice->mandatory).put(description_of(*choice));
  }
}

void put_root(FrameWriter& out, const Schema& schema) {
  out.put("/").put("root").put("").put("").put("").put_nil();
  out.put("Everything that the server has.").put(false).put(false);
  out.array(0).array(0).array(0);
  put_children(out, schema.top());
}

void put_node(FrameWriter& out, const Schema& schema, const Node& node) {
  out.put(path_of(node)).put(kind_of(node)).put(type_of(node));
  out.put(admitted_of(node)).put(units_of(node));
  if (node.dflt) {
    out.put(schema.print(node, *node.dflt));
  } else {
    out.put_nil();
  }
  out.put(node.description).put(node.secret).put(node.mandatory);
  out.array(node.keys.size());
  for (const Node* key : node.keys) out.put(key->name);
  const auto labels = labels_of(node);
  out.array(labels.size());
  for (const auto& [label, description] : labels) out.array(2).put(label).put(description);
  put_choices(out, node.choices);
  put_children(out, node.children);
}

}  // namespace

FrameWriter& put_description(FrameWriter&& out, const Schema& schema, const Path& path) {
  const Node* node = schema.find(path);
  if (node == nullptr) {
    put_root(out, schema);
  } else {
    put_node(out, schema, *node);
  }
  return out;
}

}  // namespace standin
