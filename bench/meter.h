// Time and frames of northbound operations, and what as many frames cost bare.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "bench/ping-pong.h"
#include "tests/scenarios/machine.h"

namespace quillet::bench {

struct Cost {
  double microseconds = 0;  // of one operation
  double frames = 0;        // on all of the server's connections; two make a round trip
  double octets = 0;        // of a frame, in the mean
  double bare = 0;          // microseconds of a ping-pong of as many frames of that size
  double ratio() const { return microseconds / bare; }
};

// A server and a daemon of its own.
class Meter {
 public:
  Meter();

  // `rounds` times: `operations` calls of the operation, with their number, counted on through the
  // rounds; then the ping-pong. Time and ratio are those of the median round, frames the mean.
  Cost measure(std::size_t rounds, std::size_t operations,
               const std::function<void(std::size_t)>& operation);

  scenario::Machine& machine() { return machine_; }

 private:
  standin::FrameCounts traffic();

  scenario::Machine machine_;
  PingPong ping_pong_;
  std::unique_ptr<scenario::NorthboundSession> counter_;
  double own_frames_ = 0, own_octets_ = 0;  // of looking at the counts
};

// A line of a table: what, its size, the cost; `per` divides it (entries of a walk).
void print_head(const std::string& unit);
void print_line(const std::string& what, std::size_t size, const Cost& cost, double per = 1);

}  // namespace quillet::bench
