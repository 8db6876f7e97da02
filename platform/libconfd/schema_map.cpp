#include "schema_map.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "error.h"

namespace standin {
namespace {

std::atomic<const SchemaMap*> g_map{nullptr};

// Every schema that was ever mapped stays: names of it may be in use in any thread.
void publish(std::unique_ptr<const SchemaMap> map) {
  static std::mutex lock;
  static auto* all = new std::vector<std::unique_ptr<const SchemaMap>>;
  const std::scoped_lock guard(lock);
  g_map.store(map.get(), std::memory_order_release);
  all->push_back(std::move(map));
}

bool passed_through(SchemaFileNode::Kind kind) {
  return kind == SchemaFileNode::Kind::choice || kind == SchemaFileNode::Kind::case_;
}

}  // namespace

SchemaMap::SchemaMap(SchemaFile file) : file_(std::move(file)) {
  for (std::uint32_t i = 0; i < file_.nodes.size(); ++i) {
    const SchemaFileNode& node = file_.nodes[i];
    by_tag_.emplace(key(node.tag), i);
    if (node.secret) secrets_.insert(key(node.tag));
    if (passed_through(node.kind)) continue;
    std::uint32_t parent = node.parent;
    while (parent != 0 && passed_through(file_.nodes.at(parent - 1).kind))
      parent = file_.nodes.at(parent - 1).parent;
    children_.emplace(std::pair(parent, node.tag), i);
  }
}

const SchemaFileNode* SchemaMap::child(const SchemaFileNode* parent, Tag tag) const {
  const auto above =
      parent == nullptr ? 0u : static_cast<std::uint32_t>(parent - file_.nodes.data()) + 1;
  const auto found = children_.find({above, tag});
  return found == children_.end() ? nullptr : &file_.nodes[found->second];
}

const char* SchemaMap::name(Tag tag) const {
  const auto found = by_tag_.find(key(tag));
  return found == by_tag_.end() ? nullptr : file_.nodes[found->second].name.c_str();
}

const SchemaMap* schema_map() { return g_map.load(std::memory_order_acquire); }

std::string tag_text(Tag tag) {
  const SchemaMap* map = schema_map();
  const char* name = map == nullptr ? nullptr : map->name(tag);
  return name != nullptr ? name : std::to_string(tag.tag);
}

}  // namespace standin

using namespace standin;

int confd_mmap_schemas(const char* filename) {
  return guarded([&] {
    if (filename == nullptr) return fail(CONFD_ERR_APIUSE, "no schema file named");
    try {
      publish(std::make_unique<const SchemaMap>(read_schema_file(filename)));
      return CONFD_OK;
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& e) {
      return fail(CONFD_ERR_OS, e.what());
    }
  });
}

const char* confd_xmltag2str(u_int32_t ns, u_int32_t xmltag) {
  const SchemaMap* map = schema_map();
  const char* name = map == nullptr ? nullptr : map->name({xmltag, ns});
  if (name != nullptr) return name;
  thread_local char number[16];
  std::snprintf(number, sizeof number, "%u", xmltag);
  return number;
}
