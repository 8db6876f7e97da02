// Answers that hold many things: rows of a list, attributes, XPath results.
#pragma once

#include <optional>
#include <vector>

#include "platform/standin/engine/transaction.h"
#include "platform/wire/frame.h"

namespace standin {

struct RowsRequest {
  NodePath list;
  std::optional<Level> after;  // the last key that the reader has
  std::uint64_t most = 0;
  bool with_leaves = false;
};

// Rows that the server keeps come from the store, with the leaves directly in them; those behind a
// daemon by a walk, with their keys only. Fewer than `most` when the frame grows large.
FrameWriter put_rows(Transaction& t, const Schema& schema, const RowsRequest& request);
FrameWriter put_attributes(Transaction& t, const Attributes& attributes);
FrameWriter put_hits(Transaction& t, const std::vector<XPathHit>& hits);

}  // namespace standin
