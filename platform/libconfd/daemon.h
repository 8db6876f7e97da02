// A daemon's connections, registrations and transactions.
#pragma once

#include <confd_dp.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/wire/frame.h"
#include "platform/wire/messages.h"

namespace standin {

// One transaction as the daemon sees it, from its init to its finish.
struct Transaction {
  Transaction(confd_daemon_ctx* dx, int handle);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  static Transaction& of(confd_trans_ctx* tctx) { return *static_cast<Transaction*>(tctx->impl); }

  confd_trans_ctx ctx{};
  confd_user_info user{};
  int worker_sock = -1;  // -1: the first

  // The running callback, and what it left.
  enum class Expects { no_callback, nothing, reply } expects = Expects::no_callback;
  std::optional<FrameWriter> reply;
  const char* reply_name = "none";
  std::string error_text;
};

struct Daemon {
  explicit Daemon(std::string daemon_name);
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  static Daemon& of(confd_daemon_ctx* dx) { return *static_cast<Daemon*>(dx->impl); }

  struct Worker {
    int sock;
    std::uint64_t id;
  };

  confd_daemon_ctx ctx{};
  std::string name;
  std::uint64_t id = 0;
  int control_sock = -1;
  std::vector<Worker> workers;
  bool registered = false;
  confd_trans_cbs trans_cbs{};
  confd_trans_validate_cbs validate_cbs{};
  std::map<std::string, confd_data_cbs> data_cbs;      // by callpoint
  std::map<std::string, confd_valpoint_cb> valpoints;  // by validation point
  std::map<int, std::unique_ptr<Transaction>> transactions;
};

// Serves one request; results as confd_fd_ready().
int serve_control(Daemon& daemon, const std::string& payload);
int serve_worker(Daemon& daemon, int sock, const std::string& payload);

// Bits of the callbacks that a record has.
std::uint64_t callback_bits(const confd_data_cbs& cbs);

}  // namespace standin
