// usmUserTable, as the lines by which snmpd keeps its own users: localized keys as they are.
#include <array>

#include "quoting.h"
#include "render-rules.h"
#include "render.h"

namespace standin::agent {
namespace {

struct Protocol {
  std::uint32_t arc;  // last number of its identifier
  std::size_t key_octets;
};

const Oid kAuthProtocols{1, 3, 6, 1, 6, 3, 10, 1, 1};
const Oid kPrivProtocols{1, 3, 6, 1, 6, 3, 10, 1, 2};
constexpr std::uint32_t kNone = 1;
// RFC 3414: none, MD5, SHA; RFC 7860: SHA-2 with 224, 256, 384 and 512 bits.
constexpr std::array<Protocol, 7> kAuth{
    {{kNone, 0}, {2, 16}, {3, 20}, {4, 28}, {5, 32}, {6, 48}, {7, 64}}};
// RFC 3414: none, DES; RFC 3826: AES with 128 bits.
constexpr std::array<Protocol, 3> kPriv{{{kNone, 0}, {2, 16}, {4, 16}}};

// Nothing for a protocol that snmpd does not know.
template <std::size_t n>
const Protocol* find(const Oid& oid, const Oid& family, const std::array<Protocol, n>& known) {
  if (oid.size() != family.size() + 1 || !std::equal(family.begin(), family.end(), oid.begin())) {
    return nullptr;
  }
  for (const Protocol& p : known) {
    if (p.arc == oid.back()) return &p;
  }
  return nullptr;
}

bool fits(const Protocol& p, const OptionalText& key) {
  return p.arc == kNone || (key && key->size() == p.key_octets);
}

std::string hindrance(const User& u, const Protocol* auth, const Protocol* priv) {
  if (u.name.size() > kLongestName) return "snmpd takes user names of 1 to 32 octets";
  if (u.security_name && *u.security_name != u.name) {
    return "snmpd takes no security name other than the user's name";
  }
  if (auth == nullptr) return "snmpd does not know its authentication protocol";
  if (priv == nullptr) return "snmpd does not know its privacy protocol";
  if (auth->arc == kNone && priv->arc != kNone) return "it has privacy without authentication";
  if (!fits(*auth, u.auth_key)) return "its authentication key does not fit the protocol";
  // snmpd shortens a longer key, as it does with one from a password.
  if (!fits(*priv, u.priv_key)) return "its privacy key does not fit the protocol";
  return {};
}

std::string side(const Oid& protocol, const Protocol& p, const OptionalText& key, bool shown) {
  std::string value = "\"\"";
  if (p.arc != kNone) value = shown ? "********" : hex(*key);
  return " " + dotted(protocol) + " " + value;
}

}  // namespace

void render_users(const Rows& rows, Configuration& out) {
  for (const User& u : rows.users) {
    const std::string row = row_name("usmUserEntry", {hex(u.engine_id), u.name});
    const Protocol* auth = find(u.auth_protocol, kAuthProtocols, kAuth);
    const Protocol* priv = find(u.priv_protocol, kPrivProtocols, kPriv);
    const std::string reason = hindrance(u, auth, priv);
    if (!reason.empty()) {
      out.note(row, "left out: " + reason);
      continue;
    }
    const auto line = [&](bool shown) {
      return "usmUser " + std::string(kActiveReadOnly) + hex(u.engine_id) + " " + hex(u.name) +
             " " + hex(u.security_name.value_or(u.name)) + " NULL" +
             side(u.auth_protocol, *auth, u.auth_key, shown) +
             side(u.priv_protocol, *priv, u.priv_key, shown) + " \"\"";
    };
    out.add_secret(row, line(false), line(true));
  }
}

}  // namespace standin::agent
