// What a transaction changed, for people.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/standin/engine/engine.h"

namespace standin {

struct Difference {
  char kind = '~';  // + created, - removed, ~ changed
  std::string path;
  std::optional<std::string> before, after;  // leaves and leaf-lists; secrets masked
};

// Compares every node that was written with what a read transaction of its own, beside this one,
// answers for it. Nodes that end as they began are left out.
std::vector<Difference> differences(Engine& engine, Transaction& transaction);

}  // namespace standin
