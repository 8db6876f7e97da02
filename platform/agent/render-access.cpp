// The tables of the view-based access control model.
#include <algorithm>

#include "quoting.h"
#include "render-rules.h"
#include "render.h"

namespace standin::agent {
namespace {

constexpr const char* kTooLong = "left out: snmpd takes names of 1 to 32 octets";
constexpr std::size_t kMaskOctets = 16;
constexpr std::int64_t kIncluded = 1, kExcluded = 2;

bool fits(const std::string& name) { return name.size() <= kLongestName; }

bool has_row(const Rows& rows, std::int64_t model, const std::string& name) {
  return std::any_of(rows.members.begin(), rows.members.end(),
                     [&](const Member& m) { return m.model == model && m.security_name == name; });
}

// RFC 3415 has no row for any model: such a row holds for each model that has none of its own.
std::vector<std::int64_t> models_of(const Member& m, const Rows& rows) {
  if (m.model != 0) return {m.model};
  std::vector<std::int64_t> models;
  for (const std::int64_t model : {kModelV1, kModelV2c, kModelUsm}) {
    if (!has_row(rows, model, m.security_name)) models.push_back(model);
  }
  return models;
}

void render_member(const Member& m, const Rows& rows, Configuration& out) {
  const std::string row =
      row_name("vacmSecurityToGroupEntry", {std::to_string(m.model), m.security_name});
  if (!m.group || m.group->empty()) {
    out.note(row, "left out: it has no group");
  } else if (!fits(m.security_name) || !fits(*m.group)) {
    out.note(row, kTooLong);
  } else {
    for (const std::int64_t model : models_of(m, rows)) {
      out.add(row, "vacmGroup " + std::string(kActiveReadOnly) + std::to_string(model) + " " +
                       hex(m.security_name) + " " + hex(*m.group));
    }
  }
}

void render_access_row(const Access& a, Configuration& out) {
  const std::string row = row_name(
      "vacmAccessEntry", {a.group, a.context, std::to_string(a.model), std::to_string(a.level)});
  if (!fits(a.group) || !fits(a.context) || !fits(a.read_view) || !fits(a.write_view) ||
      !fits(a.notify_view)) {
    out.note(row, kTooLong);
    return;
  }
  out.add(row, "vacmAccess " + std::string(kActiveReadOnly) + std::to_string(a.model) + " " +
                   std::to_string(a.level) + " " + std::to_string(a.match) + " " + hex(a.group) +
                   " " + hex(a.context) + " " + hex(a.read_view) + " " + hex(a.write_view) + " " +
                   hex(a.notify_view));
}

void render_family(const Family& f, Configuration& out) {
  const std::string row = row_name("vacmViewTreeFamilyEntry", {f.view, dotted(f.subtree)});
  const std::int64_t type = f.type.value_or(0);
  if (!fits(f.view)) {
    out.note(row, kTooLong);
  } else if (type != kIncluded && type != kExcluded) {
    out.note(row, "left out: it is neither included nor excluded");
  } else if (f.mask.size() > kMaskOctets) {
    out.note(row, "left out: its mask is longer than 16 octets");
  } else {
    out.add(row, "vacmView " + std::string(kActiveReadOnly) + std::to_string(type) + " " +
                     hex(f.view) + " " + dotted(f.subtree) + " " + hex(f.mask));
  }
}

}  // namespace

void render_access(const Rows& rows, Configuration& out) {
  for (const Member& m : rows.members) render_member(m, rows, out);
  for (const Access& a : rows.accesses) render_access_row(a, out);
  for (const Family& f : rows.families) render_family(f, out);
}

}  // namespace standin::agent
