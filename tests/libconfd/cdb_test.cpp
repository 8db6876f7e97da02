#include <confd_cdb.h>
#include <gtest/gtest.h>

#include "peer.h"

namespace standin {
namespace {

TEST(Cdb, PhaseIsAskedOverItsOwnSocket) {
  Peer peer([](Op op, FrameReader&) {
    EXPECT_EQ(op, Op::cdb_phase);
    return frame(std::uint64_t{0}).put(0u).put(std::uint64_t{CDB_FLAG_INIT}).take();
  });
  const int sock = ::socket(AF_INET, SOCK_STREAM, 0);
  ASSERT_EQ(cdb_connect(sock, CDB_DATA_SOCKET, peer.address(), Peer::address_size()), CONFD_OK);
  cdb_phase phase{9, 9};
  EXPECT_EQ(cdb_get_phase(sock, &phase), CONFD_OK);
  EXPECT_EQ(phase.phase, 0);
  EXPECT_EQ(phase.flags, CDB_FLAG_INIT);
  EXPECT_EQ(cdb_close(sock), CONFD_OK);
  EXPECT_EQ(cdb_close(sock), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_OS);
}

TEST(Cdb, NobodyListeningGivesAnError) {
  sockaddr_in nobody{};
  {
    Peer gone;
    nobody = *reinterpret_cast<const sockaddr_in*>(gone.address());
  }
  Socket sock;
  EXPECT_EQ(cdb_connect(sock, CDB_DATA_SOCKET, reinterpret_cast<sockaddr*>(&nobody), sizeof nobody),
            CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_OS);
}

}  // namespace
}  // namespace standin
