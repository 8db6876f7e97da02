#include "data.h"

#include "data_impl.h"
#include "platform/standin/store/key_codec.h"

namespace standin {

Data::Data(const Schema& schema, WriteSet& writes, StoredTree& stored, Callouts& callouts)
    : impl_(std::make_unique<Impl>(schema, writes, stored, callouts)) {}

Data::~Data() = default;

void Data::Impl::operation(const std::function<void()>& body) {
  if (validating) {
    throw Refusal(ErrorCode::access, "nothing can be written while the transaction is validated");
  }
  const std::size_t mark = writes.mark();
  const std::size_t touched_before = touched.size();
  try {
    body();
  } catch (...) {
    writes.rollback(mark);
    touched.resize(touched_before);
    throw;
  }
}

void Data::Impl::write(const NodePath& path, Ancestors ancestors,
                       const std::function<void()>& body) {
  const std::size_t touched_before = touched.size();
  operation(body);
  // What daemons do to their own rows is no northbound change.
  if (ancestors == Ancestors::require && !path.node().transform) touched.resize(touched_before);
}

bool Data::exists(const NodePath& path, bool note) { return impl_->reader.exists(path, note); }

std::optional<Value> Data::get(const NodePath& path, bool note) {
  return impl_->reader.get(path, note);
}

void Data::walk(const NodePath& list, const std::function<bool(const Level&)>& each,
                const Level* after) {
  impl_->reader.walk(list, each, after);
}

const Choice::Case* Data::selected(const NodePath& holder, const Choice& choice) {
  return impl_->reader.selected(holder, choice);
}

Attributes Data::attributes(const NodePath& path) {
  if (path.empty()) throw Refusal(ErrorCode::badpath, "/: has no attributes");
  return path.node().transform ? impl_->callbacks.attributes(path) : impl_->stored.attributes(path);
}

bool Data::is_written(const NodePath& leaf) {
  return impl_->writes.get(store_key(leaf)).has_value();
}

void Data::create(const NodePath& path, Ancestors ancestors) {
  impl_->write(path, ancestors, [&] {
    if (!impl_->writer.ensure(path, ancestors)) {
      throw Refusal(ErrorCode::already_exists, impl_->schema.to_text(path) + ": already exists");
    }
  });
}

bool Data::ensure(const NodePath& path, Ancestors ancestors) {
  bool created = false;
  impl_->write(path, ancestors, [&] { created = impl_->writer.ensure(path, ancestors); });
  return created;
}

void Data::set(const NodePath& path, const Value& v, Ancestors ancestors) {
  impl_->write(path, ancestors, [&] { impl_->writer.set(path, v, ancestors); });
}

void Data::remove(const NodePath& path, Ancestors ancestors) {
  impl_->write(path, ancestors, [&] { impl_->writer.remove(path, ancestors); });
}

void Data::set_attribute(const NodePath& path, std::uint32_t number, const Value* v) {
  impl_->operation([&] {
    if (!impl_->reader.exists(path, true)) {
      throw Refusal(ErrorCode::noexists, impl_->schema.to_text(path) + ": not there");
    }
    if (path.node().transform) {
      impl_->callbacks.set_attribute(path, number, v);
    } else {
      impl_->stored.set_attribute(path, number, v);
    }
  });
}

void Data::together(const std::function<void()>& writes) { impl_->operation(writes); }

bool Data::validating() const { return impl_->validating; }

const std::vector<Touched>& Data::touched() const { return impl_->touched; }

void Data::forget_touched() { impl_->touched.clear(); }

}  // namespace standin
