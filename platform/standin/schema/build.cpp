// Our nodes from libyang's: names, tags, kinds, annotations, choices.
#include <libyang/plugins_exts.h>

#include <stdexcept>
#include <unordered_map>

#include "types.h"

namespace standin {
namespace {

constexpr std::string_view kAnnotations = "standin-annotations";

// The statements of the annotation module on a node. An extension in the body of a grouping is
// seen on the node that uses it as well; only those of the node's own statement count.
std::unordered_map<std::string, std::string> annotations(const lysc_node* n) {
  std::unordered_map<std::string, std::string> found;
  for (std::size_t i = 0; i < LY_ARRAY_COUNT(n->exts); ++i) {
    const lysc_ext_instance& e = n->exts[i];
    const bool own = (e.parent_stmt & LY_STMT_DATA_NODE_MASK) != 0;
    if (!own || e.def->module->name != kAnnotations) continue;
    found.emplace(e.def->name, e.argument == nullptr ? "" : e.argument);
  }
  return found;
}

// Two names that share a number could not be told apart by a daemon.
class TagNumbers {
 public:
  std::uint32_t number(const std::string& name) {
    const std::uint32_t n = tag_number(name);
    const auto [at, fresh] = names_.emplace(n, name);
    if (!fresh && at->second != name) {
      throw std::runtime_error("the names " + at->second + " and " + name + " have one number");
    }
    return n;
  }

 private:
  std::unordered_map<std::uint32_t, std::string> names_;
};

class Builder {
 public:
  Builder(SchemaNodes& impl, const lysc_type* oid) : impl_(impl), oid_(oid) {}

  // Once all nodes are there: those that others name.
  void link() {
    for (const auto& [node, paths] : suggest_) {
      try {
        for (const std::string& path : split_words(paths)) {
          node->suggestions.push_back(find_node(impl_, parse_path(path)));
        }
      } catch (const std::runtime_error& e) {
        throw std::runtime_error(path_of(*node) + ": ann:suggest: " + e.what());
      }
    }
  }

  void module(const lys_module* module) {
    module_ = module;
    ns_ = tags_.number(module->ns);
    if (module->compiled == nullptr) return;
    for (const lysc_node* n = module->compiled->data; n != nullptr; n = n->next) {
      child(n, {nullptr, nullptr, nullptr, nullptr});
    }
  }

 private:
  // Where a statement stands: in a data node, and perhaps in a case of a choice.
  struct Place {
    Node* parent;
    Choice* choice;
    Choice::Case* in_case;
    const Place* outer;  // of the choice itself
  };

  Tag tag(const lysc_node* n) { return {tags_.number(n->name), ns_}; }

  void child(const lysc_node* n, const Place& place) {
    if (n->nodetype == LYS_CHOICE) return choice(n, place);
    if ((n->nodetype & (LYS_CONTAINER | LYS_LIST | LYS_LEAF | LYS_LEAFLIST)) == 0) {
      throw std::runtime_error(module_->name + (": " + std::string(n->name)) +
                               ": this kind of node is not served");
    }
    data_node(n, place);
  }

  void choice(const lysc_node* n, const Place& place) {
    Choice& made = impl_.choices.emplace_back();
    made.name = n->name;
    made.tag = tag(n);
    made.holder = place.parent;
    made.outer = place.choice;
    if (place.in_case != nullptr) made.outer_case = place.in_case->name;
    made.mandatory = (n->flags & LYS_MAND_TRUE) != 0;
    if (place.parent != nullptr) place.parent->choices.push_back(&made);
    if (place.parent == nullptr) impl_.top_choices.push_back(&made);
    for (const auto* c = reinterpret_cast<const lysc_node_choice*>(n)->cases; c != nullptr;
         c = reinterpret_cast<const lysc_node_case*>(c->next)) {
      const auto* as_node = reinterpret_cast<const lysc_node*>(c);
      made.cases.push_back({c->name, tag(as_node), {}});
      // The children of all cases are one list.
      for (const lysc_node* d = c->child; d != nullptr && d->parent == as_node; d = d->next) {
        child(d, {place.parent, &made, &made.cases.back(), &place});
      }
    }
  }

