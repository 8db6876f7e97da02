// libyang's context: which modules are loaded, and what is said of one that does not load.
#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "schema_impl.h"
#include "text_rules.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

struct ModuleFile {
  std::string name;
  std::string path;
};

std::vector<ModuleFile> module_files(const std::vector<std::string>& directories) {
  std::vector<ModuleFile> files;
  for (const auto& directory : directories) {
    std::error_code failure;
    for (const auto& entry : fs::directory_iterator(directory, failure)) {
      if (entry.path().extension() != ".yang") continue;
      const std::string stem = entry.path().stem();
      files.push_back({stem.substr(0, stem.find('@')), entry.path()});
    }
    if (failure) throw std::runtime_error(directory + ": " + failure.message());
  }
  std::ranges::sort(files, {}, &ModuleFile::name);
  return files;
}

// The file that an error is about: libyang names the module only in the errors that follow from
// the first one, innermost first.
std::string failed_file(const ly_ctx* ctx, const std::vector<ModuleFile>& files,
                        const ModuleFile& asked) {
  constexpr std::string_view kBefore = "Parsing module \"";
  for (const ly_err_item* e = ly_err_first(ctx); e != nullptr; e = e->next) {
    const std::string_view text = e->msg == nullptr ? "" : e->msg;
    if (!text.starts_with(kBefore)) continue;
    const auto name = text.substr(kBefore.size(), text.find('"', kBefore.size()) - kBefore.size());
    const auto found = std::ranges::find(files, name, &ModuleFile::name);
    if (found != files.end()) return found->path;
  }
  return asked.path;
}

// "FILE:LINE: REASON", from the first error, which is the cause of the others.
std::string load_error(const ly_ctx* ctx, const std::vector<ModuleFile>& files,
                       const ModuleFile& asked) {
  const ly_err_item* first = ly_err_first(ctx);
  while (first != nullptr && first->level != LY_LLERR) first = first->next;
  if (first == nullptr) return asked.path + ": cannot be loaded";
  std::string where = failed_file(ctx, files, asked);
  const std::string_view place = first->path == nullptr ? "" : first->path;
  constexpr std::string_view kLine = "Line number ";
  if (const auto at = place.find(kLine); at != std::string_view::npos) {
    const auto number = place.substr(at + kLine.size());
    where += ':';
    where += number.substr(0, number.find_first_not_of("0123456789"));
  }
  std::string reason = one_line(first->msg);
  if (where == asked.path && !place.empty() && place.starts_with('/')) {
    reason += " (" + one_line(place) + ")";
  }
  return where + ": " + reason;
}

// All errors are kept while modules load, since the first one is the cause; afterwards the last one
// is enough, and nothing grows. None ever goes to standard error.
struct KeepAllErrors {
  KeepAllErrors() { ly_log_options(LY_LOSTORE); }
  ~KeepAllErrors() { ly_log_options(LY_LOSTORE_LAST); }
  KeepAllErrors(const KeepAllErrors&) = delete;
  KeepAllErrors& operator=(const KeepAllErrors&) = delete;
};

// A leaf of the type that only object identifiers have: libyang forgets the names of types, but
// whatever is derived from one type shares its patterns.
const lysc_type* object_identifier_type(ly_ctx* ctx) {
  if (ly_ctx_get_module_latest(ctx, "standin-types") == nullptr) return nullptr;
  static constexpr const char* kProbe =
      "module standin-probe { namespace \"urn:quillet:standin-probe\"; prefix probe;"
      " import standin-types { prefix st; } leaf oid { type st:object-identifier; } }";
  lys_module* probe = nullptr;
  if (lys_parse_mem(ctx, kProbe, LYS_IN_YANG, &probe) != LY_SUCCESS) {
    throw std::runtime_error("standin-types: no type object-identifier");
  }
  return reinterpret_cast<const lysc_node_leaf*>(probe->compiled->data)->type;
}

}  // namespace

LoadedModules load_modules(const std::vector<std::string>& directories) {
  const KeepAllErrors keep;
  const auto files = module_files(directories);
  LoadedModules loaded;
  ly_ctx* raw = nullptr;
  constexpr std::uint16_t kOptions =
      LY_CTX_NO_YANGLIBRARY | LY_CTX_DISABLE_SEARCHDIR_CWD | LY_CTX_SET_PRIV_PARSED;
  if (ly_ctx_new(nullptr, kOptions, &raw) != LY_SUCCESS) {
    throw std::runtime_error("libyang: no context");
  }
  loaded.ctx.reset(raw);
  for (const auto& directory : directories) {
    // LY_EEXIST for a directory named twice is no error.
    ly_ctx_set_searchdir(raw, directory.c_str());
  }
  for (const auto& file : files) {
    ly_err_clean(raw, nullptr);
    const lys_module* module = ly_ctx_load_module(raw, file.name.c_str(), nullptr, nullptr);
    if (module == nullptr) throw std::runtime_error(load_error(raw, files, file));
    if (std::ranges::find(loaded.modules, module) == loaded.modules.end()) {
      loaded.modules.push_back(module);
    }
  }
  loaded.oid = object_identifier_type(raw);
  ly_err_clean(raw, nullptr);
  return loaded;
}

}  // namespace standin
