#include "bench/meter.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace quillet::bench {
namespace {

using Microseconds = std::chrono::duration<double, std::micro>;

double frames_between(const standin::FrameCounts& a, const standin::FrameCounts& b) {
  return static_cast<double>(b.frames_received - a.frames_received + b.frames_sent - a.frames_sent);
}

double octets_between(const standin::FrameCounts& a, const standin::FrameCounts& b) {
  return static_cast<double>(b.octets_received - a.octets_received + b.octets_sent - a.octets_sent);
}

}  // namespace

Meter::Meter() {
  machine_.start_both();
  counter_ = machine_.session(scenario::NorthboundSession::Access::none);
  traffic();
  const standin::FrameCounts before = traffic(), after = traffic();
  own_frames_ = frames_between(before, after);
  own_octets_ = octets_between(before, after);
}

standin::FrameCounts Meter::traffic() { return counter_->status().traffic; }

Cost Meter::measure(std::size_t rounds, std::size_t operations,
                    const std::function<void(std::size_t)>& operation) {
  std::vector<Cost> seen;
  double frames = 0;
  std::size_t number = 0;
  for (std::size_t round = 0; round < rounds; ++round) {
    const standin::FrameCounts before = traffic();
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < operations; ++i) operation(number++);
    const Microseconds took = std::chrono::steady_clock::now() - start;
    const standin::FrameCounts after = traffic();
    const double moved = frames_between(before, after) - own_frames_;
    Cost cost;
    cost.octets = (octets_between(before, after) - own_octets_) / moved;
    const Microseconds bare =
        ping_pong_.exchange(static_cast<std::size_t>(moved), static_cast<std::size_t>(cost.octets));
    const auto each = static_cast<double>(operations);
    cost.microseconds = took.count() / each;
    cost.bare = bare.count() / each;
    frames += moved / each;
    seen.push_back(cost);
  }
  const auto middle = seen.begin() + static_cast<std::ptrdiff_t>(seen.size() / 2);
  std::nth_element(seen.begin(), middle, seen.end(),
                   [](const Cost& a, const Cost& b) { return a.ratio() < b.ratio(); });
  middle->frames = frames / static_cast<double>(rounds);
  return *middle;
}

void print_head(const std::string& unit) {
  std::printf(
      "\n| %s | size | microseconds | frames | octets a frame | bare ping-pong | ratio |\n"
      "|---|---|---|---|---|---|---|\n",
      unit.c_str());
}

void print_line(const std::string& what, std::size_t size, const Cost& cost, double per) {
  std::printf("| %s | %zu | %.1f | %.2f | %.0f | %.1f | %.2f |\n", what.c_str(), size,
              cost.microseconds / per, cost.frames / per, cost.octets, cost.bare / per,
              cost.ratio());
  std::fflush(stdout);
}

}  // namespace quillet::bench
