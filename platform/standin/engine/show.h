// Trees as frames, and the JSON form of their leaves.
#pragma once

#include <string_view>
#include <vector>

#include "platform/standin/data/data.h"
#include "platform/wire/frame.h"

namespace standin {

// "str" (quoted), "raw" (as it stands) or "empty"; a value of another type than the node's is text.
std::string_view json_form(const Node& node, const Value& v);

// Appends the array of nodes. False when one of them holds an error.
bool put_tree(FrameWriter& out, const Schema& schema, const std::vector<TreeNode>& nodes);

}  // namespace standin
