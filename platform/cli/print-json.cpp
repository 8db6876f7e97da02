// Trees as RFC 7951 JSON.
#include <functional>
#include <ostream>

#include "printing.h"

namespace standin::cli {
namespace {

std::string indent(int depth) { return std::string(2 * static_cast<std::size_t>(depth), ' '); }

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

}  // namespace standin::cli
