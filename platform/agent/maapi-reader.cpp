#include "maapi-reader.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <array>

#include "read-rows.h"

namespace standin::agent {
namespace {

[[noreturn]] void fail(const std::string& what) { throw ReadError(what + ": " + confd_lasterr()); }

std::string octets(const confd_buf_t& buf) {
  return {reinterpret_cast<const char*>(buf.ptr), buf.size};
}

OptionalText text_of(const confd_value_t& v) {
  std::array<char, INET6_ADDRSTRLEN> printed{};
  switch (v.type) {
    case C_BUF:
    case C_BINARY:
      return octets(v.val.buf);
    case C_IPV4:
    case C_IPV6:
      confd_pp_value(printed.data(), printed.size(), &v);
      return printed.data();
    default:
      return std::nullopt;
  }
}

struct Cursor {
  Cursor(int sock, int handle, const char* list) {
    if (maapi_init_cursor(sock, handle, &c, "%s", list) != CONFD_OK) fail(list);
  }
  ~Cursor() { maapi_destroy_cursor(&c); }
  Cursor(const Cursor&) = delete;
  Cursor& operator=(const Cursor&) = delete;
  bool next(const char* list) {
    if (maapi_get_next(&c) != CONFD_OK) fail(list);
    return c.n > 0;
  }
  maapi_cursor c{};
};

}  // namespace

Row::Row(int leaves) : values_(static_cast<std::size_t>(leaves)) {
  for (confd_value_t& v : values_) CONFD_SET_NOEXISTS(&v);
}

Row::~Row() {
  for (confd_value_t& v : values_) confd_free_value(&v);
}

OptionalText Row::text(std::size_t leaf) const { return text_of(values_.at(leaf)); }

OptionalNumber Row::number(std::size_t leaf) const {
  const confd_value_t& v = values_.at(leaf);
  switch (v.type) {
    case C_INT32:
      return CONFD_GET_INT32(&v);
    case C_ENUM_VALUE:
      return CONFD_GET_ENUM_VALUE(&v);
    case C_BOOL:
      return CONFD_GET_BOOL(&v);
    case C_UINT16:
      return CONFD_GET_UINT16(&v);
    case C_UINT64:
      return static_cast<std::int64_t>(CONFD_GET_UINT64(&v));
    default:
      return std::nullopt;
  }
}

std::optional<Oid> Row::oid(std::size_t leaf) const {
  const confd_value_t& v = values_.at(leaf);
  if (v.type != C_OID) return std::nullopt;
  const confd_snmp_oid* oid = CONFD_GET_OID(&v);
  return Oid(oid->oid, oid->oid + oid->len);
}

std::vector<std::string> Row::texts(std::size_t leaf) const {
  const confd_value_t& v = values_.at(leaf);
  std::vector<std::string> all;
  if (v.type != C_LIST) return all;
  const unsigned count = CONFD_GET_LISTSIZE(&v);
  all.reserve(count);
  for (unsigned i = 0; i < count; ++i) {
    all.push_back(text_of(CONFD_GET_LIST(&v)[i]).value_or(std::string()));
  }
  return all;
}

MaapiReader::MaapiReader(std::uint16_t port, int handle)
    : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), handle_(handle) {
  sockaddr_in server{};
  server.sin_family = AF_INET;
  server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  server.sin_port = htons(port);
  if (maapi_connect(socket_.get(), reinterpret_cast<const sockaddr*>(&server), sizeof server) !=
      CONFD_OK) {
    fail("cannot connect");
  }
  confd_trans_ctx context{};
  context.thandle = handle;
  if (maapi_attach(socket_.get(), 0, &context) != CONFD_OK) fail("cannot join the transaction");
}

void MaapiReader::each(const char* list, int leaves,
                       const std::function<void(const Row&)>& visit) const {
  Cursor cursor(socket_.get(), handle_, list);
  while (cursor.next(list)) {
    confd_value_t* k = cursor.c.keys;
    std::string path = "%s{%x";
    for (int i = 1; i < cursor.c.n; ++i) path += " %x";
    path += '}';
    // No table here has more than four keys; what a format does not name is not looked at.
    Row row(leaves);
    if (maapi_get_object(socket_.get(), handle_, row.data(), leaves, path.c_str(), list, &k[0],
                         &k[1], &k[2], &k[3]) < 0) {
      fail(list);
    }
    visit(row);
  }
}

void MaapiReader::leaf(const char* path, Row& row) const {
  if (maapi_get_elem(socket_.get(), handle_, row.data(), "%s", path) == CONFD_OK) return;
  if (confd_errno != CONFD_ERR_NOEXISTS) fail(path);
}

}  // namespace standin::agent
