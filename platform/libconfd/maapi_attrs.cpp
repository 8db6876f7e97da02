// MAAPI: attributes of nodes, and XPath.
#include <confd_maapi.h>

#include <cstdlib>
#include <memory>

#include "convert.h"
#include "error.h"
#include "maapi_session.h"
#include "path_format.h"

using namespace standin;
using Effect = MaapiCall::Effect;

namespace {

using Attribute = std::pair<std::uint32_t, Value>;

std::vector<Attribute> read_attributes(FrameReader& from) {
  std::vector<Attribute> attributes;
  for (std::size_t left = from.array(); left > 0; --left) {
    if (from.array() != 2) throw WireError("attribute without number and value");
    const std::uint64_t number = from.number();
    if (number > UINT32_MAX) throw WireError("attribute number out of range");
    attributes.emplace_back(static_cast<std::uint32_t>(number), from.value());
  }
  return attributes;
}

int give_attributes(const std::vector<Attribute>& attributes, confd_attr_value_t** attr_vals,
                    int* num_vals) {
  if (attributes.empty()) return CONFD_OK;
  auto* array =
      static_cast<confd_attr_value_t*>(std::malloc(attributes.size() * sizeof(confd_attr_value_t)));
  if (array == nullptr) throw std::bad_alloc();
  std::size_t done = 0;
  try {
    for (; done < attributes.size(); ++done) {
      array[done].attr = attributes[done].first;
      array[done].v = from_wire(attributes[done].second);
    }
  } catch (...) {
    while (done > 0) confd_free_value(&array[--done].v);
    std::free(array);
    throw;
  }
  *attr_vals = array;
  *num_vals = static_cast<int>(attributes.size());
  return CONFD_OK;
}

struct Match {
  Keypath path;
  std::optional<Value> value;
};

std::vector<Match> read_matches(FrameReader& from) {
  std::vector<Match> matches;
  for (std::size_t left = from.array(); left > 0; --left) {
    if (from.array() != 2) throw WireError("result without path and value");
    Match match;
    match.path = from.keypath();
    if (!from.skip_nil()) match.value = from.value();
    matches.push_back(std::move(match));
  }
  return matches;
}

}  // namespace

int maapi_get_attrs(int sock, int thandle, u_int32_t* attrs, int num_attrs,
                    confd_attr_value_t** attr_vals, int* num_vals, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    *attr_vals = nullptr;
    *num_vals = 0;
    MaapiCall call(sock, Op::get_attrs, thandle, path_from_format(fmt, args), Effect::reads);
    const int wanted = attrs == nullptr || num_attrs < 0 ? 0 : num_attrs;
    call.elements().array(static_cast<std::size_t>(wanted));
    for (int i = 0; i < wanted; ++i) call.elements().put(attrs[i]);
    if (call.run() != CONFD_OK) return CONFD_ERR;
    return give_attributes(read_attributes(call.answer()), attr_vals, num_vals);
  });
  va_end(args);
  return result;
}

int maapi_set_attr(int sock, int thandle, u_int32_t attr, confd_value_t* v, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = guarded([&] {
    MaapiCall call(sock, Op::set_attr, thandle, path_from_format(fmt, args), Effect::changes);
    call.elements().put(attr);
    if (v == nullptr || v->type == C_NOEXISTS)
      call.elements().put_nil();
    else
      call.elements().put(to_wire(*v));
    return call.run();
  });
  va_end(args);
  return result;
}

int maapi_xpath_eval(int sock, int thandle, const char* expr,
                     int (*result)(confd_hkeypath_t* kp, confd_value_t* v, void* state),
                     void (*trace)(char*), void* initstate, const char* context, ...) {
  return guarded([&] {
    if (expr == nullptr || result == nullptr)
      return fail(CONFD_ERR_APIUSE, "no expression, or nobody to take its result");
    // Where the expression begins at the root, where it stands makes no difference.
    if (context != nullptr && expr[0] != '/')
      return fail(CONFD_ERR_APIUSE, "relative expressions are not evaluated below a context");
    MaapiCall call(sock, Op::xpath, thandle, Effect::reads);
    call.elements().put(expr);
    if (call.run() != CONFD_OK) return CONFD_ERR;
    const std::vector<Match> matches = read_matches(call.answer());
    if (trace != nullptr) {
      std::string line = std::string(expr) + ": " + std::to_string(matches.size()) + " nodes";
      trace(line.data());
    }
    for (const Match& match : matches) {
      OwnedKeypath path(match.path);
      OwnedValue value(match.value.value_or(Value()));
      const int answer = result(path.get(), match.value ? value.get() : nullptr, initstate);
      if (answer == ITER_STOP) break;
      if (answer != ITER_CONTINUE)
        return fail(CONFD_ERR_APIUSE, "result callback answered neither continue nor stop");
    }
    return CONFD_OK;
  });
}
