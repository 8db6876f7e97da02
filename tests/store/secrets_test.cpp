#include "platform/standin/store/secrets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/standin/schema/schema.h"
#include "platform/wire/cipher.h"
#include "temp_dir.h"

namespace standin {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(Secrets, KeyIsMadeOnceForTheOwnerAlone) {
  const TempDir dir;
  const Secrets first(dir / "key", false);
  EXPECT_EQ(mode_of(dir / "key"), 0600U);
  std::filesystem::permissions(dir / "key", std::filesystem::perms(0644));
  const Secrets again(dir / "key", true);
  EXPECT_EQ(again.key(), first.key());
  EXPECT_EQ(mode_of(dir / "key"), 0600U);
  EXPECT_NE(Secrets(dir / "other", false).key(), first.key());
}

TEST(Secrets, OwnFormIsKeptAsItIsAndAnotherKeysIsRefusedWithoutNamingIt) {
  const TempDir dir;
  const Secrets ours(dir / "key", false);
  const std::string form = ours.encrypt("maplesyrup");
  EXPECT_EQ(decrypt_text(form, ours.key()), "maplesyrup");
  EXPECT_EQ(ours.encrypt(form), form);
  const std::string foreign = Secrets(dir / "other", false).encrypt("maplesyrup");
  const std::string text = refusal_of([&] { ours.encrypt(foreign); });
  EXPECT_THAT(text, HasSubstr("another key"));
  EXPECT_THAT(text, Not(HasSubstr(foreign)));
}

TEST(Secrets, FilesThatAreNoKeyAreRefused) {
  const TempDir dir;
  EXPECT_THAT(refusal_of([&] { Secrets(dir / "gone", true); }), HasSubstr("is gone"));
  EXPECT_FALSE(std::filesystem::exists(dir / "gone"));
  for (const std::size_t size : {std::size_t{0}, kKeyOctets - 1, kKeyOctets + 1}) {
    write_file(dir / "key", std::string(size, 'k'));
    EXPECT_THAT(refusal_of([&] { Secrets(dir / "key", false); }), HasSubstr("not a key file"));
    EXPECT_EQ(std::filesystem::file_size(dir / "key"), size);
  }
  EXPECT_THAT(refusal_of([&] { Secrets(dir / "nowhere/key", false); }), HasSubstr("nowhere/key"));
}

}  // namespace
}  // namespace standin
