// MAAPI: single leaves, cases, and the leaves of a row together.
#include <confd_maapi.h>

#include <climits>
#include <cstdlib>
#include <cstring>

#include "change_counts.h"
#include "convert.h"
#include "error.h"
#include "maapi_session.h"
#include "path_format.h"

using namespace standin;
using Effect = MaapiCall::Effect;

namespace {

// The leaf's value, from what was read ahead where that still holds.
int get_value(int sock, int thandle, const char* fmt, va_list args, Value& v) {
  Path path = path_from_format(fmt, args);
  const auto session = session_of(sock);
  if (const auto ahead = session->ahead.find(thandle); ahead != session->ahead.end()) {
    const ChangeCounts::State state = change_counts().state(thandle);
    const Value* known =
        state.watched && !session->broken ? ahead->second.leaf(path, state.generation) : nullptr;
    if (known != nullptr) {
      v = *known;
      return CONFD_OK;
    }
  }
  MaapiCall call(sock, Op::get_elem, thandle, std::move(path), Effect::reads);
  if (call.run() != CONFD_OK) return CONFD_ERR;
  v = call.answer().value();
  return CONFD_OK;
}

int set_value(int sock, int thandle, const confd_value_t* v, const char* fmt, va_list args) {
  return guarded([&] {
    if (v == nullptr) return fail(CONFD_ERR_APIUSE, "no value to set");
    if (v->type == C_NOEXISTS) return fail(CONFD_ERR_BADVALUE, "no value to set");
    MaapiCall call(sock, Op::set_elem, thandle, path_from_format(fmt, args), Effect::changes);
    call.elements().put(to_wire(*v));
    return call.run();
  });
}

int wrong_type(const Value& v, const char* wanted) {
  return fail(CONFD_ERR_BADTYPE,
              std::string(wanted) + " wanted, the leaf has type " + std::to_string(int(v.type())));
}

int get_octets(int sock, int thandle, unsigned char** rval, int* bufsiz, Type type, const char* fmt,
               va_list args) {
  return guarded([&] {
    Value v;
    if (get_value(sock, thandle, fmt, args, v) != CONFD_OK) return CONFD_ERR;
    if (!v.is(type)) return wrong_type(v, type == Type::buf ? "text" : "octets");
    const std::string& octets = v.bytes();
    // Terminated beyond its size, for callers that print it.
    auto* copy = static_cast<unsigned char*>(std::malloc(octets.size() + 1));
    if (copy == nullptr) return fail(CONFD_ERR_MALLOC);
    std::memcpy(copy, octets.c_str(), octets.size() + 1);
    *rval = copy;
    *bufsiz = static_cast<int>(octets.size());
    return CONFD_OK;
  });
}

}  // namespace

int maapi_vget_elem(int sock, int thandle, confd_value_t* v, const char* fmt, va_list args) {
  return guarded([&] {
    Value got;
    if (get_value(sock, thandle, fmt, args, got) != CONFD_OK) return CONFD_ERR;
    *v = from_wire(got);
    return CONFD_OK;
  });
}

int maapi_get_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = maapi_vget_elem(sock, thandle, v, fmt, args);
  va_end(args);
  return result;
}

int maapi_get_u_int32_elem(int sock, int thandle, u_int32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    Value v;
    if (get_value(sock, thandle, fmt, args, v) != CONFD_OK) return CONFD_ERR;
    if (!v.is(Type::uint32)) return wrong_type(v, "an unsigned number of 32 bits");
    *rval = static_cast<u_int32_t>(v.unsigned_number());
    return CONFD_OK;
  });
  va_end(args);
  return result;
}

int maapi_get_str_elem(int sock, int thandle, char* buf, int n, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    Value v;
    if (get_value(sock, thandle, fmt, args, v) != CONFD_OK) return CONFD_ERR;
    if (!v.is(Type::buf)) return wrong_type(v, "text");
    const std::string& text = v.bytes();
    if (n <= 0 || text.size() >= static_cast<std::size_t>(n))
      return fail(CONFD_ERR_TOO_LONG,
                  "text of " + std::to_string(text.size()) + " octets does not fit");
    std::memcpy(buf, text.c_str(), text.size() + 1);
    return CONFD_OK;
  });
  va_end(args);
  return result;
}

int maapi_get_buf_elem(int sock, int thandle, unsigned char** rval, int* bufsiz, const char* fmt,
                       ...) {
  va_list args;
  va_start(args, fmt);
  const int result = get_octets(sock, thandle, rval, bufsiz, Type::buf, fmt, args);
  va_end(args);
  return result;
}

int maapi_get_binary_elem(int sock, int thandle, unsigned char** rval, int* bufsiz, const char* fmt,
                          ...) {
  va_list args;
  va_start(args, fmt);
  const int result = get_octets(sock, thandle, rval, bufsiz, Type::binary, fmt, args);
  va_end(args);
  return result;
}

int maapi_vset_elem(int sock, int thandle, confd_value_t* v, const char* fmt, va_list args) {
  return set_value(sock, thandle, v, fmt, args);
}

int maapi_set_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = set_value(sock, thandle, v, fmt, args);
  va_end(args);
  return result;
}

int maapi_set_elem2(int sock, int thandle, const char* strval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    if (strval == nullptr) return fail(CONFD_ERR_APIUSE, "no text to set");
    MaapiCall call(sock, Op::set_elem_text, thandle, path_from_format(fmt, args), Effect::changes);
    call.elements().put(strval);
    return call.run();
  });
  va_end(args);
  return result;
}

int maapi_get_case(int sock, int thandle, const char* choice, confd_value_t* rcase, const char* fmt,
                   ...) {
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    if (choice == nullptr) return fail(CONFD_ERR_APIUSE, "no choice named");
    MaapiCall call(sock, Op::get_case, thandle, path_from_format(fmt, args), Effect::reads);
    call.elements().put(choice);
    if (call.run() != CONFD_OK) return CONFD_ERR;
    *rcase = from_wire(call.answer().value());
    return CONFD_OK;
  });
  va_end(args);
  return result;
}

int maapi_get_object(int sock, int thandle, confd_value_t* values, int n, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    if (values == nullptr || n <= 0) return fail(CONFD_ERR_APIUSE, "no room for values");
    MaapiCall call(sock, Op::get_object, thandle, path_from_format(fmt, args), Effect::reads);
    call.elements().put(static_cast<std::uint64_t>(n));
    if (call.run() != CONFD_OK) return CONFD_ERR;
    const Level level = call.answer().level();
    if (level.size() > static_cast<std::size_t>(n))
      return fail(CONFD_ERR_PROTOCOL, "more values than were asked for");
    for (int i = 0; i < n; ++i) values[i].type = C_NOEXISTS;
    for (std::size_t i = 0; i < level.size(); ++i) {
      try {
        values[i] = from_wire(level[i]);
      } catch (...) {
        while (i > 0) confd_free_value(&values[--i]);
        throw;
      }
    }
    return static_cast<int>(level.size());
  });
  va_end(args);
  return result;
}

int maapi_set_object(int sock, int thandle, const confd_value_t* values, int n, const char* fmt,
                     ...) {
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    if (values == nullptr || n < 0) return fail(CONFD_ERR_APIUSE, "no values to set");
    MaapiCall call(sock, Op::set_object, thandle, path_from_format(fmt, args), Effect::changes);
    call.elements().put(to_wire(values, n));
    return call.run();
  });
  va_end(args);
  return result;
}
