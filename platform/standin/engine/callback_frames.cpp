#include "platform/standin/engine/callback_frames.h"

#include <algorithm>
#include <initializer_list>

namespace standin {
namespace {

void put_or_nil(FrameWriter& out, const Value& v) {
  if (v.exists())
    out.put(v);
  else
    out.put_nil();
}

void put_arguments(FrameWriter& out, Op callback, const Callouts::Arguments& arguments) {
  switch (callback) {
    case Op::cb_get_next:
      out.put(arguments.next);
      break;
    case Op::cb_set_elem:
      out.put(arguments.value);
      break;
    case Op::cb_get_case:
      out.put(arguments.choice);
      break;
    case Op::cb_set_case:
      out.put(arguments.choice);
      put_or_nil(out, arguments.case_value);
      break;
    case Op::cb_get_attrs:
      out.array(arguments.wanted.size());
      for (const std::uint32_t number : arguments.wanted) out.put(number);
      break;
    case Op::cb_set_attr:
      out.put(arguments.attribute);
      put_or_nil(out, arguments.value);
      break;
    case Op::cb_validate:
      put_or_nil(out, arguments.value);
      break;
    default:
      break;
  }
}

Attributes read_attributes(FrameReader& in) {
  Attributes attributes;
  for (std::size_t n = in.array(); n > 0; --n) {
    if (in.array() != 2) throw WireError("an attribute is a number and a value");
    const auto number = static_cast<std::uint32_t>(in.number());
    attributes[number] = in.value();
  }
  return attributes;
}

}  // namespace

std::string callback_frame(Op callback, const CallbackRequest& request,
                           const Callouts::Arguments& arguments) {
  FrameWriter out;
  out.put(std::uint64_t{static_cast<std::uint16_t>(callback)});
  out.put(request.handle).put(request.changes).put(request.point).put(to_keypath(request.path));
  put_arguments(out, callback, arguments);
  return out.take();
}

std::string callback_name(Op callback) {
  switch (callback) {
    case Op::cb_exists_optional:
      return "exists_optional";
    case Op::cb_get_elem:
      return "get_elem";
    case Op::cb_get_next:
      return "get_next";
    case Op::cb_set_elem:
      return "set_elem";
    case Op::cb_create:
      return "create";
    case Op::cb_remove:
      return "remove";
    case Op::cb_get_case:
      return "get_case";
    case Op::cb_set_case:
      return "set_case";
    case Op::cb_get_attrs:
      return "get_attrs";
    case Op::cb_set_attr:
      return "set_attr";
    case Op::cb_validate:
      return "validate";
    default:
      return "callback";
  }
}

CallbackReply read_reply(std::string_view payload) {
  FrameReader in(payload);
  CallbackReply reply;
  const std::uint64_t kind = in.number();
  if (kind > static_cast<std::uint64_t>(ReplyKind::none))
    throw WireError("an unknown kind of answer");
  reply.kind = static_cast<ReplyKind>(kind);
  Answer& answer = reply.answer;
  switch (reply.kind) {
    case ReplyKind::error:
      reply.error = in.text();
      break;
    case ReplyKind::value:
      answer.kind = Answer::Kind::value;
      answer.value = in.value();
      break;
    case ReplyKind::next_key:
      answer.kind = Answer::Kind::keys;
      answer.keys = in.level();
      answer.next = in.signed_number();
      break;
    case ReplyKind::not_found:
      answer.kind = Answer::Kind::not_found;
      break;
    case ReplyKind::found:
      answer.kind = Answer::Kind::found;
      break;
    case ReplyKind::attrs:
      answer.kind = Answer::Kind::attributes;
      answer.attributes = read_attributes(in);
      break;
    case ReplyKind::ok:
    case ReplyKind::none:
      break;
  }
  return reply;
}

bool fits(Op callback, ReplyKind kind) {
  if (kind == ReplyKind::error) return true;
  const auto one_of = [kind](std::initializer_list<ReplyKind> kinds) {
    return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
  };
  switch (callback) {
    case Op::cb_exists_optional:
      return one_of({ReplyKind::found, ReplyKind::not_found});
    case Op::cb_get_elem:
    case Op::cb_get_case:
      return one_of({ReplyKind::value, ReplyKind::not_found});
    case Op::cb_get_next:
      return one_of({ReplyKind::next_key, ReplyKind::not_found});
    case Op::cb_get_attrs:
      return one_of({ReplyKind::attrs, ReplyKind::not_found});
    default:
      return kind == ReplyKind::ok;
  }
}

}  // namespace standin
