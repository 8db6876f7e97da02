// What the members of Data share; included by the files that define them.
#pragma once

#include "data.h"
#include "node_writer.h"
#include "platform/standin/store/write_set.h"

namespace standin {

struct Data::Impl {
  Impl(const Schema& s, WriteSet& w, StoredTree& t, Callouts& c)
      : schema(s), writes(w), stored(t), callouts(c) {}

  // Runs one writing operation; what it wrote, nested writes of callbacks included, is undone
  // when it throws.
  void operation(const std::function<void()>& body);
  // The same for a write of one node, whose traces are kept only when it is northbound.
  void write(const NodePath& path, Ancestors ancestors, const std::function<void()>& body);
  // Throws the first refusal.
  void ask_validation_point(Data& data, const std::string& point,
                            const std::vector<Touched>& nodes);

  const Schema& schema;
  WriteSet& writes;
  StoredTree& stored;
  Callouts& callouts;
  std::vector<Touched> touched;
  bool validating = false;
  Callbacks callbacks{schema, callouts};
  NodeReader reader{schema, stored, callbacks};
  NodeWriter writer{schema, stored, callbacks, reader, touched};
};

}  // namespace standin
