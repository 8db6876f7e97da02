// The server's own records, which stand before every node's: the nodes' numbers, and that a
// configuration was committed.
#pragma once

#include "platform/standin/schema/schema.h"
#include "store.h"

namespace standin {

// Gives every node its number: the one that the store keeps for its path of names, or the next
// free one, which is then kept. Numbers are never used again, so data of a module that was taken
// away does not turn into another's. Throws std::runtime_error for damaged records, and when the
// numbers are used up.
void assign_node_ids(const std::vector<Node*>& nodes, Store& store);

// True once a batch with the mark was applied.
bool ever_committed(Store& store);
void mark_committed(Batch& batch);

}  // namespace standin
