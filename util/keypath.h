// Reading keypaths: level 0 is the innermost element.
#pragma once

#include <confd_lib.h>

namespace quillet {

// The value at a level, or a C_NOEXISTS value where the keypath has no such level. So an element
// that is missing fails the type check of whoever expects it, and nothing is read out of bounds.
inline const confd_value_t* kp_value(const confd_hkeypath_t* kp, int level, int index = 0) {
  static const confd_value_t nothing = [] {
    confd_value_t v{};
    CONFD_SET_NOEXISTS(&v);
    return v;
  }();
  const bool inside =
      level >= 0 && level < kp->len && level < MAXDEPTH && index >= 0 && index < MAXKEYLEN;
  return inside ? &kp->v[level][index] : &nothing;
}

inline bool kp_is_tag(const confd_hkeypath_t* kp, int level) {
  return kp_value(kp, level)->type == C_XMLTAG;
}

}  // namespace quillet
