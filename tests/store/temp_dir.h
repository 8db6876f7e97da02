// A directory of the test's own, gone with it; and a store in memory.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "platform/standin/store/store.h"

namespace standin {

class TempDir {
 public:
  TempDir() : path_(testing::TempDir() + "quillet-XXXXXX") {
    if (!::mkdtemp(path_.data())) throw std::runtime_error("no temporary directory");
  }
  ~TempDir() { std::filesystem::remove_all(path_); }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline void write_file(const std::string& file, const std::string& octets) {
  std::ofstream(file, std::ios::binary) << octets;
}

inline std::string read_file(const std::string& file) {
  std::ostringstream octets;
  octets << std::ifstream(file, std::ios::binary).rdbuf();
  return octets.str();
}

inline unsigned mode_of(const std::string& file) {
  return static_cast<unsigned>(std::filesystem::status(file).permissions()) & 0777U;
}

// The text of what `f` throws; empty when it throws nothing.
template <typename F>
std::string refusal_of(F f) {
  try {
    f();
  } catch (const std::runtime_error& e) {
    return e.what();
  }
  return {};
}

class MemoryStore final : public Store {
 public:
  std::optional<std::string> get(std::string_view key) override {
    const auto it = records.find(key);
    return it == records.end() ? std::nullopt : std::optional(it->second);
  }
  std::optional<Record> seek(std::string_view key) override {
    ++seeks;
    return at(records.lower_bound(key));
  }
  std::optional<Record> next(std::string_view key) override {
    ++seeks;
    return at(records.upper_bound(key));
  }
  void apply(const Batch& batch) override {
    for (const auto& [key, value] : batch) {
      if (value)
        records[key] = *value;
      else
        records.erase(key);
    }
  }
  void close() override {}

  std::map<std::string, std::string, std::less<>> records;
  int seeks = 0;  // seek() and next() calls

 private:
  std::optional<Record> at(decltype(records)::const_iterator it) const {
    return it == records.end() ? std::nullopt : std::optional<Record>(*it);
  }
};

}  // namespace standin
