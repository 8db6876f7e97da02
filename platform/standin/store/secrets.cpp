#include "secrets.h"

#include <fcntl.h>
#include <openssl/rand.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "platform/standin/schema/schema.h"
#include "platform/wire/cipher.h"
#include "platform/wire/file_descriptor.h"

namespace standin {
namespace {

constexpr mode_t kOwnerOnly = 0600;

[[noreturn]] void fail(const std::string& what, const std::string& file) {
  throw std::runtime_error(what + " " + file + ": " + std::generic_category().message(errno));
}

std::string read_key(const FileDescriptor& fd, const std::string& file) {
  // One octet more than a key has, so that a longer file is seen to be longer.
  std::array<char, kKeyOctets + 1> buffer;
  std::size_t have = 0;
  while (have < buffer.size()) {
    const ssize_t n = ::read(fd.get(), buffer.data() + have, buffer.size() - have);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) fail("cannot read the key file", file);
    if (n == 0) break;
    have += static_cast<std::size_t>(n);
  }
  if (have != kKeyOctets)
    throw std::runtime_error(file + " is not a key file: it does not have " +
                             std::to_string(kKeyOctets) + " octets");
  // A copy from a backup may have come with a wider mode.
  if (::fchmod(fd.get(), kOwnerOnly) != 0) fail("cannot protect the key file", file);
  return std::string(buffer.data(), have);
}

void sync_directory(const std::string& file) {
  auto directory = std::filesystem::path(file).parent_path();
  if (directory.empty()) directory = ".";
  const FileDescriptor fd(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!fd || ::fsync(fd.get()) != 0) fail("cannot write the key file", file);
}

// Written aside and renamed, so that there is never half a key: what is encrypted with a key that
// did not reach the disk is lost.
std::string make_key(const std::string& file) {
  std::string key(kKeyOctets, '\0');
  if (RAND_bytes(reinterpret_cast<unsigned char*>(key.data()), static_cast<int>(key.size())) != 1)
    throw std::runtime_error("no random octets for the key file " + file);
  const std::string aside = file + ".new";
  ::unlink(aside.c_str());
  const FileDescriptor fd(
      ::open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly));
  if (!fd) fail("cannot make the key file", file);
  errno = ENOSPC;  // what a short write of a file means
  if (::write(fd.get(), key.data(), key.size()) != static_cast<ssize_t>(key.size()) ||
      ::fsync(fd.get()) != 0 || ::rename(aside.c_str(), file.c_str()) != 0)
    fail("cannot write the key file", file);
  sync_directory(file);
  return key;
}

}  // namespace

Secrets::Secrets(const std::string& key_file, bool must_exist) {
  const FileDescriptor fd(::open(key_file.c_str(), O_RDONLY | O_CLOEXEC));
  if (fd) {
    key_ = read_key(fd, key_file);
  } else if (errno != ENOENT) {
    fail("cannot open the key file", key_file);
  } else if (must_exist) {
    throw std::runtime_error("the key file " + key_file +
                             " is gone: what the database holds encrypted cannot be read");
  } else {
    key_ = make_key(key_file);
  }
}

Secrets::~Secrets() { cleanse(key_); }

std::string Secrets::encrypt(std::string_view text) const {
  if (!in_encrypted_form(text)) return encrypt_text(text, key_);
  auto clear = decrypt_text(text, key_);
  if (!clear) throw Refusal(ErrorCode::badvalue, "the text is encrypted with another key");
  cleanse(*clear);
  return std::string(text);
}

}  // namespace standin
