#include "generator.h"

namespace random_operations {
namespace {

constexpr unsigned kNewRow = 30, kNewRowRarely = 5;  // percent

// Up to the next of them, which is passed over.
std::string up_to(const std::string& text, std::size_t& at, char end) {
  const std::size_t from = at;
  at = text.find(end, from);
  return text.substr(from, at++ - from);
}

std::string octets(std::size_t n, char digit) {
  std::string text(3 * n - 1, ':');
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (i % 3 != 2) text[i] = digit;
  }
  return text;
}

}  // namespace

Generator::Generator(std::uint64_t seed) : random_(seed) {
  for (const Kind& kind : kinds()) total_ += kind.weight;
}

Generator::Choice Generator::next(const Tables& t) {
  tables_ = &t;
  std::size_t at = random_.below(total_);
  const Kind* kind = kinds().data();
  while (at >= kind->weight) {
    at -= kind->weight;
    ++kind;
  }
  return {kind, expand(random_.one_of(kind->lines))};
}

std::string Generator::expand(const std::string& text) {
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at++];
    if (c == '$') {
      const std::size_t end = std::min(
          text.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-", at), text.size());
      out += symbol(text.substr(at, end - at));
      at = end;
    } else if (c == '<') {
      out += expand(random_.one_of(split(up_to(text, at, '>'), '|')));
    } else if (c == '@') {
      const bool rarely = text[at] == '@';
      if (rarely) ++at;
      const std::string list = up_to(text, at, ':');
      out += row(list, up_to(text, at, ';'), rarely ? kNewRowRarely : kNewRow);
    } else {
      out += c;
    }
  }
  return out;
}

std::string Generator::symbol(const std::string& name) {
  if (const auto rule = symbols().find(name); rule != symbols().end()) {
    return expand(random_.one_of(rule->second));
  }
  if (name == "user") return user();
  if (name == "access") return access();
  if (name == "subtree") return subtree();
  if (name == "local-engine") return tables_->engine_id().value_or(kDefaultEngineId);
  if (name == "known-view") {
    const Key* const key = some("vacmViewTreeFamilyEntry");
    return key == nullptr ? symbol("name") : words({key->front()});
  }
  if (name.starts_with("octets"))
    return octets(std::stoul(name.substr(6)), "07a"[random_.below(3)]);
  return std::string(std::stoul(name.substr(1)), 'x');
}

const Key* Generator::some(const std::string& list) {
  const Table& table = tables_->rows(list);
  if (table.empty()) return nullptr;
  auto at = table.begin();
  std::advance(at, random_.below(table.size()));
  return &at->first;
}

std::string Generator::row(const std::string& list, const std::string& otherwise, unsigned share) {
  const Key* const key = random_.percent(share) ? nullptr : some(list);
  return key == nullptr ? expand(otherwise) : words(*key);
}

std::string Generator::user() {
  const std::string own = tables_->engine_id().value_or("");
  const Key* const present = random_.percent(kNewRow) ? nullptr : some("usmUserEntry");
  const std::string engine = present != nullptr    ? present->front()
                             : random_.percent(60) ? own
                                                   : symbol("engine");
  const std::string name = present != nullptr ? words({present->back()}) : symbol("name");
  const std::string list = engine == own ? "local" : "remote" + braces({engine});
  return "/snmp:snmp/usm/" + list + "/user{" + name + "}";
}

std::string Generator::access() {
  const std::vector<std::string> models = {"any", "v1", "v2c", "usm"};
  const Key* const key = random_.percent(kNewRow) ? nullptr : some("vacmAccessEntry");
  if (key == nullptr || key->at(2).size() > 1) return expand("$new-access");
  return "/snmp:snmp/vacm/group" + braces({key->at(0)}) + "/access" +
         braces({key->at(1), models.at(std::stoul(key->at(2))), shown_level(key->at(3))});
}

std::string Generator::subtree() {
  const Key* const key = random_.percent(kNewRow) ? nullptr : some("vacmViewTreeFamilyEntry");
  if (key == nullptr) return expand("$new-subtree");
  return "/snmp:snmp/vacm/view" + braces({key->front()}) + "/subtree" +
         braces({shown_oid(key->back())});
}

}  // namespace random_operations
