// Feeds each file of the directories that are named to a fuzz target, so that what a fuzzer once
// found stays found without one.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool replay(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  const std::string input{std::istreambuf_iterator<char>(in), {}};
  if (!in && input.empty() && std::filesystem::file_size(path) > 0) return false;
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) try {
  int inputs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      if (!entry.is_regular_file()) continue;
      std::printf("%s\n", entry.path().c_str());
      std::fflush(stdout);  // the last line names the input that ended the program
      if (!replay(entry.path())) return 1;
      ++inputs;
    }
  }
  return inputs > 0 ? 0 : 1;  // an empty corpus is a mistake
} catch (const std::exception& e) {
  std::fprintf(stderr, "%s\n", e.what());
  return 1;
}
