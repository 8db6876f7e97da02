#include "platform/standin/engine/repository.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "platform/standin/store/server_records.h"

namespace standin {
namespace {

std::runtime_error system_error(const std::string& what) {
  return std::runtime_error(what + ": " + std::strerror(errno));
}

std::string usable_directory(const std::string& directory) {
  if (::mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST)
    throw system_error("cannot make the directory " + directory);
  struct stat status {};
  if (::stat(directory.c_str(), &status) != 0) throw system_error("cannot read " + directory);
  if (!S_ISDIR(status.st_mode)) throw std::runtime_error(directory + " is not a directory");
  if (::access(directory.c_str(), R_OK | W_OK | X_OK) != 0)
    throw system_error("cannot use the directory " + directory);
  return std::filesystem::absolute(directory).lexically_normal().string();
}

}  // namespace

Repository::Repository(const std::string& directory, const std::vector<std::string>& yang) {
  const std::string where = usable_directory(directory);
  schema_ = Schema::load(yang);
  store_ = Store::open(where + "/config.db");
  assign_node_ids(schema_->all(), *store_);
  // Without its keys a database that holds encrypted text is of no use; better to say so now.
  secrets_ = std::make_unique<Secrets>(where + "/keys", !pristine());
  schema_file_ = where + "/schema";
  write_schema_file(schema_file_, schema_->compact());
}

bool Repository::pristine() { return !ever_committed(*store_); }

void Repository::commit(const WriteSet& writes) {
  Batch batch = writes.writes();
  mark_committed(batch);
  store_->apply(batch);
  log_.record(batch);
}

}  // namespace standin
