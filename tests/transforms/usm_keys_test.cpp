#include <gtest/gtest.h>

#include <random>
#include <string>

#include "transforms/usm-keys.h"

#ifdef HAVE_NETSNMP
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#endif

namespace quillet {
namespace {

const unsigned char* octets(const std::string& s) {
  return reinterpret_cast<const unsigned char*>(s.data());
}

std::string hex(const std::string& s) {
  std::string text;
  for (const unsigned char c : s) {
    text += "0123456789abcdef"[c >> 4];
    text += "0123456789abcdef"[c & 15];
  }
  return text;
}

std::string md5_key(const std::string& password, const std::string& engine) {
  std::string key(kMd5KeyOctets, '\0');
  EXPECT_EQ(password_to_key_md5(octets(password), password.size(), octets(engine), engine.size(),
                                reinterpret_cast<unsigned char*>(key.data())),
            0);
  return key;
}

std::string sha_key(const std::string& password, const std::string& engine) {
  std::string key(kShaKeyOctets, '\0');
  EXPECT_EQ(password_to_key_sha(octets(password), password.size(), octets(engine), engine.size(),
                                reinterpret_cast<unsigned char*>(key.data())),
            0);
  return key;
}

TEST(UsmKeys, PublishedSampleGivesPublishedKeys) {  // RFC 3414 A.3.1, A.3.2
  const std::string engine("\0\0\0\0\0\0\0\0\0\0\0\2", 12);
  EXPECT_EQ(hex(md5_key("maplesyrup", engine)), "526f5eed9fcce26f8964c2930787d82b");
  EXPECT_EQ(hex(sha_key("maplesyrup", engine)), "6695febc9288e36282235fc7151f128497b38f3f");
}

TEST(UsmKeys, UnusableInputGivesNoKey) {
  const std::string engine(32, 'e');
  const std::string long_engine(33, 'e');
  unsigned char key[kShaKeyOctets] = {1, 2, 3};
  EXPECT_EQ(password_to_key_md5(octets(""), 0, octets(engine), engine.size(), key), -1);
  EXPECT_EQ(password_to_key_sha(octets("password"), 8, octets(long_engine), 33, key), -1);
  EXPECT_EQ(key[0], 1);
}

#ifdef HAVE_NETSNMP
// An implementation that shares nothing with ours, over passwords of every length and any octets.
TEST(UsmKeys, AgreeWithAnIndependentImplementation) {
  std::mt19937 random(3414);  // NOLINT: the same pairs in every run
  const auto text = [&](std::size_t n) {
    std::string s;
    for (std::size_t i = 0; i < n; ++i) {
      s += static_cast<char>(std::uniform_int_distribution<int>(1, 255)(random));
    }
    return s;
  };
  std::vector<std::string> passwords = {"maplesyrup", "eight \"%\"", "päßwörtér", "a b\\{c}%s%n",
                                        std::string(255, 'x')};
  for (std::size_t n = 8; n <= 255; n += 5) passwords.push_back(text(n));
  for (std::size_t i = 0; i < passwords.size(); ++i) {
    const std::string& password = passwords[i];
    std::string engine = text(5 + i % 28);
    for (const bool sha : {false, true}) {
      oid* protocol = sha ? usmHMACSHA1AuthProtocol : usmHMACMD5AuthProtocol;
      u_char ku[64], kul[64];
      size_t ku_len = sizeof ku, kul_len = sizeof kul;
      ASSERT_EQ(generate_Ku(protocol, 10, octets(password), password.size(), ku, &ku_len), 0);
      ASSERT_EQ(
          generate_kul(protocol, 10, octets(engine), engine.size(), ku, ku_len, kul, &kul_len), 0);
      const std::string expected(reinterpret_cast<char*>(kul), kul_len);
      EXPECT_EQ(hex(sha ? sha_key(password, engine) : md5_key(password, engine)), hex(expected))
          << hex(password) << " with " << hex(engine);
    }
  }
}
#endif

}  // namespace
}  // namespace quillet
