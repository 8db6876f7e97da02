// One entry read and written, and the whole list walked, while the list grows.
#include <stdexcept>
#include <string>

#include "bench/meter.h"
#include "bench/sections.h"
#include "platform/wire/path.h"

namespace quillet::bench {
namespace {

using scenario::NorthboundSession;
using standin::parse_path;

const std::string kList = "/snmp:snmp/community";

std::string entry(const std::string& prefix, std::size_t number) {
  return kList + "{" + prefix + std::to_string(number) + "}";
}

void grow(Meter& meter, std::size_t from, std::size_t to) {
  const auto session = meter.machine().session();
  for (std::size_t i = from; i < to; ++i) session->create(parse_path(entry("c", i)));
  session->commit();
}

void reads(Meter& meter, const Sizes& sizes, std::size_t size) {
  const auto session = meter.machine().session(NorthboundSession::Access::read);
  // Any leaf: the first touch of the daemon is no part of what follows.
  session->exists(parse_path(entry("c", 0)));
  print_line("get `sec-name`", size, meter.measure(sizes.rounds, sizes.operations, [&](auto i) {
    if (!session->get(parse_path(entry("c", i % size) + "/sec-name")))
      throw std::runtime_error("an entry has no security name");
  }));
  print_line("walk, each entry", size,
             meter.measure(sizes.rounds, 1,
                           [&](auto) {
                             if (session->keys(parse_path(kList)).size() != size)
                               throw std::runtime_error("the walk misses entries");
                           }),
             static_cast<double>(size));
}

// In one transaction that is given up in the end.
void writes(Meter& meter, const Sizes& sizes, std::size_t size) {
  const auto session = meter.machine().session();
  session->exists(parse_path(entry("c", 0)));
  print_line("set `context-name`", size, meter.measure(sizes.rounds, sizes.operations, [&](auto i) {
    session->set(parse_path(entry("c", i % size) + "/context-name"), {"x" + std::to_string(i)});
  }));
  print_line("create", size, meter.measure(sizes.rounds, sizes.operations, [&](auto i) {
    session->create(parse_path(entry("new", i)));
  }));
  print_line("delete", size, meter.measure(sizes.rounds, sizes.operations, [&](auto i) {
    session->remove(parse_path(entry("new", i)));
  }));
}

// A transaction each, on the disk when it returns.
void commits(Meter& meter, const Sizes& sizes, std::size_t size) {
  const auto session = meter.machine().session();
  print_line("set and commit", size, meter.measure(sizes.rounds, 5, [&](auto i) {
    session->set(parse_path(entry("c", i % size) + "/context-name"), {"y" + std::to_string(i)});
    session->commit();
  }));
}

}  // namespace

void communities(const Sizes& sizes) {
  Meter meter;
  print_head("communities");
  std::size_t there = 0;
  for (const std::size_t size : sizes.communities) {
    grow(meter, there, size);
    there = size;
    reads(meter, sizes, size);
    writes(meter, sizes, size);
    commits(meter, sizes, size);
  }
}

}  // namespace quillet::bench
