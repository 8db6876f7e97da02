// The ordered, durable store: octet keys in byte order, one durable batch at a time.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace standin {

// A key's new value, or nothing to remove it.
using Batch = std::map<std::string, std::optional<std::string>, std::less<>>;
using Record = std::pair<std::string, std::string>;

// Five calls. Every failure throws std::runtime_error with a sentence that names the file.
// Not thread-safe: used under the server's one lock.
class Store {
 public:
  // One SQLite file, mode 0600, write-ahead log, synchronous FULL. Refuses a file that is not this
  // database, or of another format.
  static std::unique_ptr<Store> open(const std::string& file);
  virtual ~Store() = default;

  virtual std::optional<std::string> get(std::string_view key) = 0;
  // First record whose key is >= `key`.
  virtual std::optional<Record> seek(std::string_view key) = 0;
  // First record whose key is > `key`.
  virtual std::optional<Record> next(std::string_view key) = 0;
  // All or nothing, on disk when it returns.
  virtual void apply(const Batch& batch) = 0;
  virtual void close() = 0;
};

}  // namespace standin
