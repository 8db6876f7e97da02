#include "generator.h"

namespace random_operations {
namespace vocabulary {

std::string name(Situation& s) {
  static const std::vector<std::string> kNames{"a",
                                               "b",
                                               "c",
                                               "ab",
                                               "a b",
                                               "q\"x\\",
                                               "100%s",
                                               "{z}",
                                               "\u00e9\u00fc",
                                               "n;1",
                                               "a-name-of-thirty-two-octets-1234"};
  return s.random.one_of(kNames);
}

std::string text(Situation& s) {
  static const std::vector<std::string> kTexts{"a",    "b",  "plain",  "with blank",         "",
                                               "%n%s", "\"", "\u20ac", std::string(255, 'x')};
  return s.random.one_of(kTexts);
}

std::string ip(Situation& s) {
  static const std::vector<std::string> kAddresses{"10.0.0.1", "192.0.2.1", "::1", "2001:db8::1",
                                                   "2001:DB8:0::2"};
  return s.random.one_of(kAddresses);
}

std::string engine(Situation& s) {
  static const std::vector<std::string> kEngines{"80:00:7e:d9:04:61:62",
                                                 "80:00:7e:d9:01:0a:00:00:01", "80:00:00:09:05:01",
                                                 kDefaultEngineId, "80:00:7e:d9:05:01:02:03"};
  const auto local = s.t.engine_id();
  return local && s.random.percent(10) ? *local : s.random.one_of(kEngines);
}

std::string tag(Situation& s) {
  static const std::vector<std::string> kTags{"a", "ab", "b", "x", "%d", "\u00e9"};
  return s.random.one_of(kTags);
}

std::string number(Situation& s, const std::vector<const char*>& all) {
  return s.random.one_of(all);
}

Key row(Situation& s, const std::string& list, const Key& otherwise, unsigned share) {
  const auto table = s.t.tables.find(list);
  if (table == s.t.tables.end() || table->second.empty() || s.random.percent(share))
    return otherwise;
  auto at = table->second.begin();
  std::advance(at, s.random.below(table->second.size()));
  return at->first;
}

std::string set(const std::string& path, const std::string& value) {
  return set_all(path, {value});
}

std::string set_all(const std::string& path, const std::vector<std::string>& values) {
  return "set " + path + (values.empty() ? "" : " ") + words(values);
}

}  // namespace vocabulary

Generator::Generator(std::uint64_t seed) : random_(seed) {
  for (const auto& area : {community_makers(), target_makers(), agent_makers(), usm_makers(),
                           vacm_makers(), transaction_makers()}) {
    makers_.insert(makers_.end(), area.begin(), area.end());
  }
  for (const Maker& maker : makers_) total_ += maker.weight;
}

Generator::Choice Generator::next(const Tables& t) {
  for (;;) {
    std::size_t at = random_.below(total_);
    const Maker* maker = makers_.data();
    while (at >= maker->weight) {
      at -= maker->weight;
      ++maker;
    }
    Situation situation{random_, t};
    std::string line = maker->make(situation);
    if (!line.empty()) return {maker, std::move(line)};
  }
}

std::vector<Maker> transaction_makers() {
  return {
      {"commit", 90, true, [](Situation&) -> std::string { return "commit"; }},
      {"abort", 18, true, [](Situation&) -> std::string { return "abort"; }},
      {"validate", 12, true, [](Situation&) -> std::string { return "validate"; }},
      {"show in the transaction", 12, true, [](Situation&) -> std::string { return "show /"; }},
      {"client lost", 4, true, [](Situation&) -> std::string { return "# fault: client-lost"; }},
      {"server killed", 3, true,
       [](Situation&) -> std::string { return "# fault: server-killed"; }},
      {"daemon killed", 3, true,
       [](Situation&) -> std::string { return "# fault: daemon-killed"; }},
      {"server killed in a commit", 3, true,
       [](Situation& s) {
         return "# fault: server-killed-in-commit " + std::to_string(s.random.below(3000));
       }},
  };
}

}  // namespace random_operations
