// What northbound operations cost on the real programs, in time and in frames, and how that grows.
//
//   northbound-bench [--smoke] [--communities N,...] [--targets N,...] [--rounds N]
#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <sstream>
#include <string>

#include "bench/sections.h"

namespace {

using quillet::bench::Sizes;

constexpr char kUsage[] =
    "usage: northbound-bench [--smoke] [--communities N,...] [--targets N,...] [--rounds N]\n";

// Numbers from 1 on, with commas between; empty when there is anything else.
std::vector<std::size_t> numbers(const std::string& text) {
  std::vector<std::size_t> out;
  std::istringstream in(text);
  for (std::string word; std::getline(in, word, ',');) {
    char* end = nullptr;
    const unsigned long number = std::strtoul(word.c_str(), &end, 10);
    if (number == 0 || *end != '\0') return {};
    out.push_back(number);
  }
  return out;
}

// False for what it does not know.
bool read_options(int argc, char** argv, Sizes& sizes) {
  const option options[] = {{"smoke", no_argument, nullptr, 's'},
                            {"communities", required_argument, nullptr, 'c'},
                            {"targets", required_argument, nullptr, 't'},
                            {"rounds", required_argument, nullptr, 'r'},
                            {nullptr, 0, nullptr, 0}};
  for (int c = 0; (c = ::getopt_long(argc, argv, "", options, nullptr)) != -1;) {
    if (c == 's') {
      sizes = {{10, 20}, {5, 10}, 1, 5, {5}, {3}, {2}};
      continue;
    }
    if (c != 'c' && c != 't' && c != 'r') return false;
    const auto given = numbers(optarg);
    if (given.empty()) return false;
    if (c == 'c') sizes.communities = given;
    if (c == 't') sizes.targets = given;
    if (c == 'r') sizes.rounds = given.front();
  }
  return optind == argc;
}

}  // namespace

int main(int argc, char** argv) {
  Sizes sizes;
  if (!read_options(argc, argv, sizes)) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  try {
    quillet::bench::communities(sizes);
    quillet::bench::targets(sizes);
    quillet::bench::access(sizes);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "northbound-bench: %s\n", e.what());
    return 1;
  }
  return 0;
}
