#include "render.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "render-rules.h"

namespace standin::agent {
namespace {

constexpr std::size_t kUdp4Octets = 6, kUdp6Octets = 18;

}  // namespace

std::vector<std::string> words_of(const std::string& tags) {
  std::istringstream in(tags);
  std::vector<std::string> words;
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

bool has_tag(const TargetAddress& target, const std::string& tag) {
  const auto words = words_of(target.tags);
  return std::find(words.begin(), words.end(), tag) != words.end();
}

std::string ip_text(const TargetAddress& target) {
  const std::size_t size = target.address ? target.address->size() : 0;
  if (size != kUdp4Octets && size != kUdp6Octets) return {};
  std::array<char, INET6_ADDRSTRLEN> text{};
  return ::inet_ntop(size == kUdp4Octets ? AF_INET : AF_INET6, target.address->data(), text.data(),
                     text.size());
}

Configuration render(const Rows& rows, const RenderOptions& options) {
  Configuration out;
  render_agent(rows, options, out);
  render_communities(rows, out);
  render_users(rows, out);
  render_access(rows, out);
  render_notifications(rows, out);
  return out;
}

}  // namespace standin::agent
