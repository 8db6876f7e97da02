// The trees that `show` answers with.
#pragma once

#include <string>
#include <vector>

#include "platform/wire/frame.h"
#include "platform/wire/messages.h"

namespace standin {

// How a leaf's text stands in JSON.
enum class JsonForm : std::uint8_t { quoted, raw, empty };

struct ShownNode {
  struct Entry;
  NodeKind kind = NodeKind::leaf;
  std::string name;
  std::string module;
  std::vector<std::string> texts;  // a leaf's one text, a leaf-list's texts, an error's text
  JsonForm form = JsonForm::quoted;
  bool secret = false;
  std::vector<ShownNode> children;  // container
  std::vector<Entry> entries;       // list

  const std::string& text() const { return texts.at(0); }
};

struct ShownNode::Entry {
  std::vector<std::string> keys;
  std::vector<ShownNode> nodes;  // the key leaves among them
};

// Reads an array of nodes. Throws WireError.
std::vector<ShownNode> read_nodes(FrameReader& in);

}  // namespace standin
