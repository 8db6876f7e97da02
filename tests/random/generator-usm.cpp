// Users of this engine and of others, and rows that somebody else made.
#include "generator.h"

namespace random_operations {
namespace {

using namespace vocabulary;

const std::string kRows =
    "/SNMP_USER_BASED_SM_MIB:SNMP-USER-BASED-SM-MIB/usmUserTable/usmUserEntry";
const std::string kProtocol = "1.3.6.1.6.3.10.1.";

std::string user(Situation& s) {
  const std::string own = s.t.engine_id().value_or("");
  const Key key = row(s, "usmUserEntry", {s.random.percent(60) ? own : engine(s), name(s)});
  const std::string list = key[0] == own ? "local" : "remote" + braces({key[0]});
  return "/snmp:snmp/usm/" + list + "/user" + braces({key[1]});
}
std::string user_row(Situation& s) {
  return kRows + braces(row(s, "usmUserEntry", {engine(s), name(s)}));
}

std::string protocol(Situation& s) {
  return number(s, {"/auth/md5", "/auth/md5", "/auth/sha", "/auth/sha", "/priv/des", "/priv/aes"});
}

std::string key(Situation& s, std::size_t octets) {
  std::string text(3 * octets - 1, ':');
  const char digit = number(s, {"0", "7", "a"})[0];
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (i % 3 != 2) text[i] = digit;
  }
  return text;
}

std::string set_key(Situation& s) {
  const std::string of = protocol(s);
  const bool fits = !s.random.percent(10);
  return set(user(s) + of + "/key", key(s, (of == "/auth/sha") == fits ? 20 : 16));
}

std::string set_password(Situation& s) {
  static const std::vector<std::string> kPasswords{
      "maplesyrup", "12345678", "with blank \"%s\"",
      "\u00e9\u00e8\u00e0\u00e7\u00e9\u00e8\u00e0\u00e7"};
  return set(user(s) + protocol(s) + "/password", s.random.one_of(kPasswords));
}

std::string bad_value(Situation& s) {
  switch (s.random.below(5)) {
    case 0:
      return set(user(s) + "/auth/md5/password", "short");
    case 1:
      return set(user(s) + "/auth/sha/password", std::string(256, 'p'));
    case 2:
      return set(user(s) + "/priv/des/key", key(s, 15));
    case 3:
      return "create /snmp:snmp/usm/remote{80:00:7e:d9}/user{a}";
    default:
      return set(user(s) + "/security-name", std::string(256, 's'));
  }
}

std::string remove_below(Situation& s) {
  static const std::vector<std::string> kNodes{
      "/auth",         "/priv",         "/security-name",    "/auth/md5/password",
      "/auth/sha/key", "/priv/aes/key", "/priv/des/password"};
  return "delete " + user(s) + s.random.one_of(kNodes);
}

std::string remove_fixed(Situation& s) {
  return "delete " + user(s) + number(s, {"/name", "/auth/md5", "/auth/sha", "/priv/aes"});
}

std::string engine_entry(Situation& s) {
  const std::string path = "/snmp:snmp/usm/remote";
  const Key key = row(s, "usmUserEntry", {engine(s), "a"});
  return (s.random.percent(50) ? "create " : "delete ") + path + braces({key[0]});
}

std::string foreign_row(Situation& s) {
  const std::string path = user_row(s);
  switch (s.random.below(12)) {
    case 0:
      return "create " + path;
    case 1:
      return "delete " + path;
    case 2:
      return set(path + "/usmUserSecurityName", text(s));
    case 3:
      return set(path + "/usmUserAuthProtocol",
                 kProtocol + number(s, {"1.1", "1.2", "1.3", "1.9"}));
    case 4:
      return set(path + "/usmUserPrivProtocol",
                 kProtocol + number(s, {"2.1", "2.2", "2.3", "2.4"}));
    case 5:
    case 6:
      return set(path + "/usmUserAuthKey", key(s, 16));
    case 7:
      return set(path + "/usmUserPrivKey", key(s, 16));
    case 8:
      return "delete " + path + "/usm-crypto/" + number(s, {"auth", "priv"}) + "/key";
    case 9:
      return "delete " + path + number(s, {"/usmUserAuthKey", "/usmUserPrivKey"});
    case 10:
      return set(path + "/usm-crypto/" + number(s, {"auth", "priv"}) + "/password", "somebody's");
    default:
      return "delete " + path + "/usmUserAuthProtocol";
  }
}

}  // namespace

std::vector<Maker> usm_makers() {
  return {
      {"usm: create a user", 14, true, [](Situation& s) { return "create " + user(s); }},
      {"usm: set the security name", 8, true,
       [](Situation& s) {
         return set(user(s) + "/security-name", s.random.percent(70) ? name(s) : text(s));
       }},
      {"usm: set a key", 20, true, set_key},
      {"usm: set a password", 26, true, set_password},
      {"usm: create a side or protocol", 8, true,
       [](Situation& s) {
         return "create " + user(s) + (s.random.percent(30) ? "/auth" : protocol(s));
       }},
      {"usm: delete below a user", 24, true, remove_below},
      {"usm: delete what must stay", 4, false, remove_fixed},
      {"usm: delete a user", 14, true, [](Situation& s) { return "delete " + user(s); }},
      {"usm: an engine", 4, true, engine_entry},
      {"usm: set the key", 3, false, [](Situation& s) { return set(user(s) + "/name", name(s)); }},
      {"usm: bad value", 6, false, bad_value},
      {"usm: foreign row", 26, true, foreign_row},
  };
}

}  // namespace random_operations
