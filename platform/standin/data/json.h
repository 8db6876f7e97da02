// JSON text (RFC 8259) as a tree that knows its lines. Numbers keep their text: what they mean is
// for the schema to say.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/wire/value.h"

namespace standin {

struct JsonMember;

struct Json {
  enum class Kind { null, boolean, number, string, array, object } kind = Kind::null;
  std::string text;                 // boolean, number, string
  std::vector<Json> items;          // array
  std::vector<JsonMember> members;  // object, in the text's order
  int line = 0;
};

struct JsonMember {
  std::string name;
  Json value;
};

// How a value of that type stands in the text: numbers of up to 32 bits and booleans bare, all else
// in quotes (RFC 7951, section 6.1).
Json::Kind json_kind(Type type);

// Throws Refusal (badvalue), "line 3: ..."; nesting is bounded.
Json parse_json(std::string_view text);

}  // namespace standin
