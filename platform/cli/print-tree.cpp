// Trees for people.
#include <algorithm>
#include <ostream>
#include <span>

#include "platform/wire/messages.h"
#include "platform/wire/path.h"
#include "printing.h"

namespace standin::cli {
namespace {

constexpr std::size_t kWidestName = 32;  // a longer one does not move its siblings' values

using Nodes = std::span<const ShownNode>;

class TreePrinter {
 public:
  TreePrinter(std::ostream& out, Look look) : out_(out), look_(look) {}

  void nodes(Nodes all, std::size_t depth) {
    const std::size_t width = look_.aligned ? name_width(all) : 0;
    for (const ShownNode& each : all) node(each, depth, width);
  }

 private:
  static bool has_value(const ShownNode& node) {
    return node.kind == NodeKind::leaf || node.kind == NodeKind::leaf_list ||
           node.kind == NodeKind::error;
  }

  static std::size_t name_width(Nodes all) {
    std::size_t width = 0;
    for (const ShownNode& node : all) {
      if (has_value(node) && node.name.size() <= kWidestName) {
        width = std::max(width, node.name.size());
      }
    }
    return width;
  }

  void node(const ShownNode& node, std::size_t depth, std::size_t width) {
    if (node.kind == NodeKind::list) {
      for (const ShownNode::Entry& each : node.entries) entry(node.name, each, depth);
      return;
    }
    out_ << std::string(2 * depth, ' ');
    if (node.kind == NodeKind::container) {
      out_ << painted(look_, Ink::heading, node.name) << '\n';
      nodes(node.children, depth + 1);
      return;
    }
    const std::string text = value(node);
    out_ << node.name;
    if (!text.empty()) {
      if (node.name.size() < width) out_ << std::string(width - node.name.size(), ' ');
      out_ << (look_.aligned ? "  " : " ") << text;
    }
    out_ << '\n';
  }

  // The key leaves lead the entry and stand in its heading already.
  void entry(const std::string& name, const ShownNode::Entry& entry, std::size_t depth) {
    out_ << std::string(2 * depth, ' ') << painted(look_, Ink::heading, name) << ' '
         << painted(look_, Ink::key, words(entry.keys)) << '\n';
    std::size_t first = 0;
    while (first < entry.nodes.size() && first < entry.keys.size() &&
           entry.nodes[first].kind == NodeKind::leaf &&
           entry.nodes[first].text() == entry.keys[first]) {
      ++first;
    }
    nodes(Nodes(entry.nodes).subspan(first), depth + 1);
  }

  std::string value(const ShownNode& node) const {
    if (node.kind == NodeKind::error) {
      return painted(look_, Ink::error, "error: " + shown(node.text()));
    }
    if (node.secret) {
      return painted(look_, Ink::secret, look_.aligned ? kSecretSet : kSecretMask);
    }
    if (node.form == JsonForm::empty || node.texts.empty()) return {};
    return painted(look_, Ink::value, words(node.texts));
  }

  std::string words(const Words& all) const {
    std::string text;
    for (const std::string& word : all) {
      text += (text.empty() ? "" : " ") + shown(quote_word(word));
    }
    return text;
  }

  std::string shown(std::string_view text) const {
    return look_.aligned ? visible(text) : std::string(text);
  }

  std::ostream& out_;
  Look look_;
};

}  // namespace

void print_tree(std::ostream& out, const std::vector<ShownNode>& nodes, Look look) {
  TreePrinter(out, look).nodes(nodes, 0);
}

}  // namespace standin::cli
