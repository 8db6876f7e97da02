#include "configuration.h"

#include "quoting.h"

namespace standin::agent {

std::string Configuration::text() const {
  std::string all;
  for (const Line& line : lines) all += line.text + "\n";
  return all;
}

std::string Configuration::masked() const {
  std::string all;
  for (const Line& line : lines) all += line.shown + "\n";
  return all;
}

std::string row_name(const std::string& table, const std::vector<std::string>& keys) {
  std::string name = table + "{";
  for (const std::string& key : keys) {
    if (name.back() != '{') name += ' ';
    name += key.empty() ? "\"\"" : printable(key);
  }
  return name + "}";
}

}  // namespace standin::agent
