// Conflicts between groups. The MIB holds one group for each pair of security model and security
// name (RFC 3415 section 4, vacmSecurityToGroupTable), while northbound two groups can both list
// the same pair. A write moves the row to the group written last and records who lost it in the
// transaction's validation map:
//
//   key    "MODEL;NAME;LOSER"    value    WINNER        for example  3;alice;admins -> guests
#pragma once

#include <confd_dp.h>

#include <string>
#include <utility>
#include <vector>

namespace quillet {

// Two different triples never give one text: a name that could be taken for two parts is quoted.
std::string conflict_key(const confd_value_t& model, const confd_value_t& name,
                         const confd_value_t& group);

// What one northbound operation changes in the map. A refused operation is undone by the server,
// which cannot reach this memory: so nothing changes before apply(), which comes after the
// operation's last write.
class ConflictChanges {
 public:
  explicit ConflictChanges(const confd_trans_ctx* tctx) : tctx_(tctx) {}

  // The row (model, name) went from `loser` to `winner`. A conflict that is there already stays.
  void record(const confd_value_t& model, const confd_value_t& name, const confd_value_t& loser,
              const confd_value_t& winner);
  // `group` claims the row no longer; whether a conflict said that it did.
  bool withdraw(const confd_value_t& model, const confd_value_t& name, const confd_value_t& group);
  void apply();

 private:
  const confd_trans_ctx* tctx_;
  std::vector<std::pair<std::string, std::string>> recorded_;  // key, winner
  std::vector<std::string> withdrawn_;
};

}  // namespace quillet
