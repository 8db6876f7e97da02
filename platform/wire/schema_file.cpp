#include "platform/wire/schema_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <set>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "platform/wire/frame.h"

// The file: eight octets of magic, then one frame, [u version, [node...]], that ends with the file.
// A node: [u tag, u ns, s name, s prefix, u kind, u parent, u type, b secret, [u tag, u ns...]
// keys,
// [[i number, s label]...]].
namespace standin {
namespace {

constexpr std::string_view kMagic = "QSCHEMA\n";
constexpr std::uint64_t kFormat = 1;
constexpr std::uint64_t kLastKind = static_cast<std::uint64_t>(SchemaFileNode::Kind::case_);

using Kind = SchemaFileNode::Kind;

class File {
 public:
  explicit File(int fd) : fd_(fd) {}
  ~File() {
    if (fd_ >= 0) close(fd_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  int fd() const { return fd_; }

 private:
  int fd_;
};

[[noreturn]] void fail_os(const std::string& what, const std::string& path) {
  throw std::system_error(errno, std::generic_category(), what + ' ' + path);
}

void put_node(FrameWriter& out, const SchemaFileNode& node) {
  out.array(10).put(node.tag.tag).put(node.tag.ns).put(node.name).put(node.prefix);
  out.put(static_cast<std::uint32_t>(node.kind)).put(node.parent);
  out.put(static_cast<std::uint32_t>(node.type)).put(node.secret);
  out.array(node.keys.size() * 2);
  for (const Tag& key : node.keys) out.put(key.tag).put(key.ns);
  out.array(node.labels.size());
  for (const auto& [number, label] : node.labels) out.array(2).put(number).put(label);
}

std::uint32_t number32(FrameReader& in) {
  const std::uint64_t n = in.number();
  if (n > UINT32_MAX) throw WireError("a number is past 32 bits");
  return static_cast<std::uint32_t>(n);
}

Tag read_tag(FrameReader& in) {
  const std::uint32_t tag = number32(in);
  return {tag, number32(in)};
}

void expect(bool holds, const char* what) {
  if (!holds) throw WireError(what);
}

bool is_type(std::uint64_t n) {
  switch (static_cast<Type>(n)) {
    case Type::noexists:
    case Type::xmltag:
    case Type::str:
    case Type::buf:
    case Type::int8:
    case Type::int16:
    case Type::int32:
    case Type::int64:
    case Type::uint8:
    case Type::uint16:
    case Type::uint32:
    case Type::uint64:
    case Type::ipv4:
    case Type::ipv6:
    case Type::boolean:
    case Type::enumeration:
    case Type::list:
    case Type::oid:
    case Type::binary:
      return n <= UINT8_MAX;
  }
  return false;
}

SchemaFileNode read_node(FrameReader& in) {
  expect(in.array() == 10, "a node has a wrong number of elements");
  SchemaFileNode node;
  node.tag = read_tag(in);
  node.name = in.text();
  node.prefix = in.text();
  const std::uint64_t kind = in.number();
  expect(kind <= kLastKind, "a node has an unknown kind");
  node.kind = static_cast<Kind>(kind);
  node.parent = number32(in);
  const std::uint64_t type = in.number();
  expect(is_type(type), "a node has an unknown type");
  node.type = static_cast<Type>(type);
  node.secret = in.boolean();
  const std::size_t key_numbers = in.array();
  expect(key_numbers % 2 == 0, "a key lacks its namespace");
  for (std::size_t i = 0; i < key_numbers / 2; ++i) node.keys.push_back(read_tag(in));
  const std::size_t labels = in.array();
  for (std::size_t i = 0; i < labels; ++i) {
    expect(in.array() == 2, "a label has a wrong number of elements");
    const std::int64_t number = in.signed_number();
    expect(number >= INT32_MIN && number <= INT32_MAX, "a label's number is past 32 bits");
    node.labels.emplace_back(static_cast<std::int32_t>(number), in.text());
  }
  return node;
}

// What readers rely on: parents stand first and can have children, keys are leaves of their list.
void check_relations(const SchemaFile& schema) {
  std::set<std::pair<std::size_t, Tag>> leaves;
  for (std::size_t i = 0; i < schema.nodes.size(); ++i) {
    const SchemaFileNode& node = schema.nodes[i];
    expect(node.parent <= i, "a node stands before its parent");
    if (node.parent > 0) {
      const Kind above = schema.nodes[node.parent - 1].kind;
      expect(above != Kind::leaf && above != Kind::leaf_list, "a node stands below a leaf");
    }
    if (node.kind == Kind::leaf) leaves.emplace(node.parent, node.tag);
  }
  for (std::size_t i = 0; i < schema.nodes.size(); ++i) {
    const SchemaFileNode& node = schema.nodes[i];
    expect(node.keys.empty() || node.kind == Kind::list, "a node that is no list has keys");
    for (const Tag& key : node.keys) {
      expect(leaves.contains({i + 1, key}), "a list's key is no leaf of it");
    }
  }
}

SchemaFile decode(std::string_view octets) {
  expect(octets.starts_with(kMagic), "it does not begin as one");
  octets.remove_prefix(kMagic.size());
  expect(octets.size() >= kFrameHeader, "it is cut short");
  std::size_t length = 0;
  for (const char c : octets.substr(0, kFrameHeader)) {
    length = length << 8 | static_cast<unsigned char>(c);
  }
  octets.remove_prefix(kFrameHeader);
  expect(octets.size() == length, "its length is not the one it states");

  FrameReader in(octets);
  expect(in.number() == kFormat, "its version is unknown");
  SchemaFile schema;
  const std::size_t count = in.array();
  for (std::size_t i = 0; i < count; ++i) schema.nodes.push_back(read_node(in));
  expect(in.at_end(), "something follows its nodes");
  check_relations(schema);
  return schema;
}

void write_all(const File& file, std::string_view octets, const std::string& path) {
  while (!octets.empty()) {
    const ssize_t written = write(file.fd(), octets.data(), octets.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail_os("cannot write", path);
    octets.remove_prefix(static_cast<std::size_t>(written));
  }
}

std::string read_all(const File& file, const std::string& path) {
  struct stat status {};
  if (fstat(file.fd(), &status) != 0) fail_os("cannot read", path);
  expect(S_ISREG(status.st_mode), "it is not a regular file");
  expect(static_cast<std::size_t>(status.st_size) <= kMaxFrame, "it is too large");
  std::string octets(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t have = 0;
  while (have < octets.size()) {
    const ssize_t got = read(file.fd(), octets.data() + have, octets.size() - have);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) fail_os("cannot read", path);
    if (got == 0) break;
    have += static_cast<std::size_t>(got);
  }
  octets.resize(have);
  return octets;
}

}  // namespace

void write_schema_file(const std::string& path, const SchemaFile& schema) {
  FrameWriter out;
  out.put(kFormat).array(schema.nodes.size());
  for (const SchemaFileNode& node : schema.nodes) put_node(out, node);
  const std::string octets = std::string(kMagic) + out.take();

  std::string aside = path + ".XXXXXX";
  const File file(mkostemp(aside.data(), O_CLOEXEC));
  if (file.fd() < 0) fail_os("cannot create", aside);
  try {
    write_all(file, octets, aside);
    if (fchmod(file.fd(), 0644) != 0 || fsync(file.fd()) != 0) fail_os("cannot write", aside);
    if (rename(aside.c_str(), path.c_str()) != 0) fail_os("cannot replace", path);
  } catch (...) {
    unlink(aside.c_str());
    throw;
  }
}

SchemaFile read_schema_file(const std::string& path) {
  const File file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.fd() < 0) fail_os("cannot open", path);
  try {
    return decode(read_all(file, path));
  } catch (const WireError& e) {
    throw std::runtime_error(path + " is not a schema file: " + e.what());
  }
}

}  // namespace standin
