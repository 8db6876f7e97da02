// Values as texts: which a type admits, and their two forms.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace random_operations {

using Admits = bool (*)(const std::string&);

// What values the types admit.
namespace admits {
bool name(const std::string& v);           // 1 to 32 octets
bool optional_name(const std::string& v);  // 0 to 32
bool text(const std::string& v);           // 0 to 255
bool any(const std::string& v);
bool tag(const std::string& v);     // as text, no white space
bool word(const std::string& v);    // a tag that is not empty
bool engine(const std::string& v);  // 5 to 32 octets in hexadecimal
bool octets(const std::string& v);
bool oid(const std::string& v);
bool ip(const std::string& v);
bool level(const std::string& v);  // as it is stored
bool boolean(const std::string& v);
bool whole(const std::string& v, long long least, long long most);
}  // namespace admits

std::vector<std::string> split(const std::string& text, char separator);  // empty parts too
bool one_of(const std::string& v, std::initializer_list<std::string_view> labels);
// The two names of a security level; nothing is admitted that is not one.
bool is_level(const std::string& shown);
std::string stored_level(const std::string& shown);
std::string shown_level(const std::string& stored);
std::string shown_oid(const std::string& stored);  // 0 as "*"
// Numbers with dots between; nothing for other texts.
std::optional<std::vector<unsigned long long>> numbers(const std::string& text);

// Octets as "80:00:7e".
std::string hex(const std::string& octets);
std::string octets(const std::string& hex);
std::size_t octet_count(const std::string& hex);
std::string ip_octets(const std::string& ip);
std::string ip_text(const std::string& octets);
std::string canonical_ip(const std::string& v);

}  // namespace random_operations
