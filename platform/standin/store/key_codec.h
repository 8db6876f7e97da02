// Store keys. A node is a sequence of steps from the root; a step is the node's number in two
// octets, most significant first, then, for a list entry, each key in a form whose byte order is
// key order and that no other key's form begins. The form is read back without the schema.
//   unsigned: 8 octets; signed, enumeration: 8 octets, sign flipped; string, octets: 00 -> 00 FF,
//   end 00 00; OID: 4 octets each after 01, end 00; address: its octets; bool: 1 octet.
//   Each form is preceded by its type's number, IPv4's before IPv6's.
// A row's or presence container's marker is the bare key. Attributes stand below their node at
// kAttributeId, then the number in 4 octets. docs/store.md has a worked example.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/standin/schema/schema.h"

namespace standin {

inline constexpr std::uint16_t kAttributeId = 0xfffe;
inline constexpr std::string_view kSchemaIdPrefix{"\0\0",
                                                  2};  // records that keep the nodes' numbers

// Throws Refusal (badtype) for a key value that has no order (a list, an empty value, unread text).
std::string store_key(const NodePath& path);
void append_step(std::string& key, const NodePath::Step& step);
void append_value(std::string& key, const Value& v);
void append_id(std::string& key, std::uint16_t id);

// End of the range that holds the node and all below it.
std::string range_end(std::string key);
// End of the range that holds the node and all below it but its own attributes, which stand last.
std::string content_end(std::string key);
// Key of one of the node's attributes, and the number that it was made of; nothing when `key` is
// not that of an attribute of the node.
std::string attribute_key(std::string node_key, std::uint32_t number);
std::optional<std::uint32_t> attribute_number(std::string_view key, std::string_view node_key);
// The `count` keys of the entry whose row stands at the head of `key` behind `list_key`; nothing
// when `key` does not stand below `list_key`, or is damaged.
std::optional<Level> entry_keys(std::string_view key, std::string_view list_key, std::size_t count);

}  // namespace standin
