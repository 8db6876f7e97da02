// What the model says of a node, for help and completion.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/wire/frame.h"

namespace standin {

struct Description {
  struct Label {
    std::string text, description;
  };
  struct Choice {
    std::string name;
    bool mandatory = false;
    std::string description;
  };
  struct Child {
    std::string name;  // with its prefix at the top
    std::string kind;
    std::string choice;  // that it stands in, if any
    bool mandatory = false;
    std::string description;
  };

  std::string path;      // without keys
  std::string kind;      // "root", "leaf", "leaf-list", "list", "container", "presence container"
  std::string type;      // leaf and leaf-list
  std::string admitted;  // "1 to 32 octets"; empty: anything
  std::string units;
  std::optional<std::string> dflt;
  std::string text;
  bool secret = false;
  bool mandatory = false;
  std::vector<std::string> keys;
  std::vector<Label> labels;
  std::vector<Choice> choices;
  std::vector<Child> children;

  bool is_leaf() const { return kind == "leaf"; }
};

// Reads the results of nb_describe. Throws WireError.
Description read_description(FrameReader& in);

}  // namespace standin
