#include "platform/standin/engine/rows.h"

#include <algorithm>

#include "platform/standin/engine/service.h"
#include "platform/standin/store/key_codec.h"

namespace standin {
namespace {

constexpr std::uint64_t kMostRows = 1000;
constexpr std::size_t kMostOctets = 1u << 20;

struct Row {
  Level keys;
  TaggedValues leaves;
};

struct Rows {
  std::vector<Row> rows;
  bool end = false;
};

std::size_t octets(const Value& v) {
  switch (v.type()) {
    case Type::str:
    case Type::buf:
    case Type::binary:
      return v.bytes().size();
    case Type::oid:
      return 5 * v.oid().size();
    default:
      return 16;
  }
}

std::string encoded(const NodePath& list, const Level& keys) {
  return store_key(list.with_keys(keys));
}

Rows stored_rows(Transaction& t, const RowsRequest& request, std::uint64_t most) {
  Rows found;
  std::size_t size = 0;
  std::optional<Level> last = request.after;
  while (found.rows.size() < most && size < kMostOctets) {
    std::optional<Level> keys = t.stored().next(request.list, last ? &*last : nullptr);
    if (!keys) {
      found.end = true;
      break;
    }
    Row row{*keys, {}};
    for (const Value& key : *keys) size += octets(key);
    if (request.with_leaves) row.leaves = t.stored().leaves(request.list.with_keys(*keys));
    for (const auto& [tag, value] : row.leaves) size += octets(value);
    last = std::move(keys);
    found.rows.push_back(std::move(row));
  }
  return found;
}

// Such a list has no place to go on from but its beginning. The row after the last one, or where
// that has been deleted, the first with a greater key.
Rows walked_rows(Transaction& t, const RowsRequest& request, std::uint64_t most) {
  std::vector<Level> all;
  t.data().walk(request.list, [&](const Level& keys) {
    all.push_back(keys);
    return true;
  });
  auto next = all.begin();
  if (request.after) {
    next = std::find(all.begin(), all.end(), *request.after);
    if (next != all.end()) {
      ++next;
    } else {
      const std::string last = encoded(request.list, *request.after);
      next = std::find_if(all.begin(), all.end(),
                          [&](const Level& keys) { return encoded(request.list, keys) > last; });
    }
  }
  Rows found;
  for (; next != all.end() && found.rows.size() < most; ++next)
    found.rows.push_back(Row{std::move(*next), {}});
  found.end = next == all.end();
  return found;
}

}  // namespace

FrameWriter put_rows(Transaction& t, const Schema& schema, const RowsRequest& request) {
  const NodePath& list = request.list;
  if (list.node().kind != Node::Kind::list || list.is_entry())
    throw Refusal(ErrorCode::badpath, schema.to_text(list) + ": not a list");
  const std::uint64_t most = std::clamp<std::uint64_t>(request.most, 1, kMostRows);
  const Rows found =
      list.node().is_external() ? walked_rows(t, request, most) : stored_rows(t, request, most);
  FrameWriter out = answer(t);
  out.put(found.end).array(found.rows.size());
  for (const Row& row : found.rows) {
    out.array(2).put(row.keys).array(row.leaves.size());
    for (const auto& [tag, value] : row.leaves) out.array(2).put(Value::tag(tag)).put(value);
  }
  return out;
}

FrameWriter put_attributes(Transaction& t, const Attributes& attributes) {
  FrameWriter out = answer(t);
  out.array(attributes.size());
  for (const auto& [number, value] : attributes) out.array(2).put(number).put(value);
  return out;
}

FrameWriter put_hits(Transaction& t, const std::vector<XPathHit>& hits) {
  FrameWriter out = answer(t);
  out.array(hits.size());
  for (const XPathHit& hit : hits) {
    out.array(2).put(to_keypath(hit.path));
    if (hit.value)
      out.put(*hit.value);
    else
      out.put_nil();
  }
  return out;
}

}  // namespace standin
