// Typed reads of one transaction: leaves and whole list entries, each owned by a type.
#pragma once

#include <confd_maapi.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/wire/file_descriptor.h"
#include "rows.h"

namespace standin::agent {

// The first leaves of a list entry, in schema order.
class Row {
 public:
  explicit Row(int leaves);
  ~Row();
  Row(const Row&) = delete;
  Row& operator=(const Row&) = delete;

  confd_value_t* data() { return values_.data(); }
  int size() const { return static_cast<int>(values_.size()); }

  // Each gives nothing for an absent leaf and for one of another type.
  OptionalText text(std::size_t leaf) const;  // of text and of octets
  OptionalNumber number(std::size_t leaf) const;
  std::optional<Oid> oid(std::size_t leaf) const;
  std::vector<std::string> texts(std::size_t leaf) const;

 private:
  std::vector<confd_value_t> values_;
};

class MaapiReader {
 public:
  // Joins the transaction `handle` of the server on 127.0.0.1:`port`. Throws ReadError.
  MaapiReader(std::uint16_t port, int handle);

  // `visit` for each entry of a list, with its first `leaves` leaves. Throws ReadError.
  void each(const char* list, int leaves, const std::function<void(const Row&)>& visit) const;
  // One leaf in a row of its own; absent when it, or what it stands in, is. Throws ReadError.
  void leaf(const char* path, Row& row) const;

 private:
  FileDescriptor socket_;
  int handle_;
};

}  // namespace standin::agent
