// The callbacks of the callpoint behind a node, each as a question or an order. What a callpoint
// does not register is not called; one that no daemon ever registered reads as not there and
// takes no writes; one whose daemon has gone is an error for both.
#pragma once

#include <optional>
#include <utility>

#include "callouts.h"

namespace standin {

// All paths name nodes under a transform callpoint (Node::transform). Every member may call out.
class Callbacks {
 public:
  Callbacks(const Schema& schema, Callouts& callouts) : schema_(schema), callouts_(callouts) {}

  // ---- questions
  bool found(const NodePath& path);                  // exists_optional
  std::optional<Value> value(const NodePath& leaf);  // get_elem
  // The entry after the one that was answered with `next`; the first one for -1.
  std::optional<std::pair<Level, std::int64_t>> next(const NodePath& list, std::int64_t next);
  // Null: none, or one that the schema does not know.
  const Choice::Case* selected(const NodePath& holder, const Choice& choice);
  Attributes attributes(const NodePath& path);

  // ---- orders; those that a hook callpoint shares run it afterwards
  void create(const NodePath& path);
  void set(const NodePath& path, const Value& v);
  void remove(const NodePath& path);
  void set_case(const NodePath& holder, const Choice& choice, const Choice::Case* to);
  void set_attribute(const NodePath& path, std::uint32_t number, const Value* v);

  // Refuses what no daemon would take: the transform's, and the hook's of the node itself.
  void require_daemons(const NodePath& path);

 private:
  std::optional<Answer> ask(const NodePath& path, Op op, const Callouts::Arguments& arguments);
  void order(const NodePath& path, Op op, const Callouts::Arguments& arguments);
  void require_live(const std::string& point, const NodePath& path);

  const Schema& schema_;
  Callouts& callouts_;
};

}  // namespace standin
