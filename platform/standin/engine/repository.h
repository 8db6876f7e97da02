// What the server keeps in its directory: the database, which one server at a time may use, the
// key file and the schema file.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/standin/schema/schema.h"
#include "platform/standin/store/secrets.h"
#include "platform/standin/store/store.h"
#include "platform/standin/store/write_set.h"

namespace standin {

class Repository {
 public:
  // Makes the directory (mode 0700) when it is missing. Throws std::runtime_error with one line.
  Repository(const std::string& directory, const std::vector<std::string>& yang);
  Repository(const Repository&) = delete;
  Repository& operator=(const Repository&) = delete;

  const Schema& schema() const { return *schema_; }
  Store& store() { return *store_; }
  const Secrets& secrets() const { return *secrets_; }
  CommitLog& log() { return log_; }
  const std::string& schema_file() const { return schema_file_; }
  // Nothing was ever committed here.
  bool pristine();
  // Makes the writes durable, as one commit. Throws std::runtime_error; nothing is changed then.
  void commit(const WriteSet& writes);

 private:
  std::unique_ptr<Schema> schema_;
  std::unique_ptr<Store> store_;
  std::unique_ptr<Secrets> secrets_;
  CommitLog log_;
  std::string schema_file_;
};

}  // namespace standin
