#include <msgpack.hpp>
#include <utility>

#include "platform/wire/frame.h"

namespace standin {
namespace {

// A msgpack stream that appends to a string, so that a finished frame leaves without a copy.
struct StringSink {
  std::string& out;
  void write(const char* data, std::size_t size) { out.append(data, size); }
};
using Packer = msgpack::packer<StringSink>;

std::uint32_t array_size(std::size_t n) {
  if (n > UINT32_MAX) throw WireError("too many elements for an array");
  return static_cast<std::uint32_t>(n);
}

void pack_text(Packer& packer, std::string_view text) {
  if (text.size() > kMaxFrame) throw WireError("a text is larger than a frame");
  packer.pack_str(static_cast<std::uint32_t>(text.size()));
  packer.pack_str_body(text.data(), static_cast<std::uint32_t>(text.size()));
}

void pack_octets(Packer& packer, std::string_view octets) {
  if (octets.size() > kMaxFrame) throw WireError("a binary value is larger than a frame");
  packer.pack_bin(static_cast<std::uint32_t>(octets.size()));
  packer.pack_bin_body(octets.data(), static_cast<std::uint32_t>(octets.size()));
}

void open_value(Packer& packer, const Value& v, std::size_t contents) {
  packer.pack_array(array_size(contents + 1));
  packer.pack_uint8(static_cast<std::uint8_t>(v.type()));
}

// `depth`: arrays that the value may still open.
void pack(Packer& packer, const Value& v, std::size_t depth) {
  if (depth == 0) throw WireError("a value is nested too deep");
  switch (v.type()) {
    case Type::noexists:
      return open_value(packer, v, 0);
    case Type::xmltag:
      open_value(packer, v, 2);
      packer.pack_uint32(v.tag().tag);
      packer.pack_uint32(v.tag().ns);
      return;
    case Type::str:
    case Type::buf:
      open_value(packer, v, 1);
      return pack_text(packer, v.bytes());
    case Type::ipv4:
    case Type::ipv6:
    case Type::binary:
      open_value(packer, v, 1);
      return pack_octets(packer, v.bytes());
    case Type::int8:
    case Type::int16:
    case Type::int32:
    case Type::int64:
    case Type::enumeration:
      open_value(packer, v, 1);
      packer.pack_int64(v.number());
      return;
    case Type::uint8:
    case Type::uint16:
    case Type::uint32:
    case Type::uint64:
      open_value(packer, v, 1);
      packer.pack_uint64(v.unsigned_number());
      return;
    case Type::boolean:
      open_value(packer, v, 1);
      if (v.boolean()) {
        packer.pack_true();
      } else {
        packer.pack_false();
      }
      return;
    case Type::oid:
      open_value(packer, v, v.oid().size());
      for (const std::uint32_t n : v.oid()) packer.pack_uint32(n);
      return;
    case Type::list:
      open_value(packer, v, v.items().size());
      for (const Value& item : v.items()) pack(packer, item, depth - 1);
      return;
  }
}

void pack(Packer& packer, const Level& values, std::size_t depth) {
  if (depth == 0) throw WireError("a value is nested too deep");
  packer.pack_array(array_size(values.size()));
  for (const Value& v : values) pack(packer, v, depth - 1);
}

void pack(Packer& packer, const PathStep& step, std::size_t depth) {
  if (depth == 0) throw WireError("a path is nested too deep");
  const bool by_tag = step.kind == PathStep::Kind::tag;
  const bool by_name = step.kind == PathStep::Kind::name;
  packer.pack_array(array_size(1 + (by_tag ? 2 : by_name ? 1 : step.keys.size())));
  packer.pack_uint8(static_cast<std::uint8_t>(step.kind));
  if (by_name) return pack_text(packer, step.name);
  if (by_tag) {
    packer.pack_uint32(step.tag.tag);
    packer.pack_uint32(step.tag.ns);
    return;
  }
  for (const Value& v : step.keys) pack(packer, v, depth - 1);
}

// Room for the length and for the header of an array of up to 15 elements, as nearly every message
// is; larger headers are put in when the count is known.
constexpr std::size_t kHead = kFrameHeader + 1;

}  // namespace

struct FrameWriter::Impl {
  std::string buffer = std::string(kHead, '\0');
  std::size_t count = 0;          // elements of the message so far
  std::vector<std::size_t> open;  // elements still due in each open array, the innermost last
  StringSink sink{buffer};
  Packer packer{sink};

