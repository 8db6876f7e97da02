#include "path_format.h"

#include <confd_lib.h>

#include "convert.h"
#include "error.h"

namespace standin {
namespace {

[[noreturn]] void bad(const std::string& text) { throw ApiError(CONFD_ERR_BADPATH, text); }

// va_list cannot be a member that is copied about, nor passed by reference where it is an array.
struct Arguments {
  va_list list;
};

class Builder {
 public:
  Builder(const char* fmt, Arguments& args) : at_(fmt), args_(args) {}

  Path build() {
    while (*at_ != '\0') {
      if (*at_ == '%') {
        ++at_;
        conversion();
      } else if (*at_ == '{') {
        ++at_;
        flush();
        keys();
      } else {
        text_ += *at_++;
      }
    }
    flush();
    return std::move(path_);
  }

 private:
  // A conversion outside braces.
  void conversion() {
    switch (*at_++) {
      case 'x':
        element();
        break;
      case 'h':
        keypath();
        break;
      case 's':
        text_ += text_argument();
        break;
      case 'd':
        text_ += std::to_string(va_arg(args_.list, int));
        break;
      default:
        bad("unknown conversion in a path format");
    }
  }

  void element() {
    const auto* v = va_arg(args_.list, const confd_value_t*);
    if (v == nullptr) bad("%x without a value");
    if (v->type != C_XMLTAG) bad("a value that is no element stands outside braces");
    if (text_.empty() || text_.back() != '/') bad("an element without '/' before it");
    flush();
    PathStep step;
    step.kind = PathStep::Kind::tag;
    step.tag = {v->val.xmltag.tag, v->val.xmltag.ns};
    path_.push_back(std::move(step));
    open_ = false;
  }

  void keypath() {
    const auto* kp = va_arg(args_.list, const confd_hkeypath_t*);
    if (kp == nullptr) bad("%h without a keypath");
    if (!path_.empty() || !text_.empty()) bad("%h stands at the start of a path only");
    path_ = to_path(to_wire(*kp));
    open_ = false;
  }

  // Reads the text collected so far as path text.
  void flush() {
    if (text_.empty()) return;
    if (text_.front() != '/') bad("'/' is missing before \"" + text_ + "\"");
    Path more = parse_path(text_);
    open_ = text_.back() == '/';
    path_.insert(path_.end(), std::make_move_iterator(more.begin()),
                 std::make_move_iterator(more.end()));
    text_.clear();
  }

  // From behind the opening brace to behind the closing one.
  void keys() {
    if (path_.empty() || open_ || path_.back().kind == PathStep::Kind::keys)
      bad("keys without an element before them");
    PathStep step;
    step.kind = PathStep::Kind::keys;
    for (;;) {
      while (*at_ == ' ' || *at_ == '\t') ++at_;
      if (*at_ == '}') break;
      if (*at_ == '\0') bad("'}' is missing");
      step.keys.push_back(key());
      if (*at_ != ' ' && *at_ != '\t' && *at_ != '}') bad("keys without a blank between them");
    }
    ++at_;
    if (step.keys.empty()) bad("braces without a key");
    path_.push_back(std::move(step));
  }

  Value key() {
    if (at_[0] == '%' && at_[1] == 'x') {
      at_ += 2;
      return value_key(va_arg(args_.list, const confd_value_t*));
    }
    if (*at_ == '"') {
      ++at_;
      return Value::text(quoted());
    }
    std::string word;
    while (*at_ != '\0' && *at_ != ' ' && *at_ != '\t' && *at_ != '}') {
      const char c = *at_++;
      if (c == '{' || c == '"' || c == '\\') bad("a key that should stand in quotes");
      if (c == '%')
        key_conversion(word);
      else
        word += c;
    }
    return Value::text(std::move(word));
  }

  static Value value_key(const confd_value_t* v) {
    if (v == nullptr) bad("%x without a value");
    switch (v->type) {
      case C_NOEXISTS:
      case C_XMLTAG:
      case C_XMLBEGIN:
      case C_XMLEND:
      case C_XMLBEGINDEL:
      case C_LIST:
        throw ApiError(CONFD_ERR_BADVALUE, "a key that is no value");
      default:
        return to_wire(*v);
    }
  }

  std::string quoted() {
    std::string word;
    while (*at_ != '"') {
      if (*at_ == '\0') bad("a quote is missing");
      if (*at_ == '%') {
        ++at_;
        key_conversion(word);
        continue;
      }
      if (*at_ == '\\') {
        ++at_;
        if (*at_ != '"' && *at_ != '\\') bad("a backslash before what needs none");
      }
      word += *at_++;
    }
    ++at_;
    return word;
  }

  // A conversion inside a word of the braces; the text of its argument is taken as it stands.
  void key_conversion(std::string& word) {
    switch (*at_++) {
      case 's':
        word += text_argument();
        break;
      case 'd':
        word += std::to_string(va_arg(args_.list, int));
        break;
      case '%':
        word += '%';
        break;
      default:
        bad("unknown conversion in the keys of a path format");
    }
  }

  const char* text_argument() {
    const char* text = va_arg(args_.list, const char*);
    if (text == nullptr) bad("%s without a text");
    return text;
  }

  const char* at_;
  Arguments& args_;
  Path path_;
  std::string text_;   // path text that was not read yet
  bool open_ = false;  // what was read ends in '/'
};

}  // namespace

Path path_from_format(const char* fmt, va_list args) {
  if (fmt == nullptr) bad("no path");
  if (*fmt == '\0') bad("empty path");
  Arguments own;
  va_copy(own.list, args);
  struct End {
    Arguments& a;
    ~End() { va_end(a.list); }
  } end{own};
  return Builder(fmt, own).build();
}

}  // namespace standin
