// A daemon of the test's own behind the real server: replies, refusals, validation.
#include <confd_dp.h>
#include <confd_maapi.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

#include "platform/wire/value.h"
#include "world.h"

namespace scenario {
namespace {

#define COMMUNITY "/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/snmpCommunityTable/snmpCommunityEntry"

// What the callbacks did, in order; they run on the daemon's thread.
std::mutex journal_mutex;
std::condition_variable journal_grew;
std::vector<std::string> journal;
void note(const std::string& line) {
  const std::lock_guard lock(journal_mutex);
  journal.push_back(line);
  journal_grew.notify_all();
}
void forget_notes() {
  const std::lock_guard lock(journal_mutex);
  journal.clear();
}
// The journal, once it ends so: a client that has gone is noticed after it has ended.
std::vector<std::string> noted_until(const std::string& last) {
  std::unique_lock lock(journal_mutex);
  journal_grew.wait_for(lock, kPatience,
                        [&] { return !journal.empty() && journal.back() == last; });
  return std::exchange(journal, {});
}

struct Sockets {
  int control = -1, worker = -1, maapi = -1;
};
Sockets& sockets_of(confd_trans_ctx* tctx) { return *static_cast<Sockets*>(tctx->dx->d_opaque); }

std::string leaf_of(const confd_hkeypath_t* kp) {
  if (kp->v[0][0].type != C_XMLTAG) return "entry";
  return confd_xmltag2str(CONFD_GET_XMLTAG_NS(&kp->v[0][0]), CONFD_GET_XMLTAG(&kp->v[0][0]));
}

int on_init(confd_trans_ctx* tctx) {
  note("init");
  const Sockets& sockets = sockets_of(tctx);
  confd_trans_set_fd(tctx, sockets.worker);
  tctx->t_opaque = tctx;
  return maapi_attach(sockets.maapi, 0, tctx);
}
int on_finish(confd_trans_ctx* tctx) {
  note("finish");
  maapi_detach(sockets_of(tctx).maapi, tctx);
  return CONFD_OK;
}
int on_validate_init(confd_trans_ctx* tctx) {
  note("validate-init");
  confd_trans_set_fd(tctx, sockets_of(tctx).worker);
  return CONFD_OK;
}
int on_validate_stop(confd_trans_ctx*) {
  note("validate-stop");
  return CONFD_OK;
}

int get_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp) {
  const std::string leaf = leaf_of(kp);
  confd_value_t v;
  if (leaf == "index" || leaf == "name") return confd_data_reply_value(tctx, &kp->v[1][0]);
  if (leaf == "sec-name") return CONFD_OK;  // no reply
  if (leaf == "context-name") {
    confd_trans_seterr(tctx, "dropped, since the callback succeeds");
    CONFD_SET_STR(&v, "as text");
    return confd_data_reply_value(tctx, &v);
  }
  return confd_data_reply_not_found(tctx);
}

// `name` is refused with a text, `sec-name` by a nested call, `context-name` without any reason.
int set_elem(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t*) {
  const std::string leaf = leaf_of(kp);
  if (leaf == "name") {
    confd_trans_seterr(tctx, "first text");
    confd_trans_seterr(tctx, "no %s, 100%%", "name");
    return CONFD_ERR;
  }
  if (leaf == "context-name") return CONFD_ERR;
  const int sock = sockets_of(tctx).maapi;
  maapi_create(sock, tctx->thandle, COMMUNITY "{%x}", &kp->v[1][0]);
  confd_value_t wrong;
  CONFD_SET_INT32(&wrong, 1);
  return maapi_set_elem(sock, tctx->thandle, &wrong, COMMUNITY "{%x}/snmpCommunityName",
                        &kp->v[1][0]);
}

int create(confd_trans_ctx*, confd_hkeypath_t*) { return CONFD_OK; }

int validate(confd_trans_ctx* tctx, confd_hkeypath_t* kp, confd_value_t*) {
  note(std::string("validate ") + (tctx->t_opaque == tctx ? "same context" : "another context"));
  char path[200];
  confd_pp_kpath(path, sizeof path, kp);
  confd_error_seterr(tctx->uinfo, "not today");
  return CONFD_ERR;
}

class Provider : public World {
 protected:
  void SetUp() override {
    forget_notes();
    start_server();
    std::memset(&address_, 0, sizeof address_);
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address_.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port())));
    stop_ = ::eventfd(0, EFD_CLOEXEC);
  }
  ~Provider() override {
    if (thread_.joinable()) {
      const std::uint64_t one = 1;
      EXPECT_EQ(::write(stop_, &one, sizeof one), static_cast<ssize_t>(sizeof one));
      thread_.join();
    }
    ::close(stop_);
  }

  int connect(confd_daemon_ctx* dx, int& sock, confd_sock_type type) {
    sock = ::socket(AF_INET, SOCK_STREAM, 0);
    return confd_connect(dx, sock, type, reinterpret_cast<const sockaddr*>(&address_),
                         sizeof address_);
  }
  confd_daemon_ctx* connected(const char* name, Sockets& sockets) {
    confd_daemon_ctx* dx = confd_init_daemon(name);
    EXPECT_EQ(connect(dx, sockets.control, CONTROL_SOCKET), CONFD_OK) << confd_lasterr();
    EXPECT_EQ(connect(dx, sockets.worker, WORKER_SOCKET), CONFD_OK) << confd_lasterr();
    sockets.maapi = ::socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_EQ(
        maapi_connect(sockets.maapi, reinterpret_cast<const sockaddr*>(&address_), sizeof address_),
        CONFD_OK);
    dx->d_opaque = &sockets;
    return dx;
  }
  int register_callpoint(confd_daemon_ctx* dx, const char* name) {
    confd_data_cbs cbs{};
    std::strcpy(cbs.callpoint, name);
    cbs.get_elem = get_elem;
    cbs.set_elem = set_elem;
    cbs.create = create;
    return confd_register_data_cb(dx, &cbs);
  }
  void serve(const char* callpoint) {
    dx_ = connected("provider", sockets_);
    char* schema = nullptr;
    ASSERT_EQ(maapi_get_schema_file_path(sockets_.maapi, &schema), CONFD_OK);
    ASSERT_EQ(confd_mmap_schemas(schema), CONFD_OK);
    std::free(schema);
    confd_trans_cbs trans{};
    trans.init = on_init;
    trans.finish = on_finish;
    confd_trans_validate_cbs validation{on_validate_init, on_validate_stop};
    confd_valpoint_cb point{"vacm-group", validate};
    ASSERT_EQ(confd_register_trans_cb(dx_, &trans), CONFD_OK);
    ASSERT_EQ(register_callpoint(dx_, callpoint), CONFD_OK);
    ASSERT_EQ(confd_register_trans_validate_cb(dx_, &validation), CONFD_OK);
    ASSERT_EQ(confd_register_valpoint_cb(dx_, &point), CONFD_OK);
    ASSERT_EQ(confd_register_done(dx_), CONFD_OK) << confd_lasterr();
    thread_ = std::thread([this] {
      for (;;) {
        pollfd entries[] = {
            {sockets_.control, POLLIN, 0}, {sockets_.worker, POLLIN, 0}, {stop_, POLLIN, 0}};
        ASSERT_GT(::poll(entries, 3, -1), 0);
        if (entries[2].revents != 0) return;
        for (const auto& entry : {entries[0], entries[1]}) {
          if (entry.revents == 0) continue;
          if (confd_fd_ready(dx_, entry.fd) != CONFD_OK) {
            ASSERT_EQ(confd_errno, CONFD_ERR_EXTERNAL);
          }
        }
      }
    });
  }

  sockaddr_in address_;
  Sockets sockets_;
  confd_daemon_ctx* dx_ = nullptr;
  std::thread thread_;
  int stop_ = -1;
};

