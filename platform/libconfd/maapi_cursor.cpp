// MAAPI: cursors over lists.
#include <confd_maapi.h>

#include "change_counts.h"
#include "convert.h"
#include "error.h"
#include "maapi_session.h"
#include "path_format.h"

using namespace standin;

namespace {

struct Cursor {
  int sock;
  int thandle;
  Path list;
  std::optional<Level> last;  // the row that the caller has
  std::size_t place = 0;      // where it probably stands in the run
  bool ended = false;
};

struct Rows {
  std::vector<AheadRow> rows;
  bool end = false;
};

void free_keys(maapi_cursor& mc) {
  for (int i = 0; i < mc.n; ++i) confd_free_value(&mc.keys[i]);
  mc.n = 0;
}

AheadRow read_row(FrameReader& from) {
  if (from.array() != 2) throw WireError("row without keys and leaves");
  AheadRow row;
  row.keys = from.level();
  if (row.keys.empty() || row.keys.size() >= MAXKEYLEN)
    throw WireError("row without keys, or of too many");
  for (std::size_t left = from.array(); left > 0; --left) {
    if (from.array() != 2) throw WireError("leaf without tag and value");
    const Value tag = from.value();
    if (!tag.is(Type::xmltag)) throw WireError("leaf without a tag");
    row.leaves.emplace_back(tag.tag(), from.value());
  }
  return row;
}

// Asks for rows behind the cursor's last one.
int fetch(const Cursor& c, std::uint64_t most, bool leaves, Rows& got,
          std::optional<std::uint64_t>& generation) {
  MaapiCall call(c.sock, Op::next_rows, c.thandle, c.list, MaapiCall::Effect::reads);
  if (c.last)
    call.elements().put(*c.last);
  else
    call.elements().put_nil();
  call.elements().put(most).put(leaves);
  if (call.run() != CONFD_OK) return CONFD_ERR;
  got.end = call.answer().boolean();
  for (std::size_t left = call.answer().array(); left > 0; --left) {
    got.rows.push_back(read_row(call.answer()));
    got.rows.back().with_leaves = leaves;
  }
  if (got.rows.empty() && !got.end) throw WireError("neither rows nor the end of the list");
  generation = call.generation();
  return CONFD_OK;
}

void give(maapi_cursor& mc, Cursor& c, const Level& keys) {
  for (const Value& key : keys) {
    mc.keys[mc.n] = from_wire(key);
    ++mc.n;
  }
  c.last = keys;
}

int give_end(Cursor& c) {
  c.ended = true;
  return CONFD_OK;
}

// Outside our callbacks the transaction may change at any time: one row is asked for, when it is
// wanted.
int next_alone(maapi_cursor& mc, Cursor& c) {
  Rows got;
  std::optional<std::uint64_t> generation;
  if (fetch(c, 1, false, got, generation) != CONFD_OK) return CONFD_ERR;
  if (got.rows.empty()) return give_end(c);
  give(mc, c, got.rows.front().keys);
  return CONFD_OK;
}

int next_ahead(maapi_cursor& mc, Cursor& c, ReadAhead& ahead, std::uint64_t generation) {
  AheadRun& run = ahead.run(c.list, generation);
  const AheadRow* row = nullptr;
  if (run.generation() == generation) {
    const AheadRun::Found found = run.next(c.last, c.place, row);
    if (found == AheadRun::Found::end) return give_end(c);
    if (found == AheadRun::Found::row) {
      give(mc, c, row->keys);
      return CONFD_OK;
    }
  }
  const std::optional<Level> after = c.last;
  Rows got;
  std::optional<std::uint64_t> answered_in;
  if (fetch(c, run.batch(), run.wants_leaves(), got, answered_in) != CONFD_OK) return CONFD_ERR;
  if (got.rows.empty())
    c.ended = true;
  else
    give(mc, c, got.rows.front().keys);
  if (answered_in) {
    run.continue_after(after, *answered_in);
    run.append(std::move(got.rows), got.end);
  }
  return CONFD_OK;
}

}  // namespace

int maapi_init_cursor(int sock, int thandle, struct maapi_cursor* mc, const char* fmt, ...) {
  if (mc == nullptr) return fail(CONFD_ERR_APIUSE, "no cursor");
  mc->n = 0;
  mc->impl = nullptr;
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    session_of(sock);
    mc->impl = new Cursor{sock, thandle, path_from_format(fmt, args), {}, 0, false};
    return CONFD_OK;
  });
  va_end(args);
  return result;
}

int maapi_get_next(struct maapi_cursor* mc) {
  return guarded([&] {
    if (mc == nullptr || mc->impl == nullptr) return fail(CONFD_ERR_APIUSE, "cursor is not open");
    auto& cursor = *static_cast<Cursor*>(mc->impl);
    free_keys(*mc);
    if (cursor.ended) return CONFD_OK;
    const ChangeCounts::State state = change_counts().state(cursor.thandle);
    if (!state.watched) return next_alone(*mc, cursor);
    const auto session = session_of(cursor.sock);
    return next_ahead(*mc, cursor, session->ahead[cursor.thandle], state.generation);
  });
}

void maapi_destroy_cursor(struct maapi_cursor* mc) {
  if (mc == nullptr) return;
  free_keys(*mc);
  delete static_cast<Cursor*>(mc->impl);
  mc->impl = nullptr;
}
