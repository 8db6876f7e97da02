#include <cstdlib>
#include <cstring>

#include "convert.h"
#include "error.h"

using namespace standin;

void confd_free_value(confd_value_t* v) {
  if (v == nullptr) return;
  switch (v->type) {
    case C_BUF:
    case C_BINARY:
      std::free(v->val.buf.ptr);
      break;
    case C_OID:
      std::free(v->val.oidp);
      break;
    case C_LIST:
      for (unsigned i = 0; i < v->val.list.size; ++i) confd_free_value(&v->val.list.ptr[i]);
      std::free(v->val.list.ptr);
      break;
    default:
      break;
  }
  v->type = C_NOEXISTS;
}

confd_value_t* confd_value_dup_to(const confd_value_t* v, confd_value_t* out) {
  if (v == nullptr || out == nullptr) return nullptr;
  try {
    confd_value_t copy = from_wire(to_wire(*v));
    // Begin and end marks travel as plain tags, but stay what they are in a copy.
    if (copy.type == C_XMLTAG) copy.type = v->type;
    *out = copy;
    return out;
  } catch (...) {
    fail_for_current_exception();
    return nullptr;
  }
}

int confd_val_eq(const confd_value_t* v1, const confd_value_t* v2) {
  if (v1 == nullptr || v2 == nullptr || v1->type != v2->type) return 0;
  try {
    return to_wire(*v1) == to_wire(*v2) ? 1 : 0;
  } catch (...) {
    return 0;
  }
}

void confd_free_hkeypath(confd_hkeypath_t* kp) {
  if (kp == nullptr) return;
  for (int i = 0; i < MAXDEPTH && i < kp->len; ++i)
    for (int k = 0; k < MAXKEYLEN && kp->v[i][k].type != C_NOEXISTS; ++k)
      confd_free_value(&kp->v[i][k]);
  std::free(kp);
}