  void data_node(const lysc_node* n, const Place& place) {
    Node& node = impl_.nodes.emplace_back();
    node.name = n->name;
    node.module = module_->name;
    node.prefix = module_->prefix;
    node.tag = tag(n);
    node.parent = place.parent;
    node.choice = place.choice;
    node.lysc = n;
    node.description = flowed(n->dsc);
    if (place.in_case != nullptr) node.case_name = place.in_case->name;
    // A case counts the nodes of the choices inside it as its own.
    for (const Place* p = &place; p != nullptr && p->in_case != nullptr; p = p->outer) {
      p->in_case->nodes.push_back(&node);
    }
    if (place.parent != nullptr) place.parent->children.push_back(&node);
    if (place.parent == nullptr) impl_.top.push_back(&node);
    kind(node, n);
    annotate(node, n);
    for (const lysc_node* c = lysc_node_child(n); c != nullptr; c = c->next) {
      child(c, {&node, nullptr, nullptr, nullptr});
    }
    for (const Node* c : node.children) {
      if (c->is_key) node.keys.push_back(c);
    }
  }

  void kind(Node& node, const lysc_node* n) {
    switch (n->nodetype) {
      case LYS_LIST:
        node.kind = Node::Kind::list;
        node.type_name = "list";
        if ((n->flags & LYS_KEYLESS) != 0) throw std::runtime_error(node.name + ": no keys");
        break;
      case LYS_CONTAINER: {
        // libyang's own flag is set for other reasons as well.
        const auto* parsed = static_cast<const lysp_node_container*>(n->priv);
        const bool presence = parsed != nullptr && parsed->presence != nullptr;
        node.kind = presence ? Node::Kind::presence : Node::Kind::container;
        node.type_name = "container";
        break;
      }
      case LYS_LEAFLIST:
        node.kind = Node::Kind::leaf_list;
        node.user_ordered = (n->flags & LYS_ORDBY_USER) != 0;
        break;
      default:
        node.kind = Node::Kind::leaf;
        node.is_key = (n->flags & LYS_KEY) != 0;
    }
    node.mandatory = (n->flags & LYS_MAND_TRUE) != 0 && node.is_leaf();
  }

  void annotate(Node& node, const lysc_node* n) {
    auto notes = annotations(n);
    node.callpoint = notes["callpoint"];
    node.hook = notes["hook"];
    node.valpoint = notes["valpoint"];
    node.stored = notes.contains("stored");
    node.encrypted = notes.contains("encrypted");
    node.secret = node.encrypted || notes.contains("secret");
    if (notes.contains("suggest")) suggest_.emplace_back(&node, flowed(notes["suggest"].c_str()));
    if (!node.callpoint.empty()) impl_.callpoints.insert(node.callpoint);
    if (!node.hook.empty()) impl_.callpoints.insert(node.hook);
    if (!node.valpoint.empty()) impl_.valpoints.insert(node.valpoint);
    const auto inherit = [&node](bool here, const Node* Node::*carrier) {
      node.*carrier = here ? &node : node.parent == nullptr ? nullptr : node.parent->*carrier;
    };
    inherit(!node.callpoint.empty(), &Node::transform);
    inherit(!node.valpoint.empty(), &Node::validated);
    inherit(node.stored, &Node::stored_root);
    node.hooked = node.hook.empty() ? nullptr : &node;
    if (node.has_value()) value_type(node, n, notes.contains("octets"));
  }

  void value_type(Node& node, const lysc_node* n, bool octets) {
    try {
      describe_type(node, libyang_type(n), octets, oid_);
    } catch (const std::runtime_error& e) {
      throw std::runtime_error(module_->name + (": " + node.name) + ": " + e.what());
    }
    if (!node.is_leaf()) return;
    const auto* dflt = reinterpret_cast<const lysc_node_leaf*>(n)->dflt;
    if (dflt == nullptr) return;
    const char* text = lyd_value_get_canonical(impl_.ctx.get(), dflt);
    node.dflt = read_value(impl_.ctx.get(), node, text == nullptr ? "" : text).value;
  }

  SchemaNodes& impl_;
  const lysc_type* oid_;
  const lys_module* module_ = nullptr;
  std::uint32_t ns_ = 0;
  TagNumbers tags_;
  std::vector<std::pair<Node*, std::string>> suggest_;
};

}  // namespace

void build_nodes(SchemaNodes& impl, const LoadedModules& loaded) {
  std::unordered_map<std::string, std::string> prefixes;
  Builder builder(impl, loaded.oid);
  for (const lys_module* module : loaded.modules) {
    const auto [at, fresh] = prefixes.emplace(module->prefix, module->name);
    if (!fresh) {
      throw std::runtime_error("the modules " + at->second + " and " + module->name +
                               " have one prefix");
    }
    builder.module(module);
  }
  builder.link();
  // From here on the compiled nodes lead back to ours.
  ly_ctx_unset_options(impl.ctx.get(), LY_CTX_SET_PRIV_PARSED);
  for (Node& node : impl.nodes) const_cast<lysc_node*>(node.lysc)->priv = &node;
}

}  // namespace standin
