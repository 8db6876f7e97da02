// Values: from the client's text, from typed values, and back to text.
#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <unordered_set>

#include "text_rules.h"
#include "types.h"

namespace standin {
namespace {

constexpr std::size_t kLongestOid = 128 * std::string_view("4294967295.").size();

Reading refused(std::string reason) { return {{}, std::move(reason), false}; }

const std::string* label_of(const Node& node, std::int64_t number) {
  for (const auto& [each, label] : node.labels) {
    if (each == number) return &label;
  }
  return nullptr;
}

// libyang's canonical text, or nothing and why.
struct Checked {
  std::string text;
  std::string reason;
};

Checked ask_libyang(const ly_ctx* ctx, const Node& node, const std::string& text) {
  const char* canonical = nullptr;
  const LY_ERR result =
      lyd_value_validate(ctx, node.lysc, text.c_str(), text.size(), nullptr, nullptr, &canonical);
  if (result == LY_SUCCESS || result == LY_EINCOMPLETE) {
    Checked ok{canonical == nullptr ? "" : canonical, {}};
    if (canonical != nullptr) lydict_remove(ctx, canonical);
    return ok;
  }
  // libyang's own sentences quote the value, which may be a secret.
  const char* message = ly_errmsg(ctx);
  std::string reason = requirement(node);
  if (message != nullptr && is_pattern_message(node, message)) reason = message;
  if (reason.empty()) reason = "it does not have the form of its type";
  ly_err_clean(const_cast<ly_ctx*>(ctx), nullptr);
  return {{}, std::move(reason)};
}

Value address_from(const std::string& text) {
  std::array<char, 16> octets{};
  const bool v6 = text.find(':') != std::string::npos;
  if (inet_pton(v6 ? AF_INET6 : AF_INET, text.c_str(), octets.data()) != 1) return {};
  return Value::address(std::string(octets.data(), v6 ? 16 : 4));
}

Value oid_from(std::string_view text) {
  Oid oid;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    std::uint32_t number = 0;
    at = std::from_chars(at, end, number).ptr + 1;
    oid.push_back(number);
  }
  return Value::oid(std::move(oid));
}

template <typename Number>
Number number_from(std::string_view text) {
  Number n = 0;
  std::from_chars(text.data(), text.data() + text.size(), n);
  return n;
}

// What libyang admitted and made canonical cannot fail here, but for an address with a zone.
Value from_canonical(const Node& node, const std::string& text) {
  switch (node.type) {
    case Type::buf:
      return Value::buf(text);
    case Type::binary:
      return Value::octets(octets_from_text(text).value_or(""));
    case Type::oid:
      return oid_from(text);
    case Type::ipv4:
      return address_from(text);
    case Type::boolean:
      return Value::boolean(text == "true");
    case Type::xmltag:
      return Value::tag(node.tag);
    case Type::enumeration: {
      const auto found =
          std::ranges::find(node.labels, text, [](const auto& l) { return l.second; });
      return found == node.labels.end() ? Value() : Value::enumeration(found->first);
    }
    case Type::uint8:
    case Type::uint16:
    case Type::uint32:
    case Type::uint64:
      return Value::unsigned_number(node.type, number_from<std::uint64_t>(text));
    default:
      return Value::signed_number(node.type, number_from<std::int64_t>(text));
  }
}

bool same_type(const Node& node, const Value& v) {
  return v.is(node.type) || (node.type == Type::ipv4 && v.is(Type::ipv6));
}

std::string type_problem(const Node& node, const Value& v) {
  std::string text = "the type " + node.type_name + " is needed";
  if (v.is(Type::list)) text += ", not a list";
  return text;
}

std::string yang_text(const Node& node, const Value& v) {
  if (v.is(Type::xmltag)) return {};
  if (v.is(Type::enumeration) && node.type == Type::enumeration) {
    if (const std::string* label = label_of(node, v.number())) return *label;
  }
  return to_text(v);
}

// RFC 7950 7.7: the values of a configuration leaf-list are unique.
const Value* repeated_item(const Node& node, const std::vector<Value>& items) {
  std::unordered_set<std::string> known;
  for (const Value& item : items) {
    if (!known.insert(yang_text(node, item)).second) return &item;
  }
  return nullptr;
}

}  // namespace

