// The frames of a callback: what a daemon is asked, and what it answers.
#pragma once

#include <string>
#include <string_view>

#include "platform/standin/data/callouts.h"
#include "platform/wire/frame.h"

namespace standin {

struct CallbackRequest {
  std::uint64_t handle;
  std::uint64_t changes;  // the transaction's change count
  const std::string& point;
  const NodePath& path;
};

std::string callback_frame(Op callback, const CallbackRequest& request,
                           const Callouts::Arguments& arguments);

// "get_elem" for Op::cb_get_elem.
std::string callback_name(Op callback);
inline bool writes(Op callback) {
  return callback == Op::cb_set_elem || callback == Op::cb_create || callback == Op::cb_remove ||
         callback == Op::cb_set_case || callback == Op::cb_set_attr;
}

struct CallbackReply {
  ReplyKind kind = ReplyKind::ok;
  std::string error;  // ReplyKind::error
  Answer answer;
};
// Throws WireError for what is not an answer.
CallbackReply read_reply(std::string_view payload);
// The kind is one that this callback may give.
bool fits(Op callback, ReplyKind kind);

}  // namespace standin
