#include "platform/standin/engine/completion.h"

#include <algorithm>

namespace standin {
namespace {

constexpr std::size_t kMostCandidates = 1000;

// Where the last word of a path that is being typed stands.
struct Place {
  enum class Kind : std::uint8_t { name, key, value } kind = Kind::name;
  std::string_view before;        // the path in front of it
  std::vector<std::string> keys;  // those already given in the open braces
  std::string word;               // what there is of it
};

// Whether a brace is open at the end of the text, and where; quotes hide braces and blanks.
struct Scan {
  std::size_t brace = std::string_view::npos;
  std::size_t slash = std::string_view::npos;
  std::size_t blank = std::string_view::npos;

  explicit Scan(std::string_view text) {
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const char c = text[i];
      if (quoted && c == '\\')
        ++i;
      else if (c == '"')
        quoted = !quoted;
      else if (!quoted)
        step(c, i);
    }
  }

 private:
  void step(char c, std::size_t i) {
    if (c == '{') brace = i;
    if (c == '}') brace = std::string_view::npos;
    if (brace != std::string_view::npos) return;
    if (c == '/') slash = i;
    if (c == ' ' && blank == std::string_view::npos) blank = i;
  }
};

// The words inside the open braces; the last one may lack its closing quote.
void read_keys(std::string_view inside, Place& place) {
  const bool finished = inside.empty() || inside.back() == ' ';
  std::vector<std::string> words;
  try {
    words = split_words(inside);
  } catch (const PathError&) {
    words = split_words(std::string(inside) + "\"");
  }
  if (!finished && !words.empty()) {
    place.word = std::move(words.back());
    words.pop_back();
  }
  place.keys = std::move(words);
}

Place place_of(std::string_view text) {
  const Scan scan(text);
  Place place;
  if (scan.blank != std::string_view::npos) {
    place.kind = Place::Kind::value;
    place.before = text.substr(0, scan.blank);
    const std::size_t word = text.find_last_of(' ') + 1;
    place.word = text.substr(word);
  } else if (scan.brace != std::string_view::npos) {
    place.kind = Place::Kind::key;
    place.before = text.substr(0, scan.brace);
    read_keys(text.substr(scan.brace + 1), place);
  } else if (scan.slash != std::string_view::npos) {
    place.before = text.substr(0, scan.slash);
    place.word = text.substr(scan.slash + 1);
  } else {
    place.word = text;
  }
  return place;
}

std::vector<std::string> names(const Schema& schema, std::string_view before) {
  std::vector<std::string> found;
  const NodePath path = before.empty() ? NodePath() : schema.resolve(parse_path(before));
  if (path.empty()) {
    for (const Node* node : schema.top()) found.push_back(node->prefix + ":" + node->name);
    return found;
  }
  for (const Node* node : path.node().children) found.push_back(node->name);
  return found;
}

std::vector<std::string> keys(Transaction& t, const Schema& schema, const Place& place) {
  const NodePath list = schema.resolve(parse_path(place.before));
  if (list.empty() || list.is_entry()) return {};
  const Node& node = list.node();
  if (node.kind != Node::Kind::list && node.kind != Node::Kind::leaf_list) return {};
  std::vector<std::string> found;
  t.data().walk(list, [&](const Level& entry) {
    const auto text = [&](std::size_t i) {
      return schema.print(node.keys.empty() ? node : *node.keys[i], entry[i]);
    };
    if (entry.size() <= place.keys.size()) return true;
    for (std::size_t i = 0; i < place.keys.size(); ++i)
      if (text(i) != place.keys[i]) return true;
    found.push_back(text(place.keys.size()));
    return found.size() < kMostCandidates;
  });
  return found;
}

std::vector<std::string> values(const Schema& schema, std::string_view before) {
  const NodePath path = schema.resolve(parse_path(before));
  return path.empty() ? std::vector<std::string>() : labels_of(path.node());
}

}  // namespace

std::vector<std::string> labels_of(const Node& node) {
  std::vector<std::string> labels;
  for (const auto& [number, label] : node.labels) labels.push_back(label);
  if (node.has_value() && node.type == Type::boolean) labels = {"true", "false"};
  for (const Choice* choice : node.choices) labels.push_back(choice->name);
  return labels;
}

std::string kind_of(const Node& node) {
  switch (node.kind) {
    case Node::Kind::container:
      return "container";
    case Node::Kind::presence:
      return "presence container";
    case Node::Kind::list:
      return "list";
    case Node::Kind::leaf:
      return "leaf";
    case Node::Kind::leaf_list:
      return "leaf-list";
  }
  return {};
}

std::vector<std::string> complete(Transaction& t, const Schema& schema, std::string_view so_far) {
  std::vector<std::string> found;
  Place place;
  try {
    place = place_of(so_far);
    switch (place.kind) {
      case Place::Kind::name:
        found = names(schema, place.before);
        break;
      case Place::Kind::key:
        found = keys(t, schema, place);
        break;
      case Place::Kind::value:
        found = values(schema, place.before);
        break;
    }
  } catch (const Refusal&) {
    return {};
  } catch (const PathError&) {
    return {};
  }
  std::erase_if(found, [&](const std::string& word) { return !word.starts_with(place.word); });
  std::sort(found.begin(), found.end());
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}

}  // namespace standin
