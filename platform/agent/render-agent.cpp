// Engine, listen addresses, versions, system group, contexts.
#include <algorithm>
#include <limits>

#include "quoting.h"
#include "render-rules.h"
#include "render.h"

namespace standin::agent {
namespace {

constexpr std::uint64_t kSmallestMessage = 484;  // RFC 3412, snmpEngineMaxMessageSize
constexpr std::uint64_t kLargestMessage = 65507;
constexpr std::size_t kLongestSystemText = 255;

void add_endpoint(const std::string& row, const Endpoint& configured, const RenderOptions& options,
                  Configuration& out) {
  Endpoint endpoint = on_loopback(configured);
  endpoint.port += options.port_offset;
  if (configured.port == 0) {
    out.note(row, "not served: it has no port");
    return;
  }
  if (endpoint.port > std::numeric_limits<std::uint16_t>::max()) {
    out.note(row, "not served: the port and the offset together are past 65535");
    return;
  }
  if (endpoint.address != configured.address) {
    out.note(row, "served on loopback only, as " + endpoint.spec());
  }
  const auto& known = out.endpoints;
  if (std::find(known.begin(), known.end(), endpoint) == known.end()) {
    out.endpoints.push_back(endpoint);
  }
}

void render_listen(const Settings& s, const RenderOptions& options, Configuration& out) {
  const auto main_address = parse_endpoint(s.ip.value_or("0.0.0.0"), s.port);
  if (main_address) add_endpoint("snmpAgent/ip", *main_address, options, out);
  for (const std::string& text : s.extra_addresses) {
    const std::string row = row_name("snmpAgent/extraIpPorts", {text});
    if (const auto endpoint = parse_endpoint(text, s.port)) {
      add_endpoint(row, *endpoint, options, out);
    } else {
      out.note(row, "not served: neither ADDRESS nor ADDRESS:PORT nor [ADDRESS]:PORT");
    }
  }
  std::string all;
  for (const Endpoint& endpoint : out.endpoints) all += (all.empty() ? "" : ",") + endpoint.spec();
  if (!all.empty()) out.add("snmpAgent", "agentaddress " + all);
}

void render_engine(const Settings& s, Configuration& out) {
  const std::string row = "snmpAgent/snmpEngine/";
  if (s.engine_id) {
    out.add(row + "snmpEngineID", "exactEngineID " + hex(*s.engine_id));
  } else {
    out.note(row + "snmpEngineID", "there is none: snmpd makes one up");
  }
  if (!s.max_message_size) return;
  const std::string size_row = row + "snmpEngineMaxMessageSize";
  if (*s.max_message_size < kSmallestMessage || *s.max_message_size > kLargestMessage) {
    out.note(size_row, "not set: a message over UDP has 484 to 65507 octets");
    return;
  }
  out.add(size_row, "[snmp] sendMessageMaxSize " + std::to_string(*s.max_message_size));
  out.note(size_row,
           "holds for what snmpd sends; what it accepts, and the size it announces, are its own");
}

void render_versions(const Settings& s, Configuration& out) {
  const std::string row = "snmpAgent/snmpVersions";
  if (!s.v1) out.add(row, "[snmp] disableSNMPv1 yes");
  if (!s.v2c) out.add(row, "[snmp] disableSNMPv2c yes");
  if (!s.v3) out.add(row, "[snmp] disableSNMPv3 yes");
}

// A directive whose argument is the rest of the line, as it stands.
void render_system(const char* leaf, const char* directive, const OptionalText& text,
                   Configuration& out) {
  if (!text) return;
  const std::string row = std::string("system/") + leaf;
  const auto blank = [](char c) { return c == ' '; };
  if (text->empty()) {
    out.note(row, "not set: snmpd takes no empty text and answers with its own");
  } else if (!quoted(*text)) {
    out.note(row, "not set: snmpd takes no control characters");
  } else if (text->size() > kLongestSystemText) {
    out.note(row, "not set: snmpd takes no more than 255 octets");
  } else if (blank(text->front()) || blank(text->back())) {
    out.note(row, "not set: snmpd would drop the blanks at its ends");
  } else {
    out.add(row, std::string(directive) + " " + *text);
  }
}

// snmpd has its objects in the default context alone. For the other ones it asks itself, by a
// community that is let in from its own address only.
void render_contexts(const Settings& s, const RenderOptions& options, Configuration& out) {
  if (s.contexts.empty()) return;
  const auto own = std::find_if(out.endpoints.begin(), out.endpoints.end(),
                                [](const Endpoint& e) { return !e.v6; });
  const bool possible = own != out.endpoints.end() && (s.v2c || s.v1);
  const std::string& secret = options.own_community;
  const std::string version = s.v2c ? "2c" : "1";
  if (possible) {
    const std::string row = "snmpAgent/contexts";
    const std::string name = hex("own " + secret.substr(0, kLongestName / 2));
    const std::string word = "\"own " + secret.substr(0, kLongestName / 2) + "\" ";
    out.add_secret(row, "com2sec " + word + own->address + "/32 " + secret,
                   "com2sec ******** " + own->address + "/32 ********");
    out.add(row, "vacmGroup " + std::string(kActiveReadOnly) +
                     std::to_string(s.v2c ? kModelV2c : kModelV1) + " " + name + " " + name);
    out.add(row, "vacmAccess " + std::string(kActiveReadOnly) + "0 1 1 " + name + " \"\" " + name +
                     " \"\" \"\"");
    out.add(row, "vacmView " + std::string(kActiveReadOnly) + "1 " + name + " .1 \"\"");
  }
  for (const std::string& context : s.contexts) {
    const std::string row = row_name("snmpAgent/contexts", {context});
    const auto word = quoted(context);
    if (!possible) {
      out.note(row, "not served: snmpd needs v1 or v2c and an IPv4 address for contexts");
    } else if (!word || context.size() > kLongestName) {
      out.note(row, "not served: snmpd takes names of 1 to 32 octets without control characters");
    } else {
      const std::string before = "proxy -Cn " + *word + " -v " + version + " -c ";
      const std::string after = " " + own->address + ":" + std::to_string(own->port) + " .1.3.6.1";
      out.add_secret(row, before + secret + after, before + "********" + after);
    }
  }
}

}  // namespace

void render_agent(const Rows& rows, const RenderOptions& options, Configuration& out) {
  render_listen(rows.settings, options, out);
  render_engine(rows.settings, out);
  render_versions(rows.settings, out);
  render_system("sysContact", "syscontact", rows.contact, out);
  render_system("sysName", "sysname", rows.name, out);
  render_system("sysLocation", "syslocation", rows.location, out);
  // Managers that knock with a wrong community are told of to the targets; RFC 3418,
  // snmpEnableAuthenTraps.
  out.add("system", "authtrapenable 1");
  out.add("system", "dontLogTCPWrappersConnects yes");
  render_contexts(rows.settings, options, out);
}

}  // namespace standin::agent
