#include "platform/standin/engine/engine.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace standin {
namespace {

std::string read_file(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  if (in) text << in.rdbuf();
  if (!in || !text) throw std::runtime_error("cannot read " + file + ": " + std::strerror(errno));
  return text.str();
}

// What only daemons could take has no place in the initial configuration.
void refuse_external(const Schema& schema, const NodePath& path) {
  const Node& node = path.node();
  if (node.is_external() && node.kind != Node::Kind::container)
    throw Refusal(ErrorCode::access, schema.to_text(path) + ": not stored by the server");
}

}  // namespace

// Commits validate by calling daemons, so they exclude each other by a flag rather than the lock.
class Engine::CommitTurn {
 public:
  explicit CommitTurn(Engine& engine) : engine_(engine) {
    engine_.monitor_.wait([this] { return !engine_.committing_; });
    if (engine_.monitor_.stopping) throw Refusal(ErrorCode::nosession, "the server stops");
    engine_.committing_ = true;
  }
  ~CommitTurn() {
    engine_.committing_ = false;
    engine_.monitor_.changed.notify_all();
  }
  CommitTurn(const CommitTurn&) = delete;
  CommitTurn& operator=(const CommitTurn&) = delete;

 private:
  Engine& engine_;
};

Engine::Engine(const EngineOptions& options)
    : repository_(options.directory, options.yang),
      daemons_(repository_.schema()),
      timeout_(options.timeout) {
  if (!options.init_file.empty() && repository_.pristine()) load_initial(options.init_file);
}

void Engine::load_initial(const std::string& file) {
  const std::string json = read_file(file);
  const std::lock_guard lock(monitor_.mutex);
  TransactionPtr transaction = open(Transaction::Kind::initial, nullptr);
  try {
    load_json(transaction->data(), schema(), json,
              [this](const NodePath& path) { refuse_external(schema(), path); });
  } catch (const std::exception& e) {
    throw std::runtime_error(file + ": " + e.what());
  }
  initial_ = std::move(transaction);
}

TransactionPtr Engine::open(Transaction::Kind kind, SocketPtr client) {
  const std::uint64_t id = next_id_++;
  const Surroundings around{repository_, monitor_, daemons_, timeout_};
  auto transaction = std::make_shared<Transaction>(id, kind, around, std::move(client));
  transactions_.emplace(id, transaction);
  return transaction;
}

TransactionPtr Engine::find(std::uint64_t id) const {
  const auto found = transactions_.find(id);
  return found == transactions_.end() ? nullptr : found->second;
}

TransactionPtr Engine::find_handle(std::uint64_t handle) const {
  const auto found = std::ranges::find(transactions_, handle,
                                       [](const auto& entry) { return entry.second->handle(); });
  return found == transactions_.end() ? nullptr : found->second;
}

void Engine::commit(Transaction& transaction) {
  const CommitTurn turn(*this);
  if (initial_ && initial_.get() != &transaction && !transaction.writes().empty())
    throw Refusal(ErrorCode::access, "the initial configuration is still open: start first");
  transaction.require_daemons();
  transaction.data().validate();
  // From here on the lock is held throughout: what was compared is what is written.
  if (transaction.writes().empty() && initial_.get() != &transaction) return;
  if (transaction.writes().conflicts())
    throw Refusal(ErrorCode::conflict,
                  "conflict: another commit has changed what this transaction wrote or read");
  try {
    repository_.commit(transaction.writes());
  } catch (const std::runtime_error& e) {
    throw Refusal(ErrorCode::os, std::string("the commit could not be stored: ") + e.what());
  }
}

void Engine::close(const TransactionPtr& transaction) {
  if (!transactions_.contains(transaction->id())) return;
  transaction->finish();
  transactions_.erase(transaction->id());
  std::uint64_t oldest = repository_.log().last();
  for (const auto& [id, open] : transactions_) oldest = std::min(oldest, open->began_after());
  repository_.log().forget_before(oldest);
}

bool Engine::start() {
  const TransactionPtr transaction = initial_;
  if (!transaction) return false;
  {
    const Operation operation(monitor_, *transaction);
    commit(*transaction);
    initial_.reset();
  }
  close(transaction);
  return true;
}

void Engine::stop() {
  monitor_.stopping = true;
  daemons_.shut_all();
  monitor_.changed.notify_all();
}

}  // namespace standin
