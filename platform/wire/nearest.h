// Names that somebody may have meant, for the texts of refusals.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standin {

// The known name that the wrong one is a slip of: at most a third of its characters differ, or it
// is the beginning of one. Empty when none is that near.
std::string nearest(std::string_view wrong, const std::vector<std::string>& known);

// "a, b, c"; past a dozen names the rest is counted.
std::string listed(const std::vector<std::string>& names);

}  // namespace standin
