// What the northbound rules need of the daemons: one callback, one answer.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/standin/schema/schema.h"
#include "platform/standin/store/stored_tree.h"
#include "platform/wire/messages.h"

namespace standin {

// An answer to a callback. `error` never gets here: it is thrown as a Refusal (failed) with the
// callback's text, or that of its last refused nested call, or a generic one that names the node.
struct Answer {
  enum class Kind : std::uint8_t { ok, value, keys, not_found, found, attributes } kind = Kind::ok;
  Value value;
  Level keys;  // empty: end of the list
  std::int64_t next = -1;
  Attributes attributes;
};

// The callpoint behind a node, as a transaction sees it.
enum class Serving : std::uint8_t { live, never_registered, gone };

// Implemented by the engine, and by a scripted one in tests. A call may block and lets go of the
// server's lock meanwhile: look everything up again afterwards. Throws Refusal: failed (the
// callback's own refusal), gone (its daemon has gone, or answered too late), deadlock.
class Callouts {
 public:
  virtual ~Callouts() = default;
  // `point`: the callpoint's or validation point's name.
  virtual Serving serving(const std::string& point) = 0;
  // The callpoint registered this callback.
  virtual bool has(const std::string& point, Op callback) = 0;
  struct Arguments {
    std::int64_t next = -1;
    Value value;               // new value, attribute value; noexists: null
    Value choice, case_value;  // case_value noexists: null
    std::uint32_t attribute = 0;
    std::vector<std::uint32_t> wanted;
  };
  virtual Answer call(const std::string& point, Op callback, const NodePath& path,
                      const Arguments& arguments) = 0;
  virtual void validation(const std::string& point,
                          bool start) = 0;  // validate_init / validate_stop
};

}  // namespace standin
