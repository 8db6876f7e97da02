// Security models (RFC 3411 section 5, SnmpSecurityModel): 0 any, 1 v1, 2 v2c, 3 usm. They are
// labels northbound (C_ENUM_VALUE) and numbers in the MIB (C_INT32); the number is the same. The
// MIB admits further ones, which have no label and stay numbers.
#pragma once

#include <confd_lib.h>

namespace quillet {

inline constexpr int kLastLabelledSecurityModel = 3;

// In place; a null pointer and values of other types are left alone.
inline void tr_sec_model_to_mib(confd_value_t* v) {
  if (v == nullptr || v->type != C_ENUM_VALUE) return;
  const int number = CONFD_GET_ENUM_VALUE(v);
  CONFD_SET_INT32(v, number);
}
inline void tr_sec_model_to_yang(confd_value_t* v) {
  if (v == nullptr || v->type != C_INT32) return;
  const int number = CONFD_GET_INT32(v);
  if (number >= 0 && number <= kLastLabelledSecurityModel) CONFD_SET_ENUM_VALUE(v, number);
}

// A converted copy, which owns nothing: models are plain numbers on both sides.
inline confd_value_t mib_sec_model(const confd_value_t* v) {
  confd_value_t converted = *v;
  tr_sec_model_to_mib(&converted);
  return converted;
}

}  // namespace quillet
