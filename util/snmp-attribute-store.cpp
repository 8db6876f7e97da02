#include "util/snmp-attribute-store.h"

#include <confd_maapi.h>

#include <array>
#include <optional>

#include "model/attribute-tags.h"
#include "util/snmp-transform-utils.h"
#include "util/value-guards.h"

namespace quillet {
namespace {

// Room for a target path and its NUL.
constexpr std::size_t kPathSize = 8192;

int attr_maapi_sock = -1;

bool refuse_without_socket(confd_trans_ctx* tctx) {
  if (attr_maapi_sock != -1) return false;
  confd_trans_seterr(tctx, "Running without the MAAPI socket initialized...");
  return true;
}

// Nothing when it does not fit: no attribute can stand on such a node, or below it.
std::optional<std::string> target_path(const confd_hkeypath_t* kp) {
  std::array<char, kPathSize> text{};
  const int size = confd_pp_kpath(text.data(), static_cast<int>(text.size()), kp);
  if (size < 0 || static_cast<std::size_t>(size) >= text.size()) return std::nullopt;
  return text.data();
}

// /attr-list{path}; built by malloc because that is what confd_free_hkeypath() frees.
HkeypathPtr attr_build_keypath(const std::string& path) {
  HkeypathPtr kp(static_cast<confd_hkeypath_t*>(std::calloc(1, sizeof(confd_hkeypath_t))));
  kp->len = 2;
  kp->v[0][0] = Value::copy_of(buf_value(path)).release();
  kp->v[0][1] = noexists_value();
  kp->v[1][0] = xmltag_value(tags::quillet_attributes::attr_list, tags::quillet_attributes::ns);
  kp->v[1][1] = noexists_value();
  kp->v[2][0] = noexists_value();
  return kp;
}

// Deletes an entry that holds no attribute any more.
int drop_if_empty(int thandle, confd_hkeypath_t* entry) {
  AttrArray left;
  maapi_get_attrs(attr_maapi_sock, thandle, nullptr, 0, left.out(), left.out_count(), "%h", entry);
  if (left.size() > 0) return CONFD_OK;
  return maapi_delete(attr_maapi_sock, thandle, "%h", entry);
}

struct DeletedNode {
  int thandle;
  std::string path;
};

int attr_delete_matched(confd_hkeypath_t* entry, confd_value_t* /*v*/, void* state) {
  const auto& node = *static_cast<const DeletedNode*>(state);
  const confd_value_t* key = &entry->v[0][0];
  const auto target = c_text(CONFD_GET_BUFPTR(key), CONFD_GET_BUFSIZE(key));
  if (!attr_path_covers(node.path, target)) return ITER_CONTINUE;
  if (maapi_exists(attr_maapi_sock, node.thandle, "%h", entry) != 1) return ITER_CONTINUE;
  const int result = maapi_delete(attr_maapi_sock, node.thandle, "%h", entry);
  return result == CONFD_OK ? ITER_CONTINUE : ITER_STOP;
}

}  // namespace

void attr_set_maapi_sock(int sock) { attr_maapi_sock = sock; }

int snmp_get_attrs(confd_trans_ctx* tctx, confd_hkeypath_t* kp, u_int32_t* wanted, int count) {
  if (refuse_without_socket(tctx)) return CONFD_ERR;
  const auto path = target_path(kp);
  AttrArray found;
  if (path) {
    const HkeypathPtr entry = attr_build_keypath(*path);
    maapi_get_attrs(attr_maapi_sock, tctx->thandle, wanted, count, found.out(), found.out_count(),
                    "%h", entry.get());
  }
  if (found.size() == 0) return confd_data_reply_not_found(tctx);
  return confd_data_reply_attrs(tctx, found.data(), found.size());
}

int snmp_set_attr(confd_trans_ctx* tctx, confd_hkeypath_t* kp, u_int32_t attr, confd_value_t* v) {
  if (refuse_without_socket(tctx)) return CONFD_ERR;
  const auto path = target_path(kp);
  if (!path) return snmp_refuse(tctx, "Path too long for attributes");
  const HkeypathPtr entry = attr_build_keypath(*path);
  if (maapi_exists(attr_maapi_sock, tctx->thandle, "%h", entry.get()) != 1) {
    const int created = maapi_create(attr_maapi_sock, tctx->thandle, "%h", entry.get());
    if (created != CONFD_OK) return created;
  }
  confd_value_t removal = noexists_value();
  const int result = maapi_set_attr(attr_maapi_sock, tctx->thandle, attr,
                                    v != nullptr ? v : &removal, "%h", entry.get());
  if (result != CONFD_OK || v != nullptr) return result;
  return drop_if_empty(tctx->thandle, entry.get());
}

int snmp_attrs_delete_under(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  if (tctx == nullptr || kp == nullptr) return CONFD_ERR;
  if (refuse_without_socket(tctx)) return CONFD_ERR;
  const auto path = target_path(kp);
  if (!path) return CONFD_OK;
  // The prefix is what the server can seek; attr_delete_matched() tells siblings apart.
  const std::string expression =
      "/attr-list[starts-with(target-path," + attr_xpath_literal(*path) + ")]";
  DeletedNode node{.thandle = tctx->thandle, .path = *path};
  return maapi_xpath_eval(attr_maapi_sock, tctx->thandle, expression.c_str(), attr_delete_matched,
                          nullptr, &node, nullptr);
}

bool attr_path_covers(std::string_view node, std::string_view target) {
  if (target.substr(0, node.size()) != node) return false;
  if (target.size() == node.size()) return true;
  const char next = target[node.size()];
  return next == '/' || next == '{';
}

std::string attr_xpath_literal(std::string_view text) {
  if (text.find('\'') == std::string_view::npos) return "'" + std::string(text) + "'";
  if (text.find('"') == std::string_view::npos) return "\"" + std::string(text) + "\"";
  std::string parts;
  for (const char c : text) parts += c == '\'' ? std::string("',\"'\",'") : std::string(1, c);
  return "concat('" + parts + "')";
}

}  // namespace quillet
