// What a callback answers: kept until it has returned, then sent.
#include "convert.h"
#include "daemon.h"
#include "error.h"
#include "text.h"

using namespace standin;

namespace {

// Runs `fill` on a reply of that kind. One reply in each callback that is to give one.
template <typename Fill>
int reply_with(confd_trans_ctx* tctx, ReplyKind kind, const char* name, Fill&& fill) {
  return guarded([&] {
    if (tctx == nullptr || tctx->impl == nullptr)
      return fail(CONFD_ERR_APIUSE, "no transaction to reply in");
    Transaction& tr = Transaction::of(tctx);
    if (tr.expects != Transaction::Expects::reply)
      return fail(CONFD_ERR_APIUSE, "a reply outside a callback that gives one");
    if (tr.reply) return fail(CONFD_ERR_APIUSE, "a second reply in one callback");
    FrameWriter w;
    w.put(static_cast<std::uint64_t>(kind));
    fill(w);
    tr.reply.emplace(std::move(w));
    tr.reply_name = name;
    return CONFD_OK;
  });
}

void set_error_text(void* impl, const char* fmt, va_list args) {
  if (impl == nullptr) return;
  try {
    static_cast<Transaction*>(impl)->error_text = format_text(fmt, args);
  } catch (...) {
    fail_for_current_exception();
  }
}

}  // namespace

int confd_data_reply_value(struct confd_trans_ctx* tctx, const confd_value_t* v) {
  return reply_with(tctx, ReplyKind::value, "value", [&](FrameWriter& w) {
    if (v == nullptr) throw ApiError(CONFD_ERR_APIUSE, "a reply without its value");
    w.put(to_wire(*v));
  });
}

int confd_data_reply_next_key(struct confd_trans_ctx* tctx, const confd_value_t* keys, int num_keys,
                              long next) {
  return reply_with(tctx, ReplyKind::next_key, "next key", [&](FrameWriter& w) {
    if (keys != nullptr && (num_keys <= 0 || num_keys >= MAXKEYLEN))
      throw ApiError(CONFD_ERR_APIUSE, "a row of no keys, or of too many");
    w.put(keys == nullptr ? Level() : to_wire(keys, num_keys)).put(std::int64_t{next});
  });
}

int confd_data_reply_not_found(struct confd_trans_ctx* tctx) {
  return reply_with(tctx, ReplyKind::not_found, "not found", [](FrameWriter&) {});
}

int confd_data_reply_found(struct confd_trans_ctx* tctx) {
  return reply_with(tctx, ReplyKind::found, "found", [](FrameWriter&) {});
}

int confd_data_reply_attrs(struct confd_trans_ctx* tctx, confd_attr_value_t* attrs, int num_attrs) {
  return reply_with(tctx, ReplyKind::attrs, "attributes", [&](FrameWriter& w) {
    if (num_attrs < 0 || (attrs == nullptr && num_attrs > 0))
      throw ApiError(CONFD_ERR_APIUSE, "a reply without its attributes");
    w.array(static_cast<std::size_t>(num_attrs));
    for (int i = 0; i < num_attrs; ++i) w.array(2).put(attrs[i].attr).put(to_wire(attrs[i].v));
  });
}

void confd_trans_seterr(struct confd_trans_ctx* tctx, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  if (tctx != nullptr) set_error_text(tctx->impl, fmt, args);
  va_end(args);
}

void confd_error_seterr(struct confd_user_info* uinfo, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  if (uinfo != nullptr) set_error_text(uinfo->impl, fmt, args);
  va_end(args);
}
