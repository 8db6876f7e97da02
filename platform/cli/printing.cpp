#include "printing.h"

#include <array>
#include <functional>
#include <ostream>

namespace standin::cli {
namespace {

constexpr std::string_view kMask = "********";

std::string indent(int depth) { return std::string(2 * static_cast<std::size_t>(depth), ' '); }

// ------------------------------------------------------------------------ for people

void print_nodes(std::ostream& out, const std::vector<ShownNode>& nodes, int depth);

// The key leaves lead the entry and stand in its heading already.
void print_entry(std::ostream& out, const std::string& name, const ShownNode::Entry& entry,
                 int depth) {
  out << indent(depth) << name << ' ';
  print_words(out, entry.keys);
  std::size_t first = 0;
  while (first < entry.nodes.size() && first < entry.keys.size() &&
         entry.nodes[first].kind == NodeKind::leaf &&
         entry.nodes[first].text() == entry.keys[first]) {
    ++first;
  }
  print_nodes(out, {entry.nodes.begin() + static_cast<std::ptrdiff_t>(first), entry.nodes.end()},
              depth + 1);
}

void print_node(std::ostream& out, const ShownNode& node, int depth) {
  switch (node.kind) {
    case NodeKind::leaf:
    case NodeKind::leaf_list:
      out << indent(depth) << node.name;
      if (node.secret) {
        out << ' ' << kMask << '\n';
      } else if (node.form == JsonForm::empty || node.texts.empty()) {
        out << '\n';
      } else {
        out << ' ';
        print_words(out, node.texts);
      }
      return;
    case NodeKind::container:
      out << indent(depth) << node.name << '\n';
      print_nodes(out, node.children, depth + 1);
      return;
    case NodeKind::list:
      for (const ShownNode::Entry& entry : node.entries) print_entry(out, node.name, entry, depth);
      return;
    case NodeKind::error:
      out << indent(depth) << node.name << " error: " << node.text() << '\n';
      return;
  }
}

void print_nodes(std::ostream& out, const std::vector<ShownNode>& nodes, int depth) {
  for (const ShownNode& node : nodes) print_node(out, node, depth);
}

// ---------------------------------------------------------------------- for programs

std::string json_scalar(const std::string& text, JsonForm form) {
  switch (form) {
    case JsonForm::raw:
      return text;
    case JsonForm::empty:
      return "[null]";
    case JsonForm::quoted:
      break;
  }
  return json_string(text);
}

// "[" or "{", the items a line each, and the bracket that closes it.
template <typename Items, typename Print>
void print_bracketed(std::ostream& out, std::string_view brackets, const Items& items, int depth,
                     Print print) {
  out << brackets[0];
  bool first = true;
  for (const auto& item : items) {
    out << (first ? "\n" : ",\n") << indent(depth + 1);
    first = false;
    print(item);
  }
  if (!first) out << '\n' << indent(depth);
  out << brackets[1];
}

void print_object(std::ostream& out, const std::vector<ShownNode>& nodes, const std::string& module,
                  int depth);

void print_member_value(std::ostream& out, const ShownNode& node, int depth) {
  if (node.kind == NodeKind::leaf) {
    out << json_scalar(node.text(), node.form);
  } else if (node.kind == NodeKind::leaf_list) {
    print_bracketed(out, "[]", node.texts, depth,
                    [&](const std::string& text) { out << json_scalar(text, node.form); });
  } else if (node.kind == NodeKind::container) {
    print_object(out, node.children, node.module, depth);
  } else {
    print_bracketed(out, "[]", node.entries, depth, [&](const ShownNode::Entry& entry) {
      print_object(out, entry.nodes, node.module, depth + 1);
    });
  }
}

// A member's name is qualified where its module is not its parent's (RFC 7951, section 4).
void print_object(std::ostream& out, const std::vector<ShownNode>& nodes, const std::string& module,
                  int depth) {
  std::vector<std::reference_wrapper<const ShownNode>> members;
  for (const ShownNode& node : nodes) {
    if (node.kind != NodeKind::error) members.emplace_back(node);
  }
  print_bracketed(out, "{}", members, depth, [&](const ShownNode& node) {
    out << json_string(node.module == module ? node.name : node.module + ':' + node.name) << ": ";
    print_member_value(out, node, depth + 1);
  });
}

}  // namespace

void print_words(std::ostream& out, const Words& words) {
  const char* between = "";
  for (const std::string& word : words) {
    out << between << quote_word(word);
    between = " ";
  }
  out << '\n';
}

void print_tree(std::ostream& out, const std::vector<ShownNode>& nodes) {
  print_nodes(out, nodes, 0);
}

void print_json(std::ostream& out, const std::vector<ShownNode>& nodes) {
  print_object(out, nodes, "", 0);
  out << '\n';
}

std::string json_string(std::string_view text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  std::string json = "\"";
  for (const char c : text) {
    const auto octet = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      json += {'\\', c};
    } else if (c == '\n') {
      json += "\\n";
    } else if (c == '\t') {
      json += "\\t";
    } else if (octet < 0x20) {
      json += {'\\', 'u', '0', '0', kHex[octet >> 4], kHex[octet & 15]};
    } else {
      json += c;
    }
  }
  return json + '"';
}

void print_diff(std::ostream& out, const std::vector<Change>& changes) {
  for (const Change& change : changes) {
    out << change.kind << ' ' << change.path;
    if (change.before) out << ' ' << quote_word(*change.before);
    if (change.before && change.after) out << " ->";
    if (change.after) out << ' ' << quote_word(*change.after);
    out << '\n';
  }
}

void print_status(std::ostream& out, const ServerState& state) {
  out << "phase " << state.phase << "\nport " << state.port << '\n';
  for (const DaemonState& daemon : state.daemons) {
    out << "daemon " << quote_word(daemon.name) << (daemon.connected ? " connected" : " gone");
    for (const std::string& callpoint : daemon.callpoints) out << ' ' << callpoint;
    out << '\n';
  }
  out << "transactions " << state.transactions << '\n';
}

}  // namespace standin::cli
