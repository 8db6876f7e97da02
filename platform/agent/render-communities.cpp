// snmpCommunityTable, as com2sec directives: the only way in which snmpd maps communities.
#include "quoting.h"
#include "render-rules.h"
#include "render.h"

namespace standin::agent {
namespace {

struct Source {
  bool v6 = false;
  std::string text;
};

// RFC 3584 section 5.2.1: with a tag, the addresses of its targets; without one, any.
std::vector<Source> sources_of(const Community& c, const Rows& rows) {
  if (c.transport_tag.empty()) return {{false, "default"}, {true, "default"}};
  std::vector<Source> sources;
  for (const TargetAddress& target : rows.addresses) {
    const std::string ip = ip_text(target);
    if (ip.empty() || !has_tag(target, c.transport_tag)) continue;
    const bool v6 = ip.find(':') != std::string::npos;
    sources.push_back({v6, ip + (v6 ? "/128" : "/32")});
  }
  return sources;
}

// Why snmpd cannot have the row; empty when it can.
std::string hindrance(const Community& c, const Settings& settings) {
  if (!c.name || c.name->empty()) return "it has no community name";
  if (!c.security_name || c.security_name->empty()) return "it has no security name";
  if (c.context_engine_id && settings.engine_id && *c.context_engine_id != *settings.engine_id) {
    return "its context engine ID is not the agent's, and snmpd does not pass requests on";
  }
  if (c.name->size() > kLongestCommunity) return "snmpd takes community names of 1 to 255 octets";
  if (c.security_name->size() > kLongestName || c.context_name.size() > kLongestName) {
    return "snmpd takes security and context names of 1 to 32 octets";
  }
  if (!quoted(*c.name) || !quoted(*c.security_name) || !quoted(c.context_name)) {
    return "snmpd takes no control characters in names";
  }
  return {};
}

}  // namespace

void render_communities(const Rows& rows, Configuration& out) {
  for (const Community& c : rows.communities) {
    const std::string row = row_name("snmpCommunityEntry", {c.index});
    const std::string reason = hindrance(c, rows.settings);
    if (!reason.empty()) {
      out.note(row, "left out: " + reason);
      continue;
    }
    const auto sources = sources_of(c, rows);
    if (sources.empty()) out.note(row, "lets nobody in: no target has its transport tag");
    if (!c.transport_tag.empty() && !sources.empty()) {
      out.note(row, "snmpd compares the addresses of the tag's targets, not their ports");
    }
    for (const Source& source : sources) {
      // The context is always given: a security name "-Cn" would be taken for the option.
      out.add(row, std::string(source.v6 ? "com2sec6" : "com2sec") + " -Cn " +
                       *quoted(c.context_name) + " " + *quoted(*c.security_name) + " " +
                       source.text + " " + *quoted(*c.name));
    }
  }
}

}  // namespace standin::agent
