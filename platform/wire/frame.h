// Frames on a socket: a 4-octet length, most significant first, then one msgpack array.
// docs/wire-protocol.md has the layout and a worked example.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/wire/path.h"
#include "platform/wire/value.h"

namespace standin {

inline constexpr std::uint32_t kWireVersion = 1;
inline constexpr std::size_t kFrameHeader = 4;
inline constexpr std::size_t kMaxFrame = 64u << 20;  // octets after the header
inline constexpr std::size_t kMaxDepth = 32;         // nesting of msgpack arrays

// What a peer sent is not a frame, or not the message that was due.
struct WireError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Builds one frame. Every put appends one element of the message's array.
class FrameWriter {
 public:
  FrameWriter();
  ~FrameWriter();
  FrameWriter(FrameWriter&&) noexcept;
  FrameWriter& operator=(FrameWriter&&) noexcept;

  FrameWriter& put(std::uint64_t n);
  FrameWriter& put(std::int64_t n);
  FrameWriter& put(std::uint32_t n) { return put(std::uint64_t{n}); }
  FrameWriter& put(std::int32_t n) { return put(std::int64_t{n}); }
  FrameWriter& put(bool b);
  FrameWriter& put(std::string_view text);
  FrameWriter& put(const char* text) { return put(std::string_view(text)); }
  FrameWriter& put(const Value& v);
  FrameWriter& put(const Level& values);
  FrameWriter& put(const Keypath& kp);
  FrameWriter& put(const Path& path);
  FrameWriter& put(const std::vector<std::string>& texts);
  FrameWriter& put_nil();
  // Opens an array of n elements; the next n puts fill it.
  FrameWriter& array(std::size_t n);

  // The frame, header included. The writer is empty afterwards. Throws WireError past kMaxFrame,
  // std::logic_error when an open array lacks elements.
  std::string take();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Reads the elements of a frame's array in order. Every get throws WireError when the element is
// missing or of another kind. Limits nesting and sizes; trusts nothing.
class FrameReader {
 public:
  // `payload`: what follows the header. Copies what it needs.
  explicit FrameReader(std::string_view payload);
  ~FrameReader();
  FrameReader(FrameReader&&) noexcept;
  FrameReader& operator=(FrameReader&&) noexcept;

  bool at_end() const;
  std::uint64_t number();
  std::int64_t signed_number();
  bool boolean();
  std::string text();
  Value value();
  Level level();
  Keypath keypath();
  Path path();
  std::vector<std::string> texts();
  // True, and the element passed over, when the next one is nil.
  bool skip_nil();
  // Enters a nested array and returns the number of its elements, which the following gets read.
  std::size_t array();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Value <-> octets of its own, for the store.
std::string pack_value(const Value& v);
Value unpack_value(std::string_view octets);  // throws WireError

enum class IoResult : std::uint8_t { ok, closed, timeout, error };

using Deadline = std::chrono::steady_clock::time_point;

// Sends a whole frame; never raises SIGPIPE. `closed`: the peer has gone; `error` leaves errno set.
// With a deadline, a peer that does not read gives `timeout`.
IoResult send_frame(int fd, std::string_view frame,
                    std::optional<Deadline> deadline = std::nullopt);

// Receives one frame's payload. `closed` at end of file between frames or inside one; `error` with
// errno EMSGSIZE for a length past `limit`. Memory grows with what arrived, not with the length
// that was announced.
IoResult recv_frame(int fd, std::string& payload, std::optional<Deadline> deadline = std::nullopt,
                    std::size_t limit = kMaxFrame);

}  // namespace standin
