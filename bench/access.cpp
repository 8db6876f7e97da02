// Listen addresses walked; groups with ten members each walked and read whole; users re-keyed.
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/meter.h"
#include "bench/sections.h"
#include "platform/wire/path.h"
#include "transforms/usm-keys.h"

namespace quillet::bench {
namespace {

using standin::parse_path;

constexpr std::size_t kMembers = 10;

std::string octet(std::size_t n) { return std::to_string(n % 256); }

void walk_listen_addresses(Meter& meter, std::size_t size) {
  const auto session = meter.machine().session();
  std::vector<std::string> items;
  for (std::size_t i = 0; i < size; ++i) {
    items.push_back("10.0." + octet(i / 256) + "." + octet(i) + ":161");
  }
  session->create(parse_path("/confd_dyncfg:confdConfig/snmpAgent"));
  session->set(parse_path("/confd_dyncfg:confdConfig/snmpAgent/extraIpPorts"), items);
  const auto list = parse_path("/snmp:snmp/agent/extra-ip-port");
  print_line("walk, each entry", size, meter.measure(1, 1, [&](auto) { session->keys(list); }),
             static_cast<double>(size));
}

std::string group(std::size_t g) { return "/snmp:snmp/vacm/group{g" + std::to_string(g) + "}"; }
std::string member(std::size_t m) { return "/member{m" + std::to_string(m) + "}"; }

void walk_groups(Meter& meter, std::size_t size) {
  const auto session = meter.machine().session();
  std::string rows;
  for (std::size_t i = 0; i < size * kMembers; ++i) {
    rows += std::string(i == 0 ? "" : ",") + R"({"vacmSecurityModel":)" +
            std::to_string(1 + i / kMembers) + R"(,"vacmSecurityName":"m)" +
            std::to_string(i % kMembers) + R"(","vacmGroupName":"g)" +
            std::to_string(i / kMembers) + R"("})";
  }
  session->load(R"({"SNMP-VIEW-BASED-ACM-MIB:SNMP-VIEW-BASED-ACM-MIB":{"vacmSecurityToGroupTable":)"
                R"({"vacmSecurityToGroupEntry":[)" +
                rows + "]}}}");
  const double members = static_cast<double>(size * kMembers);
  print_line("walk of groups, each", size,
             meter.measure(1, 1, [&](auto) { session->keys(parse_path("/snmp:snmp/vacm/group")); }),
             static_cast<double>(size));
  print_line("walk of all members, each", size,
             meter.measure(1, 1,
                           [&](auto) {
                             for (std::size_t g = 0; g < size; ++g)
                               session->keys(parse_path(group(g) + "/member"));
                           }),
             members);
  print_line("a member's models, read whole", size, meter.measure(1, size * kMembers, [&](auto i) {
    session->get(parse_path(group(i / kMembers) + member(i % kMembers) + "/sec-model"));
  }));
}

double microseconds_of_derivations(std::size_t count) {
  const std::string password = "maplesyrup", engine = "engine-id";
  const auto* p = reinterpret_cast<const unsigned char*>(password.data());
  const auto* e = reinterpret_cast<const unsigned char*>(engine.data());
  unsigned char key[kShaKeyOctets];
  const auto begin = std::chrono::steady_clock::now();
  for (std::size_t i = 0; i < count; ++i) {
    password_to_key_sha(p, password.size(), e, engine.size(), key);
  }
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin)
      .count();
}

void rekey(Meter& meter, std::size_t size) {
  const auto session = meter.machine().session();
  const std::string engine = "/snmp:snmp/agent/engine-id/";
  session->set(parse_path(engine + "enterprise-number"), {"32473"});
  session->set(parse_path(engine + "from-text"), {"before"});
  for (std::size_t i = 0; i < size; ++i) {
    const std::string user = "/snmp:snmp/usm/local/user{u" + std::to_string(i) + "}";
    session->set(parse_path(user + "/auth/sha/password"), {"maplesyrup"});
    session->set(parse_path(user + "/priv/aes/password"), {"maplesyrup"});
  }
  const Cost cost =
      meter.measure(1, 1, [&](auto) { session->set(parse_path(engine + "from-text"), {"after"}); });
  print_line("engine ID changed, both keys", size, cost);
  std::printf("\n%zu users re-keyed in %.2f times the time of their %zu derivations\n", size,
              cost.microseconds / microseconds_of_derivations(2 * size), 2 * size);
}

}  // namespace

void access(const Sizes& sizes) {
  Meter meter;
  print_head("listen addresses");
  for (const std::size_t size : sizes.listen_addresses) walk_listen_addresses(meter, size);
  print_head("groups of ten members");
  for (const std::size_t size : sizes.groups) walk_groups(meter, size);
  print_head("local users");
  for (const std::size_t size : sizes.users) rekey(meter, size);
}

}  // namespace quillet::bench
