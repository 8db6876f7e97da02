#include "system.h"

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace random_operations {
namespace {

using standin::NodeKind;
using standin::ShownNode;

void flatten(const std::vector<ShownNode>& nodes, const std::string& path,
             std::vector<std::string>& lines);

void flatten(const ShownNode& node, const std::string& above, std::vector<std::string>& lines) {
  const std::string path = above + "/" + node.name;
  switch (node.kind) {
    case NodeKind::leaf:
      // An encrypted text differs each time; what it holds shows in the keys made from it.
      lines.push_back(path + " = " + (node.text().starts_with("$8$") ? "$8$" : node.text()));
      break;
    case NodeKind::leaf_list:
      lines.push_back(path + " = " + words(node.texts));
      break;
    case NodeKind::error:
      lines.push_back(path + " error: " + node.text());
      break;
    case NodeKind::container:
      if (node.children.empty()) lines.push_back(path + " {}");
      flatten(node.children, path, lines);
      break;
    case NodeKind::list: {
      std::string order = path + ":";
      for (const ShownNode::Entry& entry : node.entries) {
        order += ' ' + braces(entry.keys);
        flatten(entry.nodes, path + braces(entry.keys), lines);
      }
      lines.push_back(std::move(order));
      break;
    }
  }
}

void flatten(const std::vector<ShownNode>& nodes, const std::string& path,
             std::vector<std::string>& lines) {
  for (const ShownNode& node : nodes) flatten(node, path, lines);
}

std::vector<std::string> lines_of(scenario::NorthboundSession& session) {
  std::vector<std::string> lines;
  flatten(session.show({}).nodes, "", lines);
  std::sort(lines.begin(), lines.end());
  return lines;
}

}  // namespace

System::System() {
  start_both();
  session_ = session();
}

std::optional<std::string> System::run(const Operation& op) {
  if (op.fault) {
    befall(op);
    return std::nullopt;
  }
  try {
    const standin::Path path = op.path.empty()
                                   ? standin::Path()
                                   : standin::parse_path(standin::split_words(op.line).at(1));
    if (op.is("set")) session_->set(path, op.values);
    if (op.is("create")) session_->create(path);
    if (op.is("delete")) session_->remove(path);
    if (op.is("validate")) session_->validate();
    if (op.is("commit")) session_->commit();
    if (op.is("abort")) session_->abort();
    return std::nullopt;
  } catch (const standin::Refused& refused) {
    return refused.what();
  }
}

std::vector<std::string> System::show_open() { return lines_of(*session_); }

std::vector<std::string> System::show_committed() {
  return lines_of(*session(scenario::NorthboundSession::Access::read));
}

std::string System::complaints() {
  // The daemon writes a line for each refusal: the last tell most.
  const std::size_t much = 1000;
  const auto end_of = [much](const std::string& text) {
    return text.substr(text.size() - std::min(text.size(), much));
  };
  return "server: ..." + end_of(server_->errors()) + "\ndaemon: ..." + end_of(daemon_->errors());
}

void System::befall(const Operation& op) {
  interrupted_ = false;
  if (op.is("client-lost")) {
    session_.reset();
    session_ = session();
  } else if (op.is("server-killed")) {
    kill_server();
    restart();
  } else if (op.is("daemon-killed")) {
    kill_daemon();
  } else {
    const std::size_t blank = op.verb.find(' ');
    if (op.verb.substr(0, blank) != "server-killed-in-commit") {
      throw std::runtime_error("unknown fault: " + op.verb);
    }
    kill_server_in_commit(static_cast<unsigned>(std::stoul(op.verb.substr(blank + 1))));
  }
}

void System::kill_server() {
  server_->signal(SIGKILL);
  server_->wait();
}

void System::restart() {
  // Inside a callback it may also end by the abort that follows a call that must succeed.
  const int status = daemon_ends();
  const bool aborted =
      status == 128 + SIGABRT && daemon_->errors().find("error not CONFD_OK") != std::string::npos;
  if (status != 1 && !aborted) {
    throw std::runtime_error("without its server the daemon ends with " + std::to_string(status));
  }
  start_both();
  session_ = session();
}

void System::kill_daemon() {
  daemon_->signal(SIGKILL);
  daemon_->wait();
  const auto refused = run(parse("create /snmp:snmp/notify{daemon-gone}"));
  if (!refused) throw std::runtime_error("a write succeeds without the daemon");
  session_->abort();
  start_daemon();
}

void System::kill_server_in_commit(unsigned microseconds) {
  std::thread killer([&] {
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
    server_->signal(SIGKILL);
  });
  interrupted_ = true;
  try {
    session_->commit();
    interrupted_ = false;
  } catch (const standin::Refused&) {
  } catch (const standin::ConnectionLost&) {
  }
  killer.join();
  server_->wait();
  restart();
}

}  // namespace random_operations
