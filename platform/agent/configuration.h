// A configuration for snmpd in the making: its lines, each with the row that it is for, and what
// snmpd cannot be told.
#pragma once

#include <string>
#include <vector>

#include "listen.h"

namespace standin::agent {

struct Line {
  std::string text;
  std::string shown;  // the same without secrets
  std::string row;    // "snmpCommunityEntry{public}"
};

// What snmpd does not do, or does otherwise.
struct Note {
  std::string row, reason;
  bool operator==(const Note&) const = default;
};

struct Configuration {
  std::vector<Line> lines;
  std::vector<Note> notes;
  std::vector<Endpoint> endpoints;

  void add(const std::string& row, const std::string& text) { lines.push_back({text, text, row}); }
  void add_secret(const std::string& row, const std::string& text, const std::string& shown) {
    lines.push_back({text, shown, row});
  }
  void note(const std::string& row, const std::string& reason) { notes.push_back({row, reason}); }

  std::string text() const;    // the file
  std::string masked() const;  // for a person to read
};

// "TABLE{KEY KEY}", printable.
std::string row_name(const std::string& table, const std::vector<std::string>& keys);

}  // namespace standin::agent
