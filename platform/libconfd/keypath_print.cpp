#include "keypath_print.h"

#include <confd_lib.h>

#include <cctype>

#include "convert.h"
#include "error.h"
#include "schema_map.h"
#include "text.h"

namespace standin {
namespace {

std::string wire_text(const Value& v) {
  if (v.is(Type::noexists)) return {};
  if (v.is(Type::xmltag)) return tag_text(v.tag());
  return to_text(v);
}

std::string labelled(const Value& v, const SchemaFileNode* leaf) {
  if (leaf != nullptr && v.is(Type::enumeration))
    for (const auto& [number, label] : leaf->labels)
      if (number == v.number()) return label;
  return wire_text(v);
}

// Follows a keypath down the mapped schema while it prints. A node that the schema lacks, and all
// below it, prints in numbers.
class Walk {
 public:
  void element(Tag tag) {
    const bool first = out_.empty();
    const SchemaMap* map = schema_map();
    if (map != nullptr && (first || node_ != nullptr)) node_ = map->child(node_, tag);
    out_ += '/';
    if (first && node_ != nullptr) out_ += node_->prefix + ':';
    out_ += node_ != nullptr ? node_->name : tag_text(tag);
  }

  void name(const std::string& name) { out_ += '/' + name; }

  void keys(const Level& values) {
    out_ += '{';
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i != 0) out_ += ' ';
      out_ += quote_word(labelled(values[i], key_leaf(i)));
    }
    out_ += '}';
  }

  std::string take() { return out_.empty() ? "/" : std::move(out_); }

 private:
  const SchemaFileNode* key_leaf(std::size_t i) const {
    if (node_ == nullptr || node_->kind == SchemaFileNode::Kind::leaf_list) return node_;
    return i < node_->keys.size() ? schema_map()->child(node_, node_->keys[i]) : nullptr;
  }

  std::string out_;
  const SchemaFileNode* node_ = nullptr;
};

// Prints one %x of confd_format_keypath(): quoted when it could be taken for something else, given
// the character that ends it.
std::string delimited(const std::string& text, char end) {
  const char special[] = {';', '"', '\\', end, '\0'};
  if (!text.empty() && text.find_first_of(special) == std::string::npos &&
      text.find('\0') == std::string::npos)
    return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string formatted_value(const confd_value_t* v, bool in_braces, char end) {
  if (v == nullptr) throw ApiError(CONFD_ERR_BADPATH, "%x without a value");
  const std::string text = value_text(*v);
  if (v->type == C_XMLTAG) return text;
  return in_braces ? quote_word(text) : delimited(text, end);
}

std::string format_keypath(const char* fmt, va_list args) {
  std::string out;
  bool in_braces = false;
  for (const char* at = fmt; *at != '\0'; ++at) {
    if (*at != '%') {
      if (*at == '{' || *at == '}') in_braces = *at == '{';
      out += *at;
      continue;
    }
    switch (*++at) {
      case 'x':
        out += formatted_value(va_arg(args, const confd_value_t*), in_braces, at[1]);
        break;
      case 'h': {
        const auto* kp = va_arg(args, const confd_hkeypath_t*);
        if (kp == nullptr) throw ApiError(CONFD_ERR_BADPATH, "%h without a keypath");
        out += keypath_text(to_wire(*kp));
        break;
      }
      case 's': {
        const char* text = va_arg(args, const char*);
        if (text == nullptr) throw ApiError(CONFD_ERR_BADPATH, "%s without a text");
        out += text;
        break;
      }
      case 'd':
        out += std::to_string(va_arg(args, int));
        break;
      case '%':
        out += '%';
        break;
      default:
        throw ApiError(CONFD_ERR_BADPATH, "unknown conversion in a path format");
    }
  }
  return out;
}

}  // namespace

std::string keypath_text(const Keypath& kp) {
  Walk walk;
  for (const Level& level : kp) {
    if (level.size() == 1 && level[0].is(Type::xmltag))
      walk.element(level[0].tag());
    else
      walk.keys(level);
  }
  return walk.take();
}

std::string path_text(const Path& path) {
  Walk walk;
  for (const PathStep& step : path) {
    switch (step.kind) {
      case PathStep::Kind::name:
        walk.name(step.name);
        break;
      case PathStep::Kind::tag:
        walk.element(step.tag);
        break;
      case PathStep::Kind::keys:
        walk.keys(step.keys);
        break;
    }
  }
  return walk.take();
}

std::string value_text(const confd_value_t& v) { return wire_text(to_wire(v)); }

}  // namespace standin

using namespace standin;

namespace {

// A print function answers with text whatever it is given.
template <typename Body>
int printed(char* buf, int n, Body&& text) {
  try {
    return copy_text(buf, n, text());
  } catch (...) {
    fail_for_current_exception();
    return copy_text(buf, n, "");
  }
}

}  // namespace

int confd_pp_value(char* buf, int n, const confd_value_t* v) {
  return printed(buf, n, [&] { return v == nullptr ? std::string() : value_text(*v); });
}

int confd_pp_kpath(char* buf, int n, const confd_hkeypath_t* kp) {
  return printed(buf, n,
                 [&] { return kp == nullptr ? std::string() : keypath_text(to_wire(*kp)); });
}

int confd_format_keypath(char* buf, int n, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int length =
      printed(buf, n, [&] { return fmt == nullptr ? std::string() : format_keypath(fmt, args); });
  va_end(args);
  return length;
}
