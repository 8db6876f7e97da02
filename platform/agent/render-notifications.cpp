// Targets, their parameters and snmpNotifyTable: snmpd sends by these tables itself.
#include <algorithm>

#include "quoting.h"
#include "render-rules.h"
#include "render.h"

namespace standin::agent {
namespace {

constexpr std::int64_t kTrap = 1, kInform = 2;
constexpr std::int64_t kMpV1 = 0, kMpV2c = 1, kMpV3 = 3;
constexpr std::size_t kLongestTagList = 255;

const Oid kUdpDomain{1, 3, 6, 1, 6, 1, 1};           // RFC 3417, snmpUDPDomain
const Oid kUdp4Domain{1, 3, 6, 1, 2, 1, 100, 1, 1};  // RFC 3419, over IPv4
const Oid kUdp6Domain{1, 3, 6, 1, 2, 1, 100, 1, 2};  // and over IPv6
constexpr std::size_t kUdp4Octets = 6, kUdp6Octets = 18;

bool is_name(const std::string& text) {
  return !text.empty() && text.size() <= kLongestName && quoted(text);
}

// snmpd knows IPv4 by the older domain only; both mean the same. Empty for what it has none for.
Oid snmpd_domain(const TargetAddress& t) {
  const std::size_t size = t.address ? t.address->size() : 0;
  if (size == kUdp4Octets && (t.domain == kUdpDomain || t.domain == kUdp4Domain)) return kUdpDomain;
  if (size == kUdp6Octets && t.domain == kUdp6Domain) return kUdp6Domain;
  return {};
}

void render_address(const TargetAddress& t, Configuration& out) {
  const std::string row = row_name("snmpTargetAddrEntry", {t.name});
  const Oid domain = snmpd_domain(t);
  if (!is_name(t.name) || (t.params && !t.params->empty() && !is_name(*t.params))) {
    out.note(row, "left out: snmpd takes names of 1 to 32 octets without control characters");
  } else if (domain.empty()) {
    out.note(row, "left out: its address is not one of UDP over IPv4 or IPv6");
  } else if (!t.params || t.params->empty()) {
    out.note(row, "left out: it has no parameters");
  } else if (!quoted(t.tags) || t.tags.size() > kLongestTagList) {
    out.note(row, "left out: snmpd takes tag lists of up to 255 octets without control characters");
  } else {
    out.add(row, "targetAddr " + *quoted(t.name) + " " + dotted(domain) + " " + hex(*t.address) +
                     " " + std::to_string(t.timeout) + " " + std::to_string(t.retries) + " " +
                     *quoted(t.tags) + " " + *quoted(*t.params) + kReadOnlyActive);
  }
}

// RFC 3584 section 5.2.3: the community by which a security name stands in a message. snmpd does
// not look it up, and sends the security name of the parameters.
const Community* community_for(const TargetParams& p, const Rows& rows) {
  const OptionalText& own = rows.settings.engine_id;
  for (const Community& c : rows.communities) {
    if (c.name && !c.name->empty() && c.security_name == p.security_name &&
        (!c.context_engine_id || !own || *c.context_engine_id == *own)) {
      return &c;
    }
  }
  return nullptr;
}

std::string hindrance(const TargetParams& p, const Settings& s) {
  if (!is_name(p.name)) {
    return "left out: snmpd takes names of 1 to 32 octets without control characters";
  }
  if (!p.processing_model || !p.security_model || !p.security_name || !p.level) {
    return "left out: the row is not complete";
  }
  const std::int64_t mp = *p.processing_model;
  const bool known = (mp == kMpV1 && *p.security_model == kModelV1) ||
                     (mp == kMpV2c && *p.security_model == kModelV2c) ||
                     (mp == kMpV3 && *p.security_model == kModelUsm);
  if (!known) return "left out: snmpd does not know these models together";
  if ((mp == kMpV1 && !s.v1) || (mp == kMpV2c && !s.v2c) || (mp == kMpV3 && !s.v3)) {
    return "sends nothing: its version is not enabled";
  }
  return {};
}

void render_params(const TargetParams& p, const Rows& rows, Configuration& out) {
  const std::string row = row_name("snmpTargetParamsEntry", {p.name});
  const std::string reason = hindrance(p, rows.settings);
  if (!reason.empty()) out.note(row, reason);
  if (reason.starts_with("left out")) return;
  std::string sent = *p.security_name;
  if (*p.processing_model != kMpV3) {
    if (const Community* community = community_for(p, rows)) {
      sent = *community->name;
    } else {
      out.note(row, "no community has its security name; snmpd sends the name as the community");
    }
  }
  const auto word = quoted(sent);
  if (!word || sent.size() > kLongestCommunity) {
    out.note(row, "left out: snmpd takes 1 to 255 octets without control characters to send");
    return;
  }
  out.add(row, "targetParams " + *quoted(p.name) + " " + std::to_string(*p.processing_model) + " " +
                   std::to_string(*p.security_model) + " " + *word + " " +
                   std::to_string(*p.level) + kReadOnlyActive);
}

bool has_user(const Rows& rows, const OptionalText& engine_id, const OptionalText& name) {
  return std::any_of(rows.users.begin(), rows.users.end(), [&](const User& u) {
    return (!engine_id || u.engine_id == *engine_id) && u.name == name;
  });
}

// One target that a row of snmpNotifyTable sends to: why nothing arrives there.
void check_sending(const Notify& n, const TargetAddress& t, const TargetParams& p, const Rows& rows,
                   Configuration& out) {
  const std::string row = row_name("snmpTargetAddrEntry", {t.name});
  if (n.type == kInform && p.processing_model == kMpV1) {
    out.note(row, "gets nothing of " + row_name("snmpNotifyEntry", {n.name}) +
                      ": SNMPv1 has no informs");
  }
  if (p.processing_model != kMpV3) return;
  if (n.type == kTrap && !has_user(rows, rows.settings.engine_id, p.security_name)) {
    out.note(row, "gets no traps: " + printable(p.security_name.value_or("")) +
                      " is no user under the agent's engine ID");
  }
  if (n.type != kInform) return;
  const bool asked = !t.engine_id || t.engine_id->empty();
  if (!has_user(rows, asked ? OptionalText() : t.engine_id, p.security_name)) {
    out.note(row, "gets no informs: " + printable(p.security_name.value_or("")) +
                      " is no user under the target's engine ID");
  }
  if (!asked) {
    out.note(row, "snmpd asks the target for its engine ID and does not compare it");
  }
}

void render_notify(const Notify& n, const Rows& rows, Configuration& out) {
  const std::string row = row_name("snmpNotifyEntry", {n.name});
  if (n.name.size() > kLongestName || n.tag.size() > kLongestTagList) {
    out.note(row, "left out: snmpd takes names of 1 to 32 and tags of up to 255 octets");
    return;
  }
  out.add(row, "snmpNotifyTable " + hex(n.name) + " " + hex(n.tag) + " " + std::to_string(n.type) +
                   kReadOnlyActive);
  for (const TargetAddress& t : rows.addresses) {
    if (n.tag.empty() || !has_tag(t, n.tag)) continue;
    for (const TargetParams& p : rows.params) {
      if (t.params == p.name) check_sending(n, t, p, rows, out);
    }
  }
}

}  // namespace

void render_notifications(const Rows& rows, Configuration& out) {
  for (const TargetAddress& t : rows.addresses) render_address(t, out);
  for (const TargetParams& p : rows.params) render_params(p, rows, out);
  for (const Notify& n : rows.notifies) render_notify(n, rows, out);
  for (const std::string& params : rows.filtered_params) {
    out.note(row_name("snmpNotifyFilterProfileEntry", {params}), "left out: snmpd does not filter");
  }
  if (!rows.notifies.empty() && !rows.addresses.empty()) {
    out.note("vacmAccessTable", "snmpd sends notifications without asking for a notify view");
  }
}

}  // namespace standin::agent
