// What may come next where a key or a value is being typed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/standin/engine/transaction.h"

namespace standin {

// Words that begin with `begun`, sorted, some thousand at most. `path` names a list or a leaf-list
// whose entry is wanted (`keys`: those already given), or a leaf or leaf-list whose value is
// (`entry` false): labels, and what stands in the nodes that the model suggests.
std::vector<std::string> complete(Transaction& t, const Schema& schema, const NodePath& path,
                                  bool entry, const std::vector<std::string>& keys,
                                  std::string_view begun);

}  // namespace standin
