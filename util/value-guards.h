// Owners of what the management server's library allocates, and makers of values that own nothing.
#pragma once

#include <confd_maapi.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace quillet {

// A received value; C_NOEXISTS until something is received into out().
class Value {
 public:
  Value() { CONFD_SET_NOEXISTS(&v_); }
  explicit Value(const confd_value_t& owned) : v_(owned) {}
  Value(Value&& other) noexcept : v_(other.release()) {}
  Value& operator=(Value&& other) noexcept {
    if (this != &other) {
      confd_free_value(&v_);
      v_ = other.release();
    }
    return *this;
  }
  ~Value() { confd_free_value(&v_); }

  static Value copy_of(const confd_value_t& v) {
    Value result;
    confd_value_dup_to(&v, &result.v_);
    return result;
  }

  // Frees what was there.
  confd_value_t* out() {
    confd_free_value(&v_);
    CONFD_SET_NOEXISTS(&v_);
    return &v_;
  }
  confd_value_t& operator*() { return v_; }
  const confd_value_t& operator*() const { return v_; }
  confd_value_t* operator->() { return &v_; }
  const confd_value_t* operator->() const { return &v_; }
  confd_value_t* get() { return &v_; }
  const confd_value_t* get() const { return &v_; }
  // The caller owns the result.
  confd_value_t release() {
    const confd_value_t v = v_;
    CONFD_SET_NOEXISTS(&v_);
    return v;
  }

 private:
  confd_value_t v_;
};

struct FreeDeleter {
  void operator()(void* p) const { std::free(p); }
};
// For malloc'ed memory that comes through a C interface.
template <typename T>
using MallocPtr = std::unique_ptr<T, FreeDeleter>;

struct HkeypathDeleter {
  void operator()(confd_hkeypath_t* kp) const { confd_free_hkeypath(kp); }
};
using HkeypathPtr = std::unique_ptr<confd_hkeypath_t, HkeypathDeleter>;

// A malloc'ed array of values and the values in it.
class ValueArray {
 public:
  ValueArray() = default;
  ValueArray(confd_value_t* values, int count) : values_(values), count_(count) {}
  ValueArray(ValueArray&& other) noexcept
      : values_(std::move(other.values_)), count_(std::exchange(other.count_, 0)) {}
  ValueArray& operator=(ValueArray&& other) noexcept {
    std::swap(values_, other.values_);
    std::swap(count_, other.count_);
    return *this;
  }
  ~ValueArray() {
    for (confd_value_t& v : *this) confd_free_value(&v);
  }

  int size() const { return count_ > 0 ? count_ : 0; }
  bool empty() const { return size() == 0; }
  confd_value_t* data() const { return values_.get(); }
  confd_value_t& operator[](int i) const { return values_.get()[i]; }
  confd_value_t* begin() const { return values_.get(); }
  confd_value_t* end() const { return values_.get() + size(); }

 private:
  MallocPtr<confd_value_t> values_;
  int count_ = 0;
};

// Attributes as maapi_get_attrs() returns them.
class AttrArray {
 public:
  AttrArray() = default;
  AttrArray(const AttrArray&) = delete;
  AttrArray& operator=(const AttrArray&) = delete;
  ~AttrArray() {
    for (int i = 0; i < count_; ++i) confd_free_value(&attrs_[i].v);
    std::free(attrs_);
  }

  confd_attr_value_t** out() { return &attrs_; }
  int* out_count() { return &count_; }
  confd_attr_value_t* data() const { return attrs_; }
  int size() const { return count_; }

 private:
  confd_attr_value_t* attrs_ = nullptr;
  int count_ = 0;
};

// A cursor of one function's life; walks that go on from callback to callback use snmp_cursor.
class MaapiCursor {
 public:
  MaapiCursor() = default;
  MaapiCursor(const MaapiCursor&) = delete;
  MaapiCursor& operator=(const MaapiCursor&) = delete;
  ~MaapiCursor() {
    if (open_) maapi_destroy_cursor(&cursor_);
  }

  template <typename... Args>
  int init(int sock, int thandle, const char* path, Args... args) {
    const int result = maapi_init_cursor(sock, thandle, &cursor_, path, args...);
    open_ = result == CONFD_OK;
    return result;
  }
  int next() { return maapi_get_next(&cursor_); }
  bool at_end() const { return cursor_.n == 0; }
  confd_value_t* key(int i = 0) { return &cursor_.keys[i]; }
  maapi_cursor& raw() { return cursor_; }

 private:
  maapi_cursor cursor_{};
  bool open_ = false;
};

// The following own nothing; text and octets must outlive the value.
inline confd_value_t buf_value(std::string_view text) {
  confd_value_t v;
  CONFD_SET_BUF(&v, const_cast<char*>(text.data()), text.size());
  return v;
}
inline confd_value_t binary_value(const void* octets, std::size_t size) {
  confd_value_t v;
  CONFD_SET_BINARY(&v, const_cast<void*>(octets), size);
  return v;
}
inline confd_value_t str_value(const char* text) {
  confd_value_t v;
  CONFD_SET_STR(&v, text);
  return v;
}
inline confd_value_t enum_value(int number) {
  confd_value_t v;
  CONFD_SET_ENUM_VALUE(&v, number);
  return v;
}
inline confd_value_t int32_value(std::int32_t number) {
  confd_value_t v;
  CONFD_SET_INT32(&v, number);
  return v;
}
inline confd_value_t bool_value(bool truth) {
  confd_value_t v;
  CONFD_SET_BOOL(&v, truth ? 1 : 0);
  return v;
}
inline confd_value_t xmltag_value(u_int32_t tag, u_int32_t ns) {
  confd_value_t v;
  CONFD_SET_XMLTAG(&v, tag, ns);
  return v;
}
inline confd_value_t noexists_value() {
  confd_value_t v;
  CONFD_SET_NOEXISTS(&v);
  return v;
}

// Octets of a C_BUF up to its first NUL.
inline std::string_view c_text(const unsigned char* octets, std::size_t size) {
  const char* text = reinterpret_cast<const char*>(octets);
  return {text, size == 0 ? 0 : strnlen(text, size)};
}

}  // namespace quillet
