// Words of snmpd's configuration that no name can break out of.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "rows.h"

namespace standin::agent {

// In double quotes, with a backslash before quotes and backslashes. Nothing for a text with a
// control character: a line of the configuration cannot hold it.
std::optional<std::string> quoted(std::string_view text);
// As octets, "0x616c" or `""`: any text, where snmpd reads octets.
std::string hex(std::string_view octets);
// ".1.3.6"
std::string dotted(const Oid& oid);
// For a person to read: control characters as \xNN.
std::string printable(std::string_view text);

}  // namespace standin::agent
