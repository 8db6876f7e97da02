// random-operations: drives the real programs and a model through the same random operations, and
// tells where they part.
#include <charconv>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <stdexcept>

#include "generator.h"
#include "run.h"
#include "shrink.h"

namespace random_operations {
namespace {

struct Options {
  std::uint64_t seed = 1;
  unsigned long steps = 2000;
  std::string replay;
  unsigned shrink_seconds = 60;
  bool cover = false;
};

constexpr const char* kUsage =
    "random-operations [--seed N] [--steps N] [--cover] [--shrink-seconds N]\n"
    "random-operations --replay FILE\n"
    "  --cover   fail when a kind of operation was never seen to have its effect\n";

struct Seen {
  unsigned accepted = 0, refused = 0;
};
using Coverage = std::map<std::string, Seen>;

unsigned long number(const char* text) {
  unsigned long n = 0;
  const char* const end = text + std::strlen(text);
  if (std::from_chars(text, end, n).ptr != end) throw std::invalid_argument(text);
  return n;
}

Options read_options(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--cover") {
      options.cover = true;
      continue;
    }
    if (i + 1 == argc) throw std::invalid_argument(word);
    const char* const value = argv[++i];
    if (word == "--seed") {
      options.seed = number(value);
    } else if (word == "--steps") {
      options.steps = number(value);
    } else if (word == "--shrink-seconds") {
      options.shrink_seconds = static_cast<unsigned>(number(value));
    } else if (word == "--replay") {
      options.replay = value;
    } else {
      throw std::invalid_argument(word);
    }
  }
  return options;
}

int tell(const Failure& failure, const std::vector<std::string>& lines, unsigned seconds) {
  std::cout << "\nnot as it should be, after " << lines.size() << " operations:\n"
            << failure.text << "\nlooking for a shorter way there...\n"
            << std::flush;
  const Shortest shortest = shrink(lines, failure, std::chrono::seconds(seconds));
  std::cout << "\n# " << shortest.lines.size() << " operations; standin-cli batch -k reads them\n";
  for (const std::string& line : shortest.lines) std::cout << line << '\n';
  std::cout << "\nafter the last of them:\n" << shortest.failure.text << std::flush;
  return 1;
}

int print(const Coverage& coverage, bool cover) {
  int status = 0;
  std::cout << std::setw(9) << "accepted" << std::setw(9) << "refused" << '\n';
  for (const Kind& kind : kinds()) {
    const auto at = coverage.find(kind.name);
    const Seen seen = at == coverage.end() ? Seen{} : at->second;
    std::cout << std::setw(9) << seen.accepted << std::setw(9) << seen.refused << "  " << kind.name;
    if ((kind.sensible ? seen.accepted : seen.refused) == 0) {
      std::cout << "   <- never " << (kind.sensible ? "accepted" : "refused");
      if (cover) status = 1;
    }
    std::cout << '\n';
  }
  return status;
}

int random_run(const Options& options) {
  Generator generator(options.seed);
  Coverage coverage;
  std::vector<std::string> lines;
  Run run;
  const auto begin = std::chrono::steady_clock::now();
  try {
    for (unsigned long i = 0; i < options.steps; ++i) {
      const Generator::Choice next = generator.next(run.model().tables());
      lines.push_back(next.line);
      Seen& seen = coverage[next.kind->name];
      ++(run.step(parse(next.line)) ? seen.accepted : seen.refused);
    }
  } catch (const Disagreement& disagreement) {
    std::cout << "seed " << options.seed << '\n' << run.complaints();
    return tell({lines.size() - 1, disagreement.text}, lines, options.shrink_seconds);
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  const int status = print(coverage, options.cover);
  std::cout << "seed " << options.seed << ": " << options.steps << " operations in "
            << std::setprecision(3) << took.count() << " s, both sides agree\n";
  return status;
}

int replay(const Options& options) {
  std::ifstream file(options.replay);
  if (!file) throw std::invalid_argument(options.replay);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    if (!is_idle(line)) lines.push_back(line);
  }
  const auto failure = play(lines);
  if (failure) {
    std::cout << "after line " << failure->at + 1 << ", " << lines[failure->at] << '\n'
              << failure->text;
    return 1;
  }
  std::cout << lines.size() << " operations, both sides agree\n";
  return 0;
}

}  // namespace
}  // namespace random_operations

int main(int argc, char** argv) {
  using namespace random_operations;
  try {
    const Options options = read_options(argc, argv);
    return options.replay.empty() ? random_run(options) : replay(options);
  } catch (const std::invalid_argument& e) {
    std::cerr << "cannot use " << e.what() << '\n' << kUsage;
    return 3;
  } catch (const std::out_of_range&) {
    std::cerr << "error: a line names what the model does not have\n";
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "error: " << e.what() << '\n';
    return 2;
  }
}
