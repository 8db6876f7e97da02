// Frames of a peer. The first octet picks the message that is due; the rest is the payload.
#include <cstdint>
#include <cstdlib>
#include <functional>

#include "platform/wire/frame.h"

namespace {

using namespace standin;

// A value that was accepted must travel on unchanged.
void value(FrameReader& in) {
  const Value v = in.value();
  to_text(v);
  if (v != unpack_value(pack_value(v))) std::abort();
}

void optional_value(FrameReader& in) {
  if (!in.skip_nil()) value(in);
}

void attributes(FrameReader& in) {
  for (std::size_t n = in.array(); n > 0; --n) {
    in.array();
    in.number();
    value(in);
  }
}

void rows(FrameReader& in) {
  in.boolean();
  for (std::size_t n = in.array(); n > 0; --n) {
    in.array();
    in.level();
    for (std::size_t leaves = in.array(); leaves > 0; --leaves) {
      in.array();
      value(in);
      value(in);
    }
  }
}

void tree(FrameReader& in, int depth) {
  if (depth > 16) return;
  in.array();
  const std::uint64_t kind = in.number();
  in.text();
  in.text();
  if (kind == 2) {
    for (std::size_t n = in.array(); n > 0; --n) tree(in, depth + 1);
  } else {
    in.texts();
  }
}

// What follows the op and the handle, a message each.
const std::function<void(FrameReader&)> kMessages[] = {
    [](FrameReader& in) { in.number(), in.number(), in.text(), in.number(); },  // hello
    [](FrameReader& in) {
      in.array(), in.array(), in.text(), in.number(), in.texts();
    },  // register
    [](FrameReader& in) { in.number(), in.number(), in.text(), in.keypath(), optional_value(in); },
    [](FrameReader& in) { in.number(), in.text(), in.keypath(), in.signed_number(); },  // get_next
    [](FrameReader& in) { in.number(), in.path(), value(in); },                         // set_elem
    [](FrameReader& in) { in.number(), in.path(), in.level(); },                        // move
    [](FrameReader& in) { in.level(), in.signed_number(); },                            // next_key
    attributes,
    rows,
    [](FrameReader& in) { tree(in, 0); },
    [](FrameReader& in) { in.path(), in.texts(); },  // nb_set
    [](FrameReader& in) {                            // xpath answer
      for (std::size_t n = in.array(); n > 0; --n) in.array(), in.keypath(), optional_value(in);
    },
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view payload(reinterpret_cast<const char*>(data) + 1, size - 1);
  try {
    FrameReader in(payload);
    kMessages[data[0] % std::size(kMessages)](in);
    in.at_end();
  } catch (const WireError&) {
  }
  try {
    unpack_value(payload);
  } catch (const WireError&) {
  }
  return 0;
}
