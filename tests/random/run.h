// System and model side by side.
#pragma once

#include <string>

#include "model.h"
#include "system.h"

namespace random_operations {

// The two do not agree, or a program failed.
struct Disagreement {
  std::string text;
};

class Run {
 public:
  const Model& model() const { return model_; }
  // True when it was accepted. Throws Disagreement. After a commit, an abort and a fault, and for
  // "show /", both sides are compared whole.
  bool step(const Operation& op);
  std::string complaints() { return system_.complaints(); }

 private:
  bool step_in_transaction(const Operation& op);
  bool both(const Operation& op);
  void fault(const Operation& op);
  void compare(const std::vector<std::string>& is, const View& should);

  System system_;
  Model model_;
  std::vector<Operation> since_;  // the transaction began
};

}  // namespace random_operations
