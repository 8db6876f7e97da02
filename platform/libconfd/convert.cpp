#include "convert.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "error.h"

namespace standin {
namespace {

static_assert(C_NOEXISTS == int(Type::noexists) && C_XMLTAG == int(Type::xmltag));
static_assert(C_STR == int(Type::str) && C_BUF == int(Type::buf));
static_assert(C_INT8 == int(Type::int8) && C_INT16 == int(Type::int16));
static_assert(C_INT32 == int(Type::int32) && C_INT64 == int(Type::int64));
static_assert(C_UINT8 == int(Type::uint8) && C_UINT16 == int(Type::uint16));
static_assert(C_UINT32 == int(Type::uint32) && C_UINT64 == int(Type::uint64));
static_assert(C_IPV4 == int(Type::ipv4) && C_IPV6 == int(Type::ipv6));
static_assert(C_BOOL == int(Type::boolean) && C_ENUM_VALUE == int(Type::enumeration));
static_assert(C_LIST == int(Type::list) && C_OID == int(Type::oid));
static_assert(C_BINARY == int(Type::binary));

constexpr std::size_t kMaxOid = sizeof(confd_snmp_oid::oid) / sizeof(u_int32_t);

std::string octets(const confd_buf_t& buf) {
  return buf.size == 0 ? std::string() : std::string(reinterpret_cast<char*>(buf.ptr), buf.size);
}

Value oid_value(const confd_snmp_oid* oid) {
  if (oid == nullptr || oid->len < 0 || static_cast<std::size_t>(oid->len) > kMaxOid)
    throw ApiError(CONFD_ERR_BADVALUE, "object identifier without a proper length");
  return Value::oid(Oid(oid->oid, oid->oid + oid->len));
}

Value list_value(const confd_list& list) {
  std::vector<Value> items;
  items.reserve(list.size);
  for (unsigned i = 0; i < list.size; ++i) items.push_back(to_wire(list.ptr[i]));
  return Value::list(std::move(items));
}

template <typename T>
std::string bytes_of(const T& plain) {
  return std::string(reinterpret_cast<const char*>(&plain), sizeof plain);
}

struct Free {
  void operator()(void* p) const { std::free(p); }
};
template <typename T>
std::unique_ptr<T, Free> allocate(std::size_t octets_wanted) {
  std::unique_ptr<T, Free> p(static_cast<T*>(std::malloc(octets_wanted)));
  if (!p) throw std::bad_alloc();
  return p;
}

// One octet more than the size says, so that text is terminated for those who print it.
confd_buf_t new_buf(const std::string& s) {
  auto p = allocate<unsigned char>(s.size() + 1);
  std::memcpy(p.get(), s.data(), s.size());
  p.get()[s.size()] = '\0';
  return {static_cast<unsigned>(s.size()), p.release()};
}

confd_snmp_oid* new_oid(const Oid& numbers) {
  if (numbers.size() > kMaxOid) throw WireError("object identifier of too many numbers");
  auto oid = allocate<confd_snmp_oid>(sizeof(confd_snmp_oid));
  *oid = {};
  oid->len = static_cast<int>(numbers.size());
  std::memcpy(oid->oid, numbers.data(), numbers.size() * sizeof(u_int32_t));
  return oid.release();
}

confd_list new_list(const std::vector<Value>& items) {
  auto array = allocate<confd_value_t>(items.size() * sizeof(confd_value_t) + 1);
  std::size_t done = 0;
  try {
    for (; done < items.size(); ++done) array.get()[done] = from_wire(items[done]);
  } catch (...) {
    while (done > 0) confd_free_value(array.get() + --done);
    throw;
  }
  return {static_cast<unsigned>(items.size()), array.release()};
}

}  // namespace

Value to_wire(const confd_value_t& v) {
  switch (v.type) {
    case C_NOEXISTS:
      return {};
    case C_XMLTAG:
    case C_XMLBEGIN:
    case C_XMLBEGINDEL:
    case C_XMLEND:
      return Value::tag({v.val.xmltag.tag, v.val.xmltag.ns});
    case C_STR:
      return Value::text(v.val.s == nullptr ? "" : v.val.s);
    case C_BUF:
      return Value::buf(octets(v.val.buf));
    case C_BINARY:
      return Value::octets(octets(v.val.buf));
    case C_INT8:
      return Value::signed_number(Type::int8, v.val.i8);
    case C_INT16:
      return Value::signed_number(Type::int16, v.val.i16);
    case C_INT32:
      return Value::int32(v.val.i32);
    case C_INT64:
      return Value::signed_number(Type::int64, v.val.i64);
    case C_UINT8:
      return Value::unsigned_number(Type::uint8, v.val.u8);
    case C_UINT16:
      return Value::unsigned_number(Type::uint16, v.val.u16);
    case C_UINT32:
      return Value::unsigned_number(Type::uint32, v.val.u32);
    case C_UINT64:
      return Value::unsigned_number(Type::uint64, v.val.u64);
    case C_IPV4:
      return Value::address(bytes_of(v.val.ip));
    case C_IPV6:
      return Value::address(bytes_of(v.val.ip6));
    case C_BOOL:
      return Value::boolean(v.val.boolean != 0);
    case C_ENUM_VALUE:
      return Value::enumeration(v.val.enumvalue);
    case C_OID:
      return oid_value(v.val.oidp);
    case C_LIST:
      return list_value(v.val.list);
  }
  throw ApiError(CONFD_ERR_BADTYPE, "value of unknown type " + std::to_string(int(v.type)));
}

Level to_wire(const confd_value_t* values, int n) {
  Level level;
  for (int i = 0; i < n; ++i) level.push_back(to_wire(values[i]));
  return level;
}

Keypath to_wire(const confd_hkeypath_t& kp) {
  if (kp.len < 0 || kp.len > MAXDEPTH)
    throw ApiError(CONFD_ERR_BADPATH, "keypath without a proper length");
  Keypath path;
  for (int i = kp.len - 1; i >= 0; --i) {
    Level level;
    for (int k = 0; k < MAXKEYLEN && kp.v[i][k].type != C_NOEXISTS; ++k)
      level.push_back(to_wire(kp.v[i][k]));
    if (level.empty()) throw ApiError(CONFD_ERR_BADPATH, "keypath with an empty level");
    path.push_back(std::move(level));
  }
  return path;
}

confd_value_t from_wire(const Value& v) {
  confd_value_t out;
  std::memset(&out, 0, sizeof out);
  out.type = static_cast<confd_vtype>(v.type());
  switch (v.type()) {
    case Type::noexists:
      break;
    case Type::xmltag:
      out.val.xmltag = {v.tag().tag, v.tag().ns};
      break;
    case Type::str:
      out.type = C_BUF;
      [[fallthrough]];
    case Type::buf:
    case Type::binary:
      out.val.buf = new_buf(v.bytes());
      break;
    case Type::int8:
      out.val.i8 = static_cast<int8_t>(v.number());
      break;
    case Type::int16:
      out.val.i16 = static_cast<int16_t>(v.number());
      break;
    case Type::int32:
      out.val.i32 = static_cast<int32_t>(v.number());
      break;
    case Type::int64:
      out.val.i64 = v.number();
      break;
    case Type::uint8:
      out.val.u8 = static_cast<u_int8_t>(v.unsigned_number());
      break;
    case Type::uint16:
      out.val.u16 = static_cast<u_int16_t>(v.unsigned_number());
      break;
    case Type::uint32:
      out.val.u32 = static_cast<u_int32_t>(v.unsigned_number());
      break;
    case Type::uint64:
      out.val.u64 = v.unsigned_number();
      break;
    case Type::ipv4:
    case Type::ipv6: {
      const std::size_t size = v.is(Type::ipv4) ? sizeof out.val.ip : sizeof out.val.ip6;
      if (v.bytes().size() != size) throw WireError("address of a wrong size");
      std::memcpy(&out.val, v.bytes().data(), size);
      break;
    }
    case Type::boolean:
      out.val.boolean = v.boolean() ? 1 : 0;
      break;
    case Type::enumeration:
      out.val.enumvalue = static_cast<int32_t>(v.number());
      break;
    case Type::list:
      out.val.list = new_list(v.items());
      break;
    case Type::oid:
      out.val.oidp = new_oid(v.oid());
      break;
  }
  return out;
}

OwnedKeypath::OwnedKeypath(const Keypath& path) {
  if (path.size() > MAXDEPTH) throw WireError("keypath of too many levels");
  // Only the marks that end a level need to be set: a keypath has ten kilobytes.
  kp_.len = static_cast<int>(path.size());
  for (auto& level : kp_.v) level[0].type = C_NOEXISTS;
  try {
    for (std::size_t i = 0; i < path.size(); ++i) {
      const Level& level = path[path.size() - 1 - i];
      if (level.empty() || level.size() >= MAXKEYLEN)
        throw WireError("keypath level without values, or of too many");
      for (std::size_t k = 0; k < level.size(); ++k) {
        if (!level[k].exists()) throw WireError("keypath level with a missing value");
        kp_.v[i][k] = from_wire(level[k]);
        kp_.v[i][k + 1].type = C_NOEXISTS;
      }
    }
  } catch (...) {
    clear();
    throw;
  }
}

void OwnedKeypath::clear() {
  for (auto& level : kp_.v)
    for (int k = 0; k < MAXKEYLEN && level[k].type != C_NOEXISTS; ++k) confd_free_value(&level[k]);
}

}  // namespace standin
