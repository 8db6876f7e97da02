// The schema: what the YANG modules and their annotations say of every node, in our own terms.
// libyang stays behind this header; its calls are made under the server's one lock.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/wire/messages.h"
#include "platform/wire/path.h"
#include "platform/wire/schema_file.h"
#include "platform/wire/value.h"

struct ly_ctx;
struct lysc_node;
struct lys_module;

namespace standin {

// An operation that is refused; the client gets the text. Never leaves the server's process.
struct Refusal : std::runtime_error {
  Refusal(ErrorCode c, const std::string& text) : std::runtime_error(text), code(c) {}
  ErrorCode code;
};

struct Node;

// A choice, and where it stands. Choices nest: a case's nodes may hold further choices.
struct Choice {
  std::string name;
  Tag tag;
  const Node* holder = nullptr;   // data node that holds it (entry or container), null at the top
  const Choice* outer = nullptr;  // choice in one of whose cases this one stands directly
  std::string outer_case;         // that case
  bool mandatory = false;
  struct Case {
    std::string name;
    Tag tag;
    std::vector<const Node*> nodes;  // data nodes directly in the case, nested choices' included
  };
  std::vector<Case> cases;
};

// A data node (choices and cases do not appear in the data).
struct Node {
  enum class Kind : std::uint8_t { container, presence, list, leaf, leaf_list };

  std::string name;
  std::string module;  // module's name
  std::string prefix;
  Tag tag;
  Kind kind = Kind::leaf;
  std::uint16_t id = 0;  // persistent number for store keys, 1..0xfff0; 0 until assigned
  const Node* parent = nullptr;
  std::vector<const Node*> children;   // schema order, keys first
  std::vector<const Choice*> choices;  // held directly
  const Choice* choice = nullptr;      // innermost choice that this node stands in, if any
  std::string case_name;               // and its case there
  std::vector<const Node*> keys;       // list
  bool is_key = false;

  // Leaf and leaf-list.
  Type type = Type::buf;  // ipv4 stands for "IPv4 or IPv6" too; xmltag for the type empty
  bool user_ordered = false;
  bool encrypted = false;  // kept and read back only in encrypted form
  bool secret = false;     // encrypted, or annotated as a key: masked wherever people read
  bool mandatory = false;
  std::optional<Value> dflt;
  std::vector<std::pair<std::int32_t, std::string>> labels;  // enumeration, by number

  std::string callpoint;  // annotated here
  std::string hook;       // annotated here
  std::string valpoint;   // annotated here
  bool stored = false;    // annotated here: the subtree is kept in the store as well
  // Inherited: nearest self-or-ancestor that carries the annotation, or null.
  const Node* transform = nullptr;  // carrier of `callpoint`
  const Node* hooked = nullptr;  // carrier of `hook` (only the node itself: hooks do not inherit)
  const Node* validated = nullptr;    // carrier of `valpoint`
  const Node* stored_root = nullptr;  // carrier of `stored`

  std::vector<const Node*> suggestions;  // annotated here: nodes whose values are natural here
  std::string description;
  std::string type_name;            // for people: "string", "enumeration", "ip-address"
  const lysc_node* lysc = nullptr;  // its `priv` is this Node

  bool is_leaf() const { return kind == Kind::leaf; }
  bool has_value() const { return kind == Kind::leaf || kind == Kind::leaf_list; }
  // Answered by callbacks rather than by the store.
  bool is_external() const { return transform != nullptr && stored_root == nullptr; }
  // It, or something below it, is.
  bool reaches_callbacks() const;
  const Node* child(std::string_view child_name) const;
  const Node* child(Tag child_tag) const;
};

// "/snmp:snmp/community/name": without keys.
std::string path_of(const Node& node);

// A node with the keys on the way to it.
struct NodePath {
  struct Step {
    const Node* node = nullptr;
    Level keys;  // list entry: its keys; leaf-list entry: its value; else empty
    bool operator==(const Step&) const = default;
  };
  std::vector<Step> steps;

  bool empty() const { return steps.empty(); }
  const Node& node() const { return *steps.back().node; }
  // A list or leaf-list is named with the keys of one entry.
  bool is_entry() const { return !steps.back().keys.empty(); }
  NodePath parent() const;
  NodePath child(const Node& c, Level keys = {}) const;
  NodePath with_keys(Level keys) const;  // of the last step
  bool operator==(const NodePath&) const = default;
};

Keypath to_keypath(const NodePath& path);

class Schema {
 public:
  // Loads every module found in the directories. Throws std::runtime_error with one line that
  // names file, line and reason.
  static std::unique_ptr<Schema> load(const std::vector<std::string>& directories);
  ~Schema();

  const std::vector<const Node*>& top() const;
  // All data nodes, parents before children; the store assigns their ids here.
  std::vector<Node*> all();
  bool has_callpoint(std::string_view name) const;  // transform or hook
  bool has_valpoint(std::string_view name) const;

  // Resolves names, prefixes and tags, and reads textual keys by their types. Throws Refusal
  // (badpath, badvalue) with a sentence that names the element. `entry_required`: every list on
  // the way but the last element must have keys.
  NodePath resolve(const Path& path) const;
  NodePath resolve(const Keypath& kp) const;
  // The node alone: keys may be missing, and are not read. Null for the root. Throws Refusal
  // (badpath).
  const Node* find(const Path& path) const;
  const Choice* find_choice(const Node& holder, std::string_view name) const;

  // "/snmp:snmp/community{public}/name": prefix on the first element, keys by label and quoted.
  std::string to_text(const NodePath& path) const;

  // Reads a value in the client's syntax; the type's own rules (range, pattern, length) are asked
  // of libyang. Throws Refusal (badvalue): names the node, the value unless it is a secret, and
  // the reason. Leaf-lists: one entry.
  Value parse(const Node& node, std::string_view text) const;
  // The same check for a value that came typed; returns it as it is stored (str becomes the node's
  // type). Throws Refusal (badtype, badvalue). A leaf-list takes a list, or one entry.
  Value check(const Node& node, const Value& v) const;
  // In the client's syntax: enumerations by label, booleans true and false. What the type does not
  // admit is printed as it is.
  std::string print(const Node& node, const Value& v) const;
  // True when the node's type admits the value, without a text.
  bool admits(const Node& node, const Value& v) const;
  // Canonical text for libyang.
  std::string to_yang(const Node& node, const Value& v) const;

  SchemaFile compact() const;
  ly_ctx* context() const;  // for validation and XPath, in the files that materialise trees

 private:
  Schema();
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace standin
