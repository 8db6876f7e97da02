// What Schema keeps behind its header. Included by this folder's sources only.
#pragma once

#include <libyang/libyang.h>

#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "schema.h"

namespace standin {

struct ContextDeleter {
  void operator()(ly_ctx* ctx) const { ly_ctx_destroy(ctx); }
};
using ContextPtr = std::unique_ptr<ly_ctx, ContextDeleter>;

struct SchemaNodes {
  ContextPtr ctx;
  std::deque<Node> nodes;  // parents before children; addresses stay
  std::deque<Choice> choices;
  std::vector<const Node*> top;
  std::vector<const Choice*> top_choices;
  std::set<std::string, std::less<>> callpoints;
  std::set<std::string, std::less<>> valpoints;
};
struct Schema::Impl : SchemaNodes {};

// ---- load.cpp: libyang's context and its modules

struct LoadedModules {
  ContextPtr ctx;
  std::vector<const lys_module*> modules;  // those of the directories, by name
  const lysc_type* oid = nullptr;          // type of object identifiers; null when none is defined
};
LoadedModules load_modules(const std::vector<std::string>& directories);

// ---- build.cpp: our nodes from libyang's

// Throws std::runtime_error with one line for what the server cannot serve.
void build_nodes(SchemaNodes& impl, const LoadedModules& loaded);

// ---- resolve.cpp

// The node that a path names, whatever keys it has; null for the root. Throws Refusal (badpath).
const Node* find_node(const SchemaNodes& nodes, const Path& path);

// ---- values.cpp

// A value as it was read or checked, or why it was not: `reason` is empty for what is admitted and
// never holds the value itself.
struct Reading {
  Value value;
  std::string reason;
  bool wrong_type = false;
  bool ok() const { return reason.empty(); }
};
Reading read_value(const ly_ctx* ctx, const Node& node, std::string_view text);
Reading check_value(const ly_ctx* ctx, const Node& node, const Value& v);
// Names the node, the value unless it is a secret, and the reason.
Refusal refused_value(const Node& node, const Value& v, const Reading& reading);

}  // namespace standin
