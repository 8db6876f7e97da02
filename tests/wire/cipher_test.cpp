#include "platform/wire/cipher.h"

#include <gtest/gtest.h>

namespace standin {
namespace {

using namespace std::string_literals;

const std::string kKey(kKeyOctets, 'k');

TEST(Cipher, TextOfAnyLengthComesBack) {
  for (const std::string& clear :
       {""s, "x"s, "fifteen octets."s, "sixteen octets.."s, "a\0b\xff"s, std::string(1020, 'z')}) {
    const std::string form = encrypt_text(clear, kKey);
    EXPECT_TRUE(in_encrypted_form(form));
    EXPECT_EQ(decrypt_text(form, kKey), clear);
    EXPECT_LE(clear.size(), form.size());
    EXPECT_NE(encrypt_text(clear, kKey), form) << "the same text twice";
  }
}

TEST(Cipher, AnyChangedCharacterIsRefused) {
  const std::string form = encrypt_text("a password", kKey);
  for (std::size_t i = 0; i < form.size(); ++i) {
    std::string changed = form;
    changed[i] = changed[i] == 'A' ? 'B' : 'A';
    EXPECT_EQ(decrypt_text(changed, kKey), std::nullopt) << i;
    EXPECT_EQ(decrypt_text(form.substr(0, i), kKey), std::nullopt) << i;
  }
  for (const char* tail : {"=", "A", "AAAA", " ", "\n", "===="}) {
    EXPECT_EQ(decrypt_text(form + tail, kKey), std::nullopt) << '\'' << tail << '\'';
  }
}

TEST(Cipher, TextNotInTheFormIsRefused) {
  for (const char* text : {"", "$", "$8", "$8$", "$8$AAAA", "$9$AAAA",
                           "$8$====", "$8$A===", "a password", "$8$not base64!"}) {
    EXPECT_EQ(decrypt_text(text, kKey), std::nullopt) << text;
  }
  EXPECT_TRUE(in_encrypted_form("$8$damaged"));
  EXPECT_FALSE(in_encrypted_form("$8"));
  EXPECT_FALSE(in_encrypted_form("x$8$"));
}

TEST(Cipher, AnotherKeyIsRefused) {
  const std::string form = encrypt_text("a password", kKey);
  std::string other = kKey;
  other.back() = 'l';
  EXPECT_EQ(decrypt_text(form, other), std::nullopt);
  EXPECT_EQ(decrypt_text(form, kKey + 'k'), std::nullopt);
  EXPECT_EQ(decrypt_text(form, ""), std::nullopt);
  EXPECT_THROW(encrypt_text("a password", "short"), std::invalid_argument);
}

// Derived once with another implementation; a change would orphan every stored password.
TEST(Cipher, KnownFormStaysReadable) {
  EXPECT_EQ(decrypt_text("$8$AAECAwQFBgcICQoLDA0OD1nnFsKVDNLTABqyZoOxgc5EsZxX00QSkJUl", kKey),
            "maplesyrup");
}

TEST(Cleanse, LeavesNothingInTheBuffer) {
  std::string secret = "a long enough secret that stands on the heap";
  const std::size_t size = secret.size();
  const char* buffer = secret.data();
  cleanse(secret);
  EXPECT_TRUE(secret.empty());
  ASSERT_EQ(secret.data(), buffer);
  EXPECT_EQ(std::string(buffer, size), std::string(size, '\0'));
}

}  // namespace
}  // namespace standin
