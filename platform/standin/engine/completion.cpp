#include "platform/standin/engine/completion.h"

#include <algorithm>
#include <set>

#include "platform/standin/schema/describe.h"

namespace standin {
namespace {

constexpr std::size_t kMostCandidates = 1000;

class Candidates {
 public:
  Candidates(Transaction& t, const Schema& schema, std::string_view begun)
      : data_(t.data()), schema_(schema), begun_(begun) {}

  std::vector<std::string> take() { return {found_.begin(), found_.end()}; }

  void values(const Node& node) {
    for (const auto& [label, description] : labels_of(node)) add(label);
    for (const Node* suggested : node.suggestions) everywhere(*suggested);
  }

  // The next key of the entries that begin with the keys given.
  void entries(const NodePath& list, const std::vector<std::string>& keys) {
    const Node& node = list.node();
    const auto text = [&](const Level& entry, std::size_t i) {
      return schema_.print(node.keys.empty() ? node : *node.keys.at(i), entry[i]);
    };
    data_.walk(list, [&](const Level& entry) {
      if (entry.size() <= keys.size()) return true;
      for (std::size_t i = 0; i < keys.size(); ++i) {
        if (text(entry, i) != keys[i]) return true;
      }
      return add(text(entry, keys.size()));
    });
  }

 private:
  // False when there are enough.
  bool add(const std::string& word) {
    if (word.starts_with(begun_)) found_.insert(word);
    return found_.size() < kMostCandidates;
  }

  // A node's values, or a list's first keys, under every entry that leads there.
  void everywhere(const Node& node) {
    std::vector<const Node*> way;
    for (const Node* n = &node; n != nullptr; n = n->parent) way.insert(way.begin(), n);
    below({}, way, 0);
  }

  void below(const NodePath& above, const std::vector<const Node*>& way, std::size_t at) {
    const NodePath here = above.child(*way[at]);
    const bool last = at + 1 == way.size();
    if (last && way[at]->kind != Node::Kind::leaf) return entries(here, {});
    if (last) {
      if (const auto value = data_.get(here, false)) add(schema_.print(*way[at], *value));
      return;
    }
    if (way[at]->kind != Node::Kind::list) return below(here, way, at + 1);
    std::vector<Level> keys;
    data_.walk(here, [&](const Level& entry) {
      keys.push_back(entry);
      return keys.size() < kMostCandidates;
    });
    for (Level& entry : keys) below(here.with_keys(std::move(entry)), way, at + 1);
  }

  Data& data_;
  const Schema& schema_;
  std::string_view begun_;
  std::set<std::string> found_;
};

}  // namespace

std::vector<std::string> complete(Transaction& t, const Schema& schema, const NodePath& path,
                                  bool entry, const std::vector<std::string>& keys,
                                  std::string_view begun) {
  Candidates candidates(t, schema, begun);
  if (path.empty() || path.is_entry()) return {};
  const Node& node = path.node();
  const bool has_entries = node.kind == Node::Kind::list || node.kind == Node::Kind::leaf_list;
  if (entry && has_entries) {
    candidates.entries(path, keys);
    // A new entry may be meant.
    if (keys.size() < node.keys.size()) candidates.values(*node.keys[keys.size()]);
    if (node.kind == Node::Kind::leaf_list) candidates.values(node);
  } else if (!entry && node.has_value()) {
    candidates.values(node);
  }
  return candidates.take();
}

}  // namespace standin
