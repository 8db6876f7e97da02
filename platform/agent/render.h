// From the rows to a configuration of a stock snmpd (net-snmp 5.9). Pure functions.
//
// Written are the directives of snmpd.conf(5) and the tokens of snmpd's persistent store, which it
// reads from any of its files. Those take names as octets, so that no name can break a line, and
// hold for what no directive says: localized keys, notification tables, views by exact octets. The
// rows are read-only for managers, since nothing carries their writes back to the server.
#pragma once

#include <string>

#include "configuration.h"
#include "rows.h"

namespace standin::agent {

struct RenderOptions {
  std::uint32_t port_offset = 0;
  // The community by which snmpd asks itself for its contexts; printable, without blanks. Must not
  // be known to anybody.
  std::string own_community;
};

Configuration render(const Rows& rows, const RenderOptions& options);

// The steps of render(), one for each subject; each adds lines and notes.
void render_agent(const Rows& rows, const RenderOptions& options, Configuration& out);
void render_communities(const Rows& rows, Configuration& out);
void render_users(const Rows& rows, Configuration& out);
void render_access(const Rows& rows, Configuration& out);
void render_notifications(const Rows& rows, Configuration& out);

}  // namespace standin::agent
