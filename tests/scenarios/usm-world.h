// Users on both sides, and the keys they should have.
#pragma once

#include <gmock/gmock.h>

#include "transforms/usm-keys.h"
#include "world.h"

namespace scenario {

inline const std::string kUsm = "/snmp:snmp/usm";
inline const std::string kLocal = kUsm + "/local";
inline const std::string kUsmTable =
    "/SNMP_USER_BASED_SM_MIB:SNMP-USER-BASED-SM-MIB/usmUserTable/usmUserEntry";
inline const std::string kSettings = "/snmp:snmp/agent/engine-id";
inline const std::string kOwnId = "80:00:7e:d9:04:61:62:63";  // of the text "abc"
inline const std::string kNewId = "80:00:7e:d9:04:78:79:7a";  // of the text "xyz"
inline const std::string kOther = "80:00:00:00:05:01";
inline const std::string kOther2 = "80:00:00:00:05:02";
inline const std::string kKey16 = "00:11:22:33:44:55:66:77:88:99:aa:bb:cc:dd:ee:ff";
inline const std::string kKey20 = kKey16 + ":01:02:03:04";

inline std::string local(const std::string& name) { return kLocal + "/user{" + name + "}"; }
inline std::string remote(const std::string& engine) { return kUsm + "/remote{" + engine + "}"; }
inline std::string remote(const std::string& engine, const std::string& name) {
  return remote(engine) + "/user{" + name + "}";
}
inline std::string row(const std::string& engine, const std::string& name) {
  return kUsmTable + "{" + engine + " " + name + "}";
}

inline std::string colons(const std::string& octets) {
  std::string text;
  for (const unsigned char c : octets) {
    if (!text.empty()) text += ':';
    text += "0123456789abcdef"[c >> 4];
    text += "0123456789abcdef"[c & 15];
  }
  return text;
}

inline std::string octets_of(const std::string& text) {
  std::string octets;
  for (std::size_t i = 0; i < text.size(); i += 3) {
    octets += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
  }
  return octets;
}

// The key of a password with an engine ID, as the client prints it.
inline std::string localized(const std::string& digest, const std::string& password,
                             const std::string& engine_id, std::size_t size = 0) {
  const std::string engine = octets_of(engine_id);
  const bool sha = digest == "sha";
  std::string key(sha ? quillet::kShaKeyOctets : quillet::kMd5KeyOctets, '\0');
  const auto* p = reinterpret_cast<const unsigned char*>(password.data());
  const auto* e = reinterpret_cast<const unsigned char*>(engine.data());
  auto* k = reinterpret_cast<unsigned char*>(key.data());
  const int done = sha ? quillet::password_to_key_sha(p, password.size(), e, engine.size(), k)
                       : quillet::password_to_key_md5(p, password.size(), e, engine.size(), k);
  EXPECT_EQ(done, 0);
  if (size != 0) key.resize(size);
  return colons(key);
}

class UsmWorld : public Running {
 protected:
  void SetUp() override {
    Running::SetUp();
    answers(
        {"set " + kSettings + "/enterprise-number 32473", "set " + kSettings + "/from-text abc"});
  }
};

}  // namespace scenario
