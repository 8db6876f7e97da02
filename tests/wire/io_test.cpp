#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "platform/wire/frame.h"
#include "platform/wire/frame_counts.h"

namespace standin {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Clock = std::chrono::steady_clock;

class FrameIo : public ::testing::Test {
 protected:
  FrameIo() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_), 0); }
  ~FrameIo() override {
    close_end(0);
    close_end(1);
  }
  void close_end(int which) {
    if (ends_[which] >= 0) close(ends_[which]);
    ends_[which] = -1;
  }
  void write_raw(const std::string& octets) {
    ASSERT_EQ(write(ends_[0], octets.data(), octets.size()), static_cast<ssize_t>(octets.size()));
  }

  int ends_[2] = {-1, -1};
  std::string payload_;
};

// Far more than a socket holds: both sides go on after partial calls, with blocking and
// non-blocking descriptors, with and without a deadline.
TEST_F(FrameIo, LargeFrameCrossesInPieces) {
  const std::string text(5u << 20, 'x');
  const std::string frame = FrameWriter().put(text).take();
  for (const bool with_deadline : {false, true}) {
    std::optional<Deadline> deadline;
    if (with_deadline) deadline = Clock::now() + 30s;
    for (const int flags : {0, O_NONBLOCK}) {
      for (const int end : ends_) ASSERT_EQ(fcntl(end, F_SETFL, flags), 0);
      IoResult sent = IoResult::error;
      std::thread sender([&] { sent = send_frame(ends_[0], frame, deadline); });
      EXPECT_EQ(recv_frame(ends_[1], payload_, deadline), IoResult::ok);
      sender.join();
      EXPECT_EQ(sent, IoResult::ok);
      EXPECT_EQ(FrameReader(payload_).text(), text);
    }
  }
}

TEST_F(FrameIo, WholeFramesArriveAndAreCountedAndACutOneGivesClosed) {
  const FrameCounts before = frame_counts();
  const std::string frame = FrameWriter().put("abc").take();
  for (int i = 0; i < 2; ++i) ASSERT_EQ(send_frame(ends_[0], frame), IoResult::ok);
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(recv_frame(ends_[1], payload_), IoResult::ok);
    EXPECT_EQ(FrameReader(payload_).text(), "abc");
  }
  write_raw("\0\0\0\x05\x91"s);  // the rest never comes
  close_end(0);
  EXPECT_EQ(recv_frame(ends_[1], payload_), IoResult::closed);
  EXPECT_TRUE(payload_.empty());
  EXPECT_EQ(send_frame(ends_[1], frame), IoResult::closed);
  const FrameCounts after = frame_counts();
  EXPECT_EQ(after.frames_sent - before.frames_sent, 2U);
  EXPECT_EQ(after.frames_received - before.frames_received, 2U);
  EXPECT_EQ(after.octets_sent - before.octets_sent, 2 * frame.size());
  EXPECT_EQ(after.octets_received - before.octets_received, 2 * frame.size());
}

TEST_F(FrameIo, EndInsideTheHeaderGivesClosed) {
  write_raw("\0\0"s);
  close_end(0);
  EXPECT_EQ(recv_frame(ends_[1], payload_), IoResult::closed);
}

TEST_F(FrameIo, SilentPeerGivesTimeoutAtTheDeadline) {
  for (const std::string& begun : {""s, "\0\0"s, "\0\x05\x91"s}) {  // each continues the last
    write_raw(begun);
    const Deadline deadline = Clock::now() + 30ms;
    EXPECT_EQ(recv_frame(ends_[1], payload_, deadline), IoResult::timeout);
    EXPECT_GE(Clock::now(), deadline);
  }
}

TEST_F(FrameIo, PeerThatDoesNotReadGivesTimeout) {
  const std::string frame = FrameWriter().put(std::string(5u << 20, 'x')).take();
  EXPECT_EQ(send_frame(ends_[0], frame, Clock::now() + 30ms), IoResult::timeout);
}

TEST_F(FrameIo, AnnouncedLengthPastTheLimitIsAnErrorBeforeAnythingIsRead) {
  write_raw("\xff\xff\xff\xff"s);
  errno = 0;
  EXPECT_EQ(recv_frame(ends_[1], payload_), IoResult::error);
  EXPECT_EQ(errno, EMSGSIZE);
  write_raw("\0\0\0\x03"s);
  EXPECT_EQ(recv_frame(ends_[1], payload_, std::nullopt, 2), IoResult::error);
}

TEST_F(FrameIo, MemoryGrowsWithWhatArrivesNotWithWhatIsAnnounced) {
  write_raw("\x03\xff\xff\xff"s + "some");
  close_end(0);
  EXPECT_EQ(recv_frame(ends_[1], payload_), IoResult::closed);
  EXPECT_LE(payload_.capacity(), 2u << 20);
}

TEST_F(FrameIo, BadDescriptorIsAnError) {
  EXPECT_EQ(send_frame(-1, "x"), IoResult::error);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(recv_frame(-1, payload_), IoResult::error);
}

}  // namespace
}  // namespace standin
