// The bare cost of a round trip: two threads that exchange frames over loopback TCP with the wire's
// own calls and its TCP_NODELAY, and do nothing else.
#pragma once

#include <chrono>
#include <cstddef>
#include <thread>

#include "tests/scenarios/process.h"

namespace quillet::bench {

class PingPong {
 public:
  PingPong();
  ~PingPong();  // closes its end, upon which the other thread ends

  // Half of the frames there, half back, each of so many octets with its header.
  std::chrono::duration<double, std::micro> exchange(std::size_t frames, std::size_t octets);

 private:
  scenario::Descriptor near_;
  std::thread echo_;
};

}  // namespace quillet::bench
