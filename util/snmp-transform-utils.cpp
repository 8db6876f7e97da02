#include "util/snmp-transform-utils.h"

#include <sys/socket.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/daemon-sockets.h"
#include "core/log.h"
#include "model/snmp-tags.h"
#include "util/assertion.h"
#include "util/string-list.h"
#include "util/value-guards.h"

namespace quillet {
namespace {

constexpr char kModule[] = "snmp-transform-utils";

bool connection_broken(int result) {
  return result == CONFD_EOF || confd_errno == CONFD_ERR_OS || confd_errno == CONFD_ERR_PROTOCOL;
}

int reply_read(confd_trans_ctx* tctx, int result, const Value& v) {
  if (result != CONFD_OK) return snmp_reply_read_failure(tctx);
  confd_data_reply_value(tctx, v.get());
  return CONFD_OK;
}

const char* snmp_tag_name(const confd_value_t* tag) {
  return confd_xmltag2str(tags::snmp::ns, CONFD_GET_XMLTAG(tag));
}

}  // namespace

void snmp_assert_ok(int result, const char* file, int line) {
  if (result == CONFD_OK) return;
  std::array<char, 2048> text{};
  std::snprintf(text.data(), text.size(), "%s:%d: error not CONFD_OK: %d : %s \n", file, line,
                confd_errno, confd_lasterr());
  log_write_stderr(text.data(), std::strlen(text.data()));
  std::abort();
}

int snmp_write_result(confd_trans_ctx* tctx, int result, const char* file, int line) {
  if (result == CONFD_OK) return CONFD_OK;
  if (connection_broken(result)) snmp_assert_ok(result, file, line);
  if (tctx != nullptr) confd_trans_seterr(tctx, "%s", confd_lasterr());
  return CONFD_ERR;
}

int snmp_refuse(confd_trans_ctx* tctx, const char* format, ...) {
  std::array<char, 1024> text{};
  std::va_list args;
  va_start(args, format);
  std::vsnprintf(text.data(), text.size(), format, args);
  va_end(args);
  confd_trans_seterr(tctx, "%s", text.data());
  return CONFD_ERR;
}

int snmp_refuse_unknown_tag(confd_trans_ctx* tctx, const confd_value_t* tag) {
  return snmp_refuse(tctx, "Unknown tag: %s", snmp_tag_name(tag));
}

int snmp_refuse_delete(confd_trans_ctx* tctx, const confd_value_t* tag) {
  return snmp_refuse(tctx, "Tried to delete invalid tag: %s", snmp_tag_name(tag));
}

snmp_cursor* snmp_open_cursors(const confd_trans_ctx* tctx) {
  return static_cast<snmp_cursor*>(tctx->t_opaque);
}

snmp_cursor* snmp_cursor_open(int sock, confd_trans_ctx* tctx, const char* path) {
  auto* record = new snmp_cursor{};
  snmp_assert_ok(maapi_init_cursor(sock, tctx->thandle, &record->cursor, path), kModule, __LINE__);
  for (confd_value_t& saved : record->saved) CONFD_SET_NOEXISTS(&saved);
  record->next = snmp_open_cursors(tctx);
  tctx->t_opaque = record;
  return record;
}

void snmp_cursor_close(confd_trans_ctx* tctx, snmp_cursor* cursor) {
  snmp_cursor* before = nullptr;
  snmp_cursor* record = snmp_open_cursors(tctx);
  while (record != nullptr && record != cursor) {
    before = record;
    record = record->next;
  }
  if (record == nullptr) return;

  maapi_destroy_cursor(&record->cursor);
  for (confd_value_t& saved : record->saved) confd_free_value(&saved);
  queue_chararr_iter_destroy(record->sorted_iter);
  if (before != nullptr) {
    before->next = record->next;
  } else {
    tctx->t_opaque = record->next;
  }
  delete record;
}

int snmp_generic_get_next(confd_trans_ctx* tctx, confd_hkeypath_t* /*kp*/, long next,
                          const char* path) {
  snmp_cursor* record =
      next == -1 ? snmp_cursor_open(maapi_sock, tctx, path) : reinterpret_cast<snmp_cursor*>(next);
  snmp_assert_ok(maapi_get_next(&record->cursor), kModule, __LINE__);
  if (record->cursor.n == 0) {
    snmp_cursor_close(tctx, record);
    return snmp_reply_list_end(tctx);
  }
  confd_data_reply_next_key(tctx, record->cursor.keys, 1, reinterpret_cast<long>(record));
  return CONFD_OK;
}

int snmp_reply_list_end(confd_trans_ctx* tctx) {
  confd_data_reply_next_key(tctx, nullptr, -1, -1);
  return CONFD_OK;
}

int snmp_reply_mib_elem_path(confd_trans_ctx* tctx, const char* path) {
  Value v;
  return reply_read(tctx, maapi_get_elem(maapi_sock, tctx->thandle, v.out(), path), v);
}

int snmp_reply_mib_elem(confd_trans_ctx* tctx, const char* path, const confd_value_t* key) {
  Value v;
  return reply_read(tctx, maapi_get_elem(maapi_sock, tctx->thandle, v.out(), path, key), v);
}

int snmp_reply_mib_elem_fmt(confd_trans_ctx* tctx, const char* path, ...) {
  Value v;
  std::va_list args;
  va_start(args, path);
  const int result = maapi_vget_elem(maapi_sock, tctx->thandle, v.out(), path, args);
  va_end(args);
  return reply_read(tctx, result, v);
}

int snmp_reply_read_failure(confd_trans_ctx* tctx) {
  if (confd_errno != CONFD_ERR_NOEXISTS) return CONFD_ERR;
  confd_data_reply_not_found(tctx);
  return CONFD_OK;
}

confd_value_t* snmp_maapi_get_string_list_elems(int thandle, int* count, const char* path, ...) {
  Value text;
  std::va_list args;
  va_start(args, path);
  const int result = maapi_vget_elem(maapi_sock, thandle, text.out(), path, args);
  va_end(args);
  *count = -1;
  if (result != CONFD_OK) return nullptr;

  const confd_value_t& list_str = *text;
  const auto words = split_words(c_text(CONFD_GET_BUFPTR(&list_str), CONFD_GET_BUFSIZE(&list_str)));
  *count = static_cast<int>(words.size());
  if (words.empty()) return nullptr;
  auto* values = static_cast<confd_value_t*>(std::malloc(words.size() * sizeof(confd_value_t)));
  for (std::size_t i = 0; i < words.size(); ++i) {
    const confd_value_t word = buf_value(words[i]);
    confd_value_dup_to(&word, &values[i]);
  }
  return values;
}

int snmp_maapi_set_string_list_elem(int thandle, const confd_value_t* v, const char* path, ...) {
  QUILLET_ASSERT(v);
  QUILLET_ASSERT(path);
  const confd_value_t* list = CONFD_GET_LIST(v);
  const std::string text = join_words(list, CONFD_GET_LISTSIZE(v));
  confd_value_t value = str_value(text.c_str());
  std::va_list args;
  va_start(args, path);
  const int result = maapi_vset_elem(maapi_sock, thandle, &value, path, args);
  va_end(args);
  return result;
}

int snmp_maapi_delete(confd_trans_ctx* tctx, confd_hkeypath_t* kp, const char* path) {
  return maapi_delete(maapi_sock, tctx->thandle, path, &kp->v[0][0]);
}

int snmp_maapi_connect(const sockaddr_in* addr) {
  const int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (sock < 0) confd_fatal("Failed to open socket\n");
  if (maapi_connect(sock, reinterpret_cast<const sockaddr*>(addr), sizeof *addr) < 0) {
    confd_fatal("Failed to maapi_connect() to confd \n");
  }
  return sock;
}

qmap_str_str* snmp_validation_map(const confd_trans_ctx* tctx) {
  return static_cast<qmap_str_str*>(tctx->v_opaque);
}

void snmp_set_validation_map(confd_trans_ctx* tctx, qmap_str_str* map) { tctx->v_opaque = map; }

}  // namespace quillet
