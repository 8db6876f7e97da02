#include "key_codec.h"
#include "platform/wire/frame.h"
#include "stored_tree.h"

namespace standin {
namespace {

// What goes out as C_STR arrives as C_BUF, words of a list included.
Value as_stored(const Value& v) {
  if (v.is(Type::str)) return Value::buf(v.bytes());
  if (!v.is(Type::list)) return v;
  std::vector<Value> items;
  for (const Value& item : v.items()) items.push_back(as_stored(item));
  return Value::list(std::move(items));
}

}  // namespace

Attributes StoredTree::attributes(const NodePath& path) {
  if (!exists(path)) refuse(ErrorCode::noexists, path, " does not exist");
  const std::string key = store_key(path);
  Attributes found;
  for (auto r = writes_.seek(content_end(key)); r; r = writes_.next(r->first)) {
    const auto number = attribute_number(r->first, key);
    if (!number) break;
    try {
      found.emplace(*number, unpack_value(r->second));
    } catch (const WireError&) {
      refuse(ErrorCode::failed, path, ": the record of an attribute in the database is damaged");
    }
  }
  return found;
}

void StoredTree::set_attribute(const NodePath& path, std::uint32_t number, const Value* v) {
  if (!exists(path)) refuse(ErrorCode::noexists, path, " does not exist");
  const std::string key = attribute_key(store_key(path), number);
  if (v && v->exists())
    writes_.put(key, pack_value(as_stored(*v)));
  else
    writes_.erase(key);
}

}  // namespace standin
