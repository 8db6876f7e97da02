// The elements of one msgpack object, flat and in order: read in a single pass that checks depth,
// counts and kinds before anything is built from them. Internal to the wire library.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace standin {

inline constexpr std::size_t kMaxElements = 8u << 20;  // in one frame, nested ones included

struct Token {
  enum class Kind : std::uint8_t { nil, boolean, positive, negative, text, octets, array };
  Kind kind = Kind::nil;
  std::uint32_t size = 0;  // octets of text and octets; elements of an array
  union {
    std::uint64_t number = 0;  // boolean, positive; negative as two's complement
    const char* data;          // text, octets: inside the payload
  };
};

// Throws WireError unless `payload` is exactly one object made of nil, booleans, integers, strings,
// binaries and arrays. The tokens point into `payload`.
std::vector<Token> tokenize(std::string_view payload);

}  // namespace standin
