// Targets created in one transaction; one of many changed; all of them shown.
#include <stdexcept>
#include <string>

#include "bench/meter.h"
#include "bench/sections.h"
#include "platform/wire/path.h"

namespace quillet::bench {
namespace {

using scenario::NorthboundSession;
using standin::NodeKind;
using standin::parse_path;
using standin::ShownNode;

const std::string kList = "/snmp:snmp/target";

std::string entry(std::size_t number) { return kList + "{t" + std::to_string(number) + "}"; }

// Rows of both tables, as another management program would have left them: each target with an
// address, two tags and a params row of its own.
std::string rows_of_targets(std::size_t count) {
  std::string addresses, params;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string number = std::to_string(i), comma = i == 0 ? "" : ",";
    addresses += comma + R"({"snmpTargetAddrName":"t)" + number +
                 R"(","snmpTargetAddrTDomain":"1.3.6.1.2.1.100.1.1",)"
                 R"("snmpTargetAddrTAddress":"0a:00:00:01:00:a2","snmpTargetAddrTagList":"a b",)"
                 R"("snmpTargetAddrParams":"ConfD)" +
                 std::to_string(i + 1) + R"("})";
    params += comma + R"({"snmpTargetParamsName":"ConfD)" + std::to_string(i + 1) +
              R"(","snmpTargetParamsMPModel":1,"snmpTargetParamsSecurityModel":2,)"
              R"("snmpTargetParamsSecurityName":"public","snmpTargetParamsSecurityLevel":)"
              R"("noAuthNoPriv"})";
  }
  return R"({"SNMP-TARGET-MIB:SNMP-TARGET-MIB":{"snmpTargetAddrTable":{"snmpTargetAddrEntry":[)" +
         addresses + R"(]},"snmpTargetParamsTable":{"snmpTargetParamsEntry":[)" + params + "]}}}";
}

std::size_t leaves_of(const std::vector<ShownNode>& nodes) {
  std::size_t leaves = 0;
  for (const ShownNode& node : nodes) {
    if (node.kind == NodeKind::leaf || node.kind == NodeKind::leaf_list) ++leaves;
    leaves += leaves_of(node.children);
    for (const ShownNode::Entry& shown : node.entries) leaves += leaves_of(shown.nodes);
  }
  return leaves;
}

void create_from_nothing(Meter& meter, std::size_t size) {
  const auto session = meter.machine().session();
  session->exists(parse_path(entry(0)));
  print_line("create, each of as many", size,
             meter.measure(1, size, [&](auto i) { session->create(parse_path(entry(i))); }));
}

void change_one(Meter& meter, const Sizes& sizes, std::size_t size) {
  const auto session = meter.machine().session();
  session->load(rows_of_targets(size));
  session->exists(parse_path(entry(0)));
  // Each waits for a pass over the table: few are enough.
  const std::size_t operations = sizes.operations / 10 + 1;
  print_line("set `port`", size, meter.measure(sizes.rounds, operations, [&](auto i) {
    session->set(parse_path(entry(i % size) + "/port"), {std::to_string(1000 + i)});
  }));
  print_line("set `v2c/sec-name`", size, meter.measure(sizes.rounds, operations, [&](auto i) {
    session->set(parse_path(entry(i % size) + "/v2c/sec-name"), {"n" + std::to_string(i)});
  }));
}

void show_all(Meter& meter, std::size_t size) {
  const auto session = meter.machine().session();
  session->load(rows_of_targets(size));
  session->exists(parse_path(entry(0)));
  std::size_t leaves = 0;
  const Cost cost = meter.measure(1, 1, [&](auto) {
    const NorthboundSession::Tree tree = session->show(parse_path(kList));
    if (!tree.complete) throw std::runtime_error("a target could not be read");
    leaves = leaves_of(tree.nodes);
  });
  if (leaves < size) throw std::runtime_error("targets are missing");
  print_line("show, each leaf", size, cost, static_cast<double>(leaves));
}

}  // namespace

void targets(const Sizes& sizes) {
  Meter meter;
  print_head("targets");
  for (const std::size_t size : sizes.targets) {
    create_from_nothing(meter, size);
    change_one(meter, sizes, size);
    show_all(meter, size);
  }
}

}  // namespace quillet::bench
