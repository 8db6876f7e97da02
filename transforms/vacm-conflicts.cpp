#include "transforms/vacm-conflicts.h"

#include "util/snmp-transform-utils.h"
#include "util/value-guards.h"

namespace quillet {

std::string conflict_key(const confd_value_t& model, const confd_value_t& name,
                         const confd_value_t& group) {
  constexpr char kFormat[] = "%x;%x;%x";
  std::string key(256, '\0');
  const auto print = [&] {
    return static_cast<std::size_t>(confd_format_keypath(key.data(), static_cast<int>(key.size()),
                                                         kFormat, &model, &name, &group));
  };
  const std::size_t length = print();
  if (length >= key.size()) {
    key.resize(length + 1);
    print();
  }
  key.resize(length);
  return key;
}

void ConflictChanges::record(const confd_value_t& model, const confd_value_t& name,
                             const confd_value_t& loser, const confd_value_t& winner) {
  recorded_.emplace_back(conflict_key(model, name, loser),
                         c_text(CONFD_GET_BUFPTR(&winner), CONFD_GET_BUFSIZE(&winner)));
}

bool ConflictChanges::withdraw(const confd_value_t& model, const confd_value_t& name,
                               const confd_value_t& group) {
  std::string key = conflict_key(model, name, group);
  if (qmap_str_str_value(snmp_validation_map(tctx_), key.c_str()) == nullptr) return false;
  withdrawn_.push_back(std::move(key));
  return true;
}

void ConflictChanges::apply() {
  qmap_str_str* map = snmp_validation_map(tctx_);
  for (const std::string& key : withdrawn_) qmap_str_str_del(map, key.c_str());
  for (const auto& [key, winner] : recorded_) {
    if (qmap_str_str_value(map, key.c_str()) != nullptr) continue;
    qmap_str_str_set(map, key.c_str(), winner.data(), static_cast<int>(winner.size()));
  }
}

}  // namespace quillet