Reading read_value(const ly_ctx* ctx, const Node& node, std::string_view text) {
  std::string lexical(text);
  if (!is_plain_text(text)) {
    return refused("text is needed: UTF-8 without control characters other than tab and newline");
  }
  if (node.type == Type::binary) {
    auto octets = octets_from_text(text);
    if (!octets) return refused(requirement(node));
    if (auto problem = size_problem(node, octets->size()); !problem.empty()) {
      return refused(std::move(problem));
    }
    Value value = Value::octets(std::move(*octets));
    // Reading them was the pattern's own check, which takes seconds for a million of them.
    if (pattern_count(node) <= 1) return {std::move(value), {}, false};
    lexical = to_text(value);
  } else if (node.type == Type::buf) {
    if (auto problem = size_problem(node, text.size()); !problem.empty()) {
      return refused(std::move(problem));
    }
  } else if (node.type == Type::oid && text.size() > kLongestOid) {
    return refused("1 to 128 numbers are needed");
  }
  Checked checked = ask_libyang(ctx, node, lexical);
  if (!checked.reason.empty()) return refused(std::move(checked.reason));
  Value value = from_canonical(node, checked.text);
  if (!value.exists()) return refused(requirement(node));
  return {std::move(value), {}, false};
}

Reading check_value(const ly_ctx* ctx, const Node& node, const Value& v) {
  if (v.is(Type::str)) return read_value(ctx, node, v.bytes());
  if (!same_type(node, v)) return {{}, type_problem(node, v), true};
  if (v.is(Type::xmltag)) {
    if (v.tag().tag != node.tag.tag) return refused("another element's tag");
    return {Value::tag(node.tag), {}, false};
  }
  Reading reading = read_value(ctx, node, yang_text(node, v));
  // A number that an enumeration lacks prints as a number, which could be the label of another.
  if (reading.ok() && v.is(Type::enumeration) && reading.value != v) {
    return refused(requirement(node));
  }
  return reading;
}

Refusal refused_value(const Node& node, const Value& v, const Reading& reading) {
  std::string text = "invalid value ";
  if (!node.secret) text += "\"" + one_line(yang_text(node, v)) + "\" ";
  text += "for " + path_of(node) + ": " + reading.reason;
  return {reading.wrong_type ? ErrorCode::badtype : ErrorCode::badvalue, text};
}

Value Schema::parse(const Node& node, std::string_view text) const {
  return check(node, Value::text(std::string(text)));
}

Value Schema::check(const Node& node, const Value& v) const {
  if (!node.has_value()) throw Refusal(ErrorCode::badtype, node.name + " takes no value");
  if (node.kind == Node::Kind::leaf_list && v.is(Type::list)) {
    std::vector<Value> items;
    for (const Value& item : v.items()) items.push_back(check(node, item));
    if (const Value* repeated = repeated_item(node, items)) {
      throw refused_value(node, *repeated, refused("it stands there twice"));
    }
    return Value::list(std::move(items));
  }
  Reading reading = check_value(impl_->ctx.get(), node, v);
  if (!reading.ok()) throw refused_value(node, v, reading);
  return std::move(reading.value);
}

bool Schema::admits(const Node& node, const Value& v) const {
  if (!node.has_value()) return false;
  if (node.kind == Node::Kind::leaf_list && v.is(Type::list)) {
    return std::ranges::all_of(v.items(), [&](const Value& item) { return admits(node, item); });
  }
  return check_value(impl_->ctx.get(), node, v).ok();
}

std::string Schema::print(const Node& node, const Value& v) const {
  if (!v.is(Type::list)) return yang_text(node, v);
  std::string words;
  for (const Value& item : v.items()) {
    if (!words.empty()) words += ' ';
    words += quote_word(yang_text(node, item));
  }
  return words;
}

std::string Schema::to_yang(const Node& node, const Value& v) const { return yang_text(node, v); }

}  // namespace standin