TEST_F(Provider, RefusalsComeWithTheBestTextThereIs) {
  serve("community");
  EXPECT_EQ(cli({"set", "/snmp:snmp/community{c}/name", "x"}),
            (Ran{2, "", "error: no name, 100%\n"}));
  const Ran nested = cli({"set", "/snmp:snmp/community{c}/sec-name", "x"});
  EXPECT_NE(nested.err.find("snmpCommunityName"), std::string::npos) << nested;
  const Ran generic = cli({"set", "/snmp:snmp/community{c}/context-name", "x"});
  EXPECT_NE(generic.err.find("/snmp:snmp/community{c}/context-name"), std::string::npos) << generic;
  EXPECT_EQ(cli({"keys", COMMUNITY}).out, "") << "the nested create is undone with the operation";
}

TEST_F(Provider, RepliesReachTheClientAndAForgottenOneIsAnError) {
  serve("community");
  EXPECT_EQ(cli({"get", "/snmp:snmp/community{c}/context-name"}), (Ran{0, "as text\n", ""}));
  EXPECT_EQ(cli({"get", "/snmp:snmp/community{c}/target-tag"}).status, 1);
  const Ran forgotten = cli({"get", "/snmp:snmp/community{c}/sec-name"});
  EXPECT_EQ(forgotten.status, 2);
  EXPECT_NE(forgotten.err.find("sec-name"), std::string::npos) << forgotten;
}

TEST_F(Provider, ValidationRunsInTheContextOfTheWrites) {
  serve("vacm_group");
  const Ran validated =
      batch({"create /snmp:snmp/vacm/group{g}/access{c usm auth-priv}", "validate"}, {"-k"});
  EXPECT_NE(validated.out.find("not today"), std::string::npos) << validated;
  const auto lines = noted_until("finish");
  ASSERT_GE(lines.size(), 4U);
  EXPECT_EQ(lines[0], "init");
  EXPECT_EQ(lines[1], "validate-init");
  EXPECT_EQ(lines[2], "validate same context");
  EXPECT_EQ(lines[3], "validate-stop");
  EXPECT_EQ(lines.back(), "finish");
}

TEST_F(Provider, NamesAndCallpointsBelongToOneLiveDaemon) {
  serve("community");
  int sock = -1;
  confd_daemon_ctx* same_name = confd_init_daemon("provider");
  EXPECT_LT(connect(same_name, sock, CONTROL_SOCKET), 0);
  EXPECT_EQ(confd_errno, CONFD_ERR_INUSE) << confd_lasterr();
  ::close(sock);
  Sockets second, third;
  confd_daemon_ctx* same_callpoint = connected("another", second);
  ASSERT_EQ(register_callpoint(same_callpoint, "community"), CONFD_OK);
  EXPECT_NE(confd_register_done(same_callpoint), CONFD_OK);
  EXPECT_EQ(confd_errno, CONFD_ERR_INUSE) << confd_lasterr();
  confd_daemon_ctx* unknown_callpoint = connected("third", third);
  ASSERT_EQ(register_callpoint(unknown_callpoint, "no-such-callpoint"), CONFD_OK);
  EXPECT_NE(confd_register_done(unknown_callpoint), CONFD_OK);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS) << confd_lasterr();
}

}  // namespace
}  // namespace scenario
