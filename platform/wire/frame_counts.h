// What went over the wire in this process since its start, all connections together.
#pragma once

#include <cstdint>

namespace standin {

struct FrameCounts {
  std::uint64_t frames_received = 0, frames_sent = 0;
  std::uint64_t octets_received = 0, octets_sent = 0;  // headers included
};

// Whole frames only. Safe from any thread; frames that other threads are moving meanwhile may be
// counted in one number and not yet in another.
FrameCounts frame_counts();

}  // namespace standin