  // The packer for one element, which it accounts for.
  Packer& element() {
    if (open.empty()) {
      ++count;
    } else {
      --open.back();
    }
    return packer;
  }
  void close_full_arrays() {
    while (!open.empty() && open.back() == 0) open.pop_back();
  }
  std::size_t depth_left() const { return kMaxDepth - 1 - open.size(); }
};

FrameWriter::FrameWriter() : impl_(std::make_unique<Impl>()) {}
FrameWriter::~FrameWriter() = default;
FrameWriter::FrameWriter(FrameWriter&&) noexcept = default;
FrameWriter& FrameWriter::operator=(FrameWriter&&) noexcept = default;

FrameWriter& FrameWriter::put(std::uint64_t n) {
  impl_->element().pack_uint64(n);
  impl_->close_full_arrays();
  return *this;
}

FrameWriter& FrameWriter::put(std::int64_t n) {
  impl_->element().pack_int64(n);
  impl_->close_full_arrays();
  return *this;
}

FrameWriter& FrameWriter::put(bool b) {
  Packer& packer = impl_->element();
  if (b) {
    packer.pack_true();
  } else {
    packer.pack_false();
  }
  impl_->close_full_arrays();
  return *this;
}

FrameWriter& FrameWriter::put(std::string_view text) {
  pack_text(impl_->element(), text);
  impl_->close_full_arrays();
  return *this;
}

FrameWriter& FrameWriter::put(const Value& v) {
  pack(impl_->element(), v, impl_->depth_left());
  impl_->close_full_arrays();
  return *this;
}

FrameWriter& FrameWriter::put(const Level& values) {
  pack(impl_->element(), values, impl_->depth_left());
  impl_->close_full_arrays();
  return *this;
}

FrameWriter& FrameWriter::put(const Keypath& kp) {
  array(kp.size());
  for (const Level& level : kp) put(level);
  return *this;
}

FrameWriter& FrameWriter::put(const Path& path) {
  array(path.size());
  for (const PathStep& step : path) {
    const std::size_t depth = impl_->depth_left();
    pack(impl_->element(), step, depth);
    impl_->close_full_arrays();
  }
  return *this;
}

FrameWriter& FrameWriter::put(const std::vector<std::string>& texts) {
  array(texts.size());
  for (const std::string& text : texts) put(std::string_view(text));
  return *this;
}

FrameWriter& FrameWriter::put_nil() {
  impl_->element().pack_nil();
  impl_->close_full_arrays();
  return *this;
}

FrameWriter& FrameWriter::array(std::size_t n) {
  if (impl_->depth_left() == 0) throw WireError("a message is nested too deep");
  impl_->element().pack_array(array_size(n));
  impl_->open.push_back(n);
  impl_->close_full_arrays();
  return *this;
}

std::string FrameWriter::take() {
  if (!impl_->open.empty()) throw std::logic_error("a frame's array lacks elements");
  std::string head(kFrameHeader, '\0');
  StringSink sink{head};
  Packer(sink).pack_array(array_size(impl_->count));

  std::string frame = std::exchange(impl_->buffer, std::string(kHead, '\0'));
  impl_->count = 0;
  frame.replace(0, kHead, head);
  const std::size_t length = frame.size() - kFrameHeader;
  if (length > kMaxFrame) throw WireError("a message is larger than a frame");
  for (std::size_t i = 0; i < kFrameHeader; ++i) {
    frame[i] = static_cast<char>(length >> (8 * (kFrameHeader - 1 - i)));
  }
  return frame;
}

std::string pack_value(const Value& v) {
  std::string out;
  StringSink sink{out};
  Packer packer(sink);
  pack(packer, v, kMaxDepth);
  return out;
}

}  // namespace standin
