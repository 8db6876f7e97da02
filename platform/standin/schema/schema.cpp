#include "schema.h"

#include <algorithm>

#include "schema_impl.h"

namespace standin {

bool Node::reaches_callbacks() const {
  if (is_external()) return true;
  return std::any_of(children.begin(), children.end(),
                     [](const Node* c) { return c->reaches_callbacks(); });
}

const Node* Node::child(std::string_view child_name) const {
  const auto found = std::ranges::find(children, child_name, &Node::name);
  return found == children.end() ? nullptr : *found;
}

// A tag of another module stands for the same name here: the daemon names nodes of the dynamic
// configuration by the tags of its own model.
const Node* Node::child(Tag child_tag) const {
  const auto found =
      std::ranges::find(children, child_tag.tag, [](const Node* c) { return c->tag.tag; });
  return found == children.end() ? nullptr : *found;
}

NodePath NodePath::parent() const {
  NodePath up = *this;
  up.steps.pop_back();
  return up;
}

NodePath NodePath::child(const Node& c, Level keys) const {
  NodePath down = *this;
  down.steps.push_back({&c, std::move(keys)});
  return down;
}

NodePath NodePath::with_keys(Level keys) const {
  NodePath other = *this;
  other.steps.back().keys = std::move(keys);
  return other;
}

Keypath to_keypath(const NodePath& path) {
  Keypath levels;
  for (const auto& step : path.steps) {
    levels.push_back({Value::tag(step.node->tag)});
    if (!step.keys.empty()) levels.push_back(step.keys);
  }
  return levels;
}

Schema::Schema() : impl_(std::make_unique<Impl>()) {}
Schema::~Schema() = default;

std::unique_ptr<Schema> Schema::load(const std::vector<std::string>& directories) {
  LoadedModules loaded = load_modules(directories);
  std::unique_ptr<Schema> schema(new Schema);
  schema->impl_->ctx = std::move(loaded.ctx);
  build_nodes(*schema->impl_, loaded);
  return schema;
}

const std::vector<const Node*>& Schema::top() const { return impl_->top; }

std::vector<Node*> Schema::all() {
  std::vector<Node*> nodes;
  for (Node& node : impl_->nodes) nodes.push_back(&node);
  return nodes;
}

bool Schema::has_callpoint(std::string_view name) const { return impl_->callpoints.contains(name); }
bool Schema::has_valpoint(std::string_view name) const { return impl_->valpoints.contains(name); }
ly_ctx* Schema::context() const { return impl_->ctx.get(); }

const Choice* Schema::find_choice(const Node& holder, std::string_view name) const {
  const auto found = std::ranges::find(holder.choices, name, &Choice::name);
  return found == holder.choices.end() ? nullptr : *found;
}

}  // namespace standin
