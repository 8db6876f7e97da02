// Between the API's values and keypaths and those that travel.
#pragma once

#include <confd_lib.h>

#include "platform/wire/value.h"

namespace standin {

// Throws ApiError (CONFD_ERR_BADTYPE) for a value of a type that cannot travel.
Value to_wire(const confd_value_t& v);
// The first n values.
Level to_wire(const confd_value_t* values, int n);
// Outermost level first. Throws ApiError (CONFD_ERR_BADPATH) when the length or a level is wrong.
Keypath to_wire(const confd_hkeypath_t& kp);

// The value owns its memory: confd_free_value() frees it. Throws std::bad_alloc.
confd_value_t from_wire(const Value& v);

// Owns one value.
class OwnedValue {
 public:
  OwnedValue() { v_.type = C_NOEXISTS; }
  explicit OwnedValue(const Value& v) : v_(from_wire(v)) {}
  ~OwnedValue() { confd_free_value(&v_); }
  OwnedValue(const OwnedValue&) = delete;
  OwnedValue& operator=(const OwnedValue&) = delete;
  confd_value_t* get() { return &v_; }

 private:
  confd_value_t v_;
};

// Owns the values of a keypath, innermost level first. Throws WireError when the path is longer, or
// a level wider, than the API's dimensions.
class OwnedKeypath {
 public:
  explicit OwnedKeypath(const Keypath& kp);
  ~OwnedKeypath() { clear(); }
  OwnedKeypath(const OwnedKeypath&) = delete;
  OwnedKeypath& operator=(const OwnedKeypath&) = delete;
  confd_hkeypath_t* get() { return &kp_; }

 private:
  void clear();
  confd_hkeypath_t kp_;
};

}  // namespace standin
