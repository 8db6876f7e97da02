#include <algorithm>
#include <string>

#include "transforms/subtree-text.h"
#include "transforms/vacm-views.h"

namespace quillet {

int get_mib_oids(const confd_value_t& text, Value& oid, Value& mask) {
  oid = Value();
  mask = Value();
  const confd_value_t* subtree_text = &text;
  const auto* octets = reinterpret_cast<const char*>(CONFD_GET_BUFPTR(subtree_text));
  const auto subtree = parse_subtree_text({octets, CONFD_GET_BUFSIZE(subtree_text)});
  if (!subtree) return -1;
  confd_snmp_oid sub_identifiers{};
  std::copy(subtree->oid.begin(), subtree->oid.end(), sub_identifiers.oid);
  sub_identifiers.len = static_cast<int>(subtree->oid.size());
  confd_value_t v;
  CONFD_SET_OID(&v, &sub_identifiers);
  oid = Value::copy_of(v);
  mask = Value::copy_of(binary_value(subtree->mask.data(), subtree->mask.size()));
  return 0;
}

Value oid_to_subtree_text(const confd_value_t& oid) {
  const confd_value_t* v = &oid;
  if (v->type != C_OID) return {};
  const confd_snmp_oid* sub_identifiers = CONFD_GET_OID(v);
  const std::string text =
      subtree_text(sub_identifiers->oid, static_cast<std::size_t>(sub_identifiers->len));
  if (text.size() > kMaxSubtreeText) return {};
  return Value::copy_of(buf_value(text));
}

}  // namespace quillet
