#include "transforms/target-params.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/daemon-sockets.h"
#include "util/snmp-transform-utils.h"

namespace quillet {
namespace {

constexpr char kModule[] = "snmp-target-transform";
constexpr std::string_view kParamsPrefix = "ConfD";
constexpr int kLastParamsNumber = 9999999;
// Name, MP model, security model, security name, security level, storage type.
constexpr int kParamsColumns = 6;

// The number of a name that alloc_params_name() could have made.
std::optional<int> params_number(const confd_value_t& name) {
  if (name.type != C_BUF) return std::nullopt;
  std::string_view text(reinterpret_cast<const char*>(CONFD_GET_BUFPTR(&name)),
                        CONFD_GET_BUFSIZE(&name));
  if (text.substr(0, kParamsPrefix.size()) != kParamsPrefix) return std::nullopt;
  text.remove_prefix(kParamsPrefix.size());
  if (text.empty() || text.front() < '1' || text.front() > '9') return std::nullopt;
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// Calls `each` for the keys of every row.
template <typename Each>
void walk_table(const confd_trans_ctx* tctx, const char* table, const Each& each) {
  MaapiCursor cursor;
  snmp_assert_ok(cursor.init(maapi_sock, tctx->thandle, table), kModule, __LINE__);
  for (;;) {
    snmp_assert_ok(cursor.next(), kModule, __LINE__);
    if (cursor.at_end()) return;
    each(*cursor.key());
  }
}

// The columns of one params row onto another.
int copy_params_row(confd_trans_ctx* tctx, const confd_value_t* from, const confd_value_t* to) {
  confd_value_t columns[kParamsColumns];
  for (confd_value_t& v : columns) CONFD_SET_NOEXISTS(&v);
  const int read =
      maapi_get_object(maapi_sock, tctx->thandle, columns, kParamsColumns, TARGET_PARAMS_ROW, from);
  int result =
      snmp_write_result(tctx, read == kParamsColumns ? CONFD_OK : CONFD_ERR, kModule, __LINE__);
  if (result == CONFD_OK) {
    result = snmp_write_result(
        tctx,
        maapi_set_object(maapi_sock, tctx->thandle, columns, kParamsColumns, TARGET_PARAMS_ROW, to),
        kModule, __LINE__);
  }
  for (confd_value_t& v : columns) confd_free_value(&v);
  return result;
}

}  // namespace

MibRead target_read(const confd_trans_ctx* tctx, Value& out, const char* path,
                    const confd_value_t* key) {
  if (maapi_get_elem(maapi_sock, tctx->thandle, out.out(), path, key) == CONFD_OK) {
    return MibRead::value;
  }
  return confd_errno == CONFD_ERR_NOEXISTS ? MibRead::absent : MibRead::failed;
}

MibRead target_params_name(const confd_trans_ctx* tctx, const confd_value_t* target, Value& out) {
  return target_read(tctx, out, TARGET_ADDR_ROW "/snmpTargetAddrParams", target);
}

int count_targets_using_params(const confd_trans_ctx* tctx, const confd_value_t* params_name) {
  int count = 0;
  walk_table(tctx, TARGET_ADDR_TABLE, [&](const confd_value_t& target) {
    Value named;
    if (target_params_name(tctx, &target, named) == MibRead::value &&
        confd_val_eq(named.get(), params_name)) {
      ++count;
    }
  });
  return count;
}

int alloc_params_name(const confd_trans_ctx* tctx, Value& out) {
  std::vector<int> taken;
  walk_table(tctx, TARGET_PARAMS_TABLE, [&](const confd_value_t& name) {
    if (const auto number = params_number(name)) taken.push_back(*number);
  });
  std::sort(taken.begin(), taken.end());
  int free_number = 1;
  for (const int number : taken) {
    if (number == free_number) ++free_number;
  }
  if (free_number > kLastParamsNumber) return -1;
  out = Value::copy_of(buf_value(std::string(kParamsPrefix) + std::to_string(free_number)));
  return 0;
}

int create_params_row(confd_trans_ctx* tctx, const confd_value_t* params_name) {
  if (maapi_exists(maapi_sock, tctx->thandle, TARGET_PARAMS_ROW, params_name) != 0) return CONFD_OK;
  return snmp_write_result(tctx,
                           maapi_create(maapi_sock, tctx->thandle, TARGET_PARAMS_ROW, params_name),
                           kModule, __LINE__);
}

int ensure_private_params_row(confd_trans_ctx* tctx, const confd_value_t* target,
                              Value& params_name) {
  if (target_params_name(tctx, target, params_name) != MibRead::value) {
    return snmp_refuse(tctx, "Target has no parameters");
  }
  if (count_targets_using_params(tctx, params_name.get()) <= 1) return CONFD_OK;
  Value own;
  if (alloc_params_name(tctx, own) != 0)
    return snmp_refuse(tctx, "No free name for target parameters");
  if (create_params_row(tctx, own.get()) != CONFD_OK) return CONFD_ERR;
  const int named = maapi_set_elem(maapi_sock, tctx->thandle, own.get(),
                                   TARGET_ADDR_ROW "/snmpTargetAddrParams", target);
  if (snmp_write_result(tctx, named, kModule, __LINE__) != CONFD_OK ||
      copy_params_row(tctx, params_name.get(), own.get()) != CONFD_OK) {
    return CONFD_ERR;
  }
  params_name = std::move(own);
  return CONFD_OK;
}

}  // namespace quillet
